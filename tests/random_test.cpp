// Random sequences of calls, compared with a model of the two registries. Reply functions and
// handlers make random calls themselves, nested several levels deep.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <random>

#include "bridge.h"
#include "device_test.h"
#include "services.h"
#include "services/service_calls.h"

namespace {

constexpr int kSteps = 100000;
constexpr int kDeepest = 4;
constexpr std::size_t kMostOpen = 60;

constexpr char kUri[] = "vire://random/silent";
constexpr char kItemsUri[] = "vire://com.vire.service.payment/getAvailableItems";

constexpr std::size_t kLongestStored = 4095;
constexpr std::size_t kLongestCalled = 255;

// A call that is open on the bus. Quitting leaves it open and only removes it from the registry.
struct OpenCall {
    int token;
    std::intptr_t id;  // what its reply function is handed
    std::size_t function;
    bool oneShot;
    bool isRegistered;
};

struct Method {
    std::string name;
    std::size_t handler;
};

// A method call that is running.
struct MethodCall {
    std::size_t handler;
    int count;
    std::vector<const char*> parameters;
    tavtest::Answer answer;  // none before the handler was called
};

class RandomTest : public tavtest::EventTest {
protected:
    void step() {
        // An action that is listed twice is chosen twice as often.
        using Test = RandomTest;
        static constexpr void (Test::*kActions[])() = {
            &Test::registerCall,   &Test::registerCall, &Test::registerCall, &Test::deliver,
            &Test::deliver,        &Test::deliver,      &Test::unregister,   &Test::quitRarely,
            &Test::registerMethod, &Test::callMethod,   &Test::callMethod,   &Test::purchase};
        ++m_steps;
        (this->*kActions[below(std::size(kActions))])();
        // The model must match what is visible from outside.
        ASSERT_TRUE(std::ranges::equal(device.openCalls(), m_open, {}, {}, &OpenCall::token));
        ASSERT_TRUE(std::ranges::equal(tavtest::methodNames(), m_methods, {}, {}, &Method::name));
    }

    template <std::size_t Function>
    static void replyFunction(TAV_ServiceParameters* parameters, void* userData) {
        s_test->onReply(Function, parameters, reinterpret_cast<std::intptr_t>(userData));
    }

    template <std::size_t Handler>
    static void jsHandler(TAV_JSParameters* parameters) {
        s_test->onCall(Handler, parameters);
    }

    static constexpr std::array kFunctions = {replyFunction<0>, replyFunction<1>, replyFunction<2>};
    static constexpr std::array kHandlers = {jsHandler<0>, jsHandler<1>, jsHandler<2>};

    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(m_random);
    }

    bool oneIn(std::size_t count) { return below(count) == 0; }

    const std::string& anyName() { return m_names[below(m_names.size())]; }
    const char* anyText() { return m_names[below(7)].c_str(); }  // a short one

    // What an application may do in its reply functions and handlers.
    void actInside() {
        if (m_depth == kDeepest || oneIn(2)) {
            return;
        }
        ++m_depth;
        for (std::size_t count = 1 + below(3); count > 0 && !HasFailure(); --count) {
            step();
        }
        --m_depth;
    }

    void onReply(std::size_t function, TAV_ServiceParameters* parameters, std::intptr_t id) {
        ASSERT_FALSE(m_due.empty()) << "a reply that nobody sent";
        EXPECT_EQ(m_due.back().id, id);
        EXPECT_EQ(m_due.back().function, function);
        EXPECT_TRUE(std::exchange(m_due.back().isRegistered, false)) << "not registered any more";
        actInside();
        EXPECT_STREQ(TAV_GetParamJson(parameters), "{}");
    }

    void onCall(std::size_t handler, TAV_JSParameters* parameters) {
        ASSERT_FALSE(m_calls.empty());
        EXPECT_FALSE(m_calls.back().answer) << "a handler was called twice";
        EXPECT_EQ(m_calls.back().handler, handler);
        actInside();
        MethodCall& call = m_calls.back();
        EXPECT_EQ(TAV_GetNumJSParams(parameters), call.count);
        const int sent = static_cast<int>(call.parameters.size());
        for (int index = -1; index <= sent; ++index) {
            const bool isThere = index >= 0 && index < call.count;
            EXPECT_STREQ(TAV_GetJSParamString(parameters, index),
                         isThere ? call.parameters[static_cast<std::size_t>(index)] : "");
        }
        call.answer = answerAtRandom(parameters);
    }

    tavtest::Answer answerAtRandom(TAV_JSParameters* parameters) {
        tavtest::Answer answer = {{false, ""}};
        for (std::size_t count = below(4); count > 0; --count) {
            const char* text = oneIn(4) ? nullptr : anyText();
            const bool isException = oneIn(2);
            (isException ? TAV_JSException : TAV_JSReply)(parameters, text);
            answer = {{isException, text != nullptr ? text : ""}};
        }
        return answer;
    }

    void registerCall() {
        if (m_open.size() >= kMostOpen) {
            return;
        }
        const std::size_t function = below(kFunctions.size());
        const bool oneShot = !oneIn(3);
        const bool fails = oneIn(10);
        const std::intptr_t id = ++m_lastId;
        device.failNth(tavsim::Fault::Dispatch, fails ? 1 : 0);
        const int code = TAV_ServiceCallWithCallback(
            kUri, "{}", kFunctions[function], reinterpret_cast<void*>(id),
            oneShot ? tavtest::anyValue<SDL_bool>(7) : SDL_FALSE);
        EXPECT_EQ(code, fails ? TAV_ECONNECTION : TAV_NOERROR);
        if (!fails) {
            m_open.push_back({device.openCalls().back(), id, function, oneShot, true});
        }
    }

    void deliver() {
        if (m_open.empty()) {
            return;
        }
        const auto open = m_open.begin() + static_cast<std::ptrdiff_t>(below(m_open.size()));
        m_due.push_back(*open);
        if (open->oneShot) {
            m_open.erase(open);
        }
        EXPECT_TRUE(device.deliver(m_due.back().token, "{}"));
        EXPECT_FALSE(m_due.back().isRegistered) << "its reply function was not called";
        m_due.pop_back();
    }

    void unregister() {
        const std::size_t function = below(kFunctions.size());
        EXPECT_EQ(TAV_UnregisterServiceCallback(kFunctions[function]), TAV_NOERROR);
        std::erase_if(m_open, [function](const OpenCall& call) {
            return call.isRegistered && call.function == function;
        });
    }

    void registerMethod() {
        const std::string& name = anyName();
        const std::size_t handler = below(kHandlers.size());
        EXPECT_EQ(TAV_RegisterJSHandler(name.c_str(), kHandlers[handler]), TAV_NOERROR);
        const auto method = std::ranges::find(m_methods, name, &Method::name);
        if (method != m_methods.end()) {
            method->handler = handler;
        } else {
            m_methods.push_back({name.substr(0, kLongestStored), handler});
        }
    }

    void callMethod() {
        const std::string& name = anyName();
        const auto method =
            std::ranges::find(m_methods, name.substr(0, kLongestCalled), &Method::name);
        const bool isKnown = method != m_methods.end();
        MethodCall call = {isKnown ? method->handler : kHandlers.size(), 0, {}, {}};
        for (std::size_t count = below(4); count > 0; --count) {
            call.parameters.push_back(anyText());
        }
        const int count = static_cast<int>(call.parameters.size());
        const int announced = count + (oneIn(8) ? -5 : oneIn(8) ? 1000000 : 0);
        call.count = std::min(announced, count);
        m_calls.push_back(call);
        const tavtest::Answer answer = tavtest::callMethod(name, announced, call.parameters);
        const tavtest::Answer unknown = {{true, "Unknown Function"}};
        EXPECT_EQ(answer, isKnown ? m_calls.back().answer : unknown);
        m_calls.pop_back();
    }

    void purchase() {
        if (oneIn(10)) {
            device.failNth(tavsim::Fault::Dispatch, 0);
            EXPECT_EQ(tavtest::take(TAV_GetAvailableItems()), "items");
        }
    }

    void quitRarely() {
        static constexpr void (*kQuits[])() = {TAV_Quit, TAV_ServicesQuit, TAV_JSQuit};
        const std::size_t what = below(12);
        if (what >= std::size(kQuits)) {
            return;
        }
        kQuits[what]();
        if (what != 1) {
            m_methods.clear();
        }
        for (OpenCall& call : m_open) {
            call.isRegistered = call.isRegistered && what == 2;
        }
    }

    inline static RandomTest* s_test = nullptr;

    std::mt19937_64 m_random;
    int m_steps = 0, m_depth = 0;
    std::intptr_t m_lastId = 0;
    std::vector<OpenCall> m_open;
    std::vector<OpenCall> m_due;  // whose replies are being delivered, the innermost last
    const std::vector<std::string> m_names = {"method0",
                                              "method1",
                                              "method2",
                                              "method3",
                                              "method4",
                                              "method5",
                                              "",
                                              std::string(kLongestCalled, 'a'),
                                              std::string(kLongestCalled + 1, 'a'),
                                              std::string(kLongestStored + 1, 'b')};
    std::vector<Method> m_methods;
    std::vector<MethodCall> m_calls;  // those that are running, the innermost last
};

TEST_F(RandomTest, RegistriesFollowTheModel) {
    const char* wanted = std::getenv("TAV_TEST_SEED");
    const unsigned long seed = wanted != nullptr ? std::strtoul(wanted, nullptr, 10) : 20260801;
    s_test = this;
    m_random.seed(seed);
    device.profile.services[kUri] = {};
    device.profile.services[kItemsUri] = tavtest::repliesOf({"items"}, 10);
    device.listen("");
    while (m_steps < kSteps && !HasFailure()) {
        step();
    }
    EXPECT_FALSE(HasFailure()) << "TAV_TEST_SEED=" << seed << ", step " << m_steps;
}

}  // namespace

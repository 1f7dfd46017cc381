// Random sequences: the two registries, the bus and the dispatchers beside a model of what they
// promise. Reply functions and handlers do at random whatever an application may do in them,
// several levels deep.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <set>

#include "device_test.h"
#include "js/handlers.h"
#include "platform/hdata.h"
#include "services/service_calls.h"

namespace {

constexpr int kSteps = 100000;
constexpr int kDeepest = 4;
constexpr std::size_t kMostOpen = 60;
constexpr unsigned long kDefaultSeed = 20260801;

constexpr char kSilentUri[] = "vire://random/silent";
constexpr char kAnsweringUri[] = "vire://random/answering";

constexpr std::size_t kLongestStored = 4095;
constexpr std::size_t kLongestCalled = 255;

struct OpenCall {
    int token;
    std::intptr_t id;
    std::size_t function;
    bool oneShot;
};

struct Method {
    std::string name;
    std::size_t handler;
};

// The call of an application's function that is due now.
struct Expected {
    std::intptr_t id;
    bool called;
};

struct Answer {
    bool isException;
    std::string text;
};

class World {
public:
    World(sim::Device& device, unsigned long seed) : m_device(device), m_random(seed) {
        device.profile.services[kSilentUri] = {};
        device.profile.services[kAnsweringUri].replies = {"{}"};
        for (int number = 0; number < 6; ++number) {
            m_names.push_back("method" + std::to_string(number));
        }
        m_names.emplace_back();
        m_names.emplace_back(kLongestCalled, 'a');
        m_names.emplace_back(kLongestCalled + 1, 'a');
        m_names.emplace_back(kLongestStored + 1, 'b');
    }

    int steps() const { return m_steps; }

    void step() {
        ++m_steps;
        switch (below(16)) {
        case 0:
        case 1:
        case 2:
            registerCall();
            break;
        case 3:
        case 4:
        case 5:
            deliver();
            break;
        case 6:
            pump();
            break;
        case 7:
            unregisterFunction(below(kFunctions.size()));
            break;
        case 8:
        case 9:
            registerMethod();
            break;
        case 10:
        case 11:
        case 12:
            callMethod();
            break;
        case 13:
            sendOneWay();
            break;
        case 14:
            quitRarely();
            break;
        default:
            pump();
            break;
        }
        if (m_depth == 0) {
            compare();
        }
    }

    // Ends everything, so that nothing is open afterwards.
    void finish() {
        pump();
        for (std::size_t function = 0; function < kFunctions.size(); ++function) {
            unregisterFunction(function);
        }
        EXPECT_TRUE(m_registry.empty());
        compare();
    }

    // A reply function of the application was called.
    void onReply(std::size_t function, const TAV_ServiceParameters& parameters, void* userData) {
        const auto id = reinterpret_cast<std::intptr_t>(userData);
        const auto call = findById(id);
        ASSERT_NE(call, m_registry.end()) << "a call that is not registered was answered";
        EXPECT_EQ(call->function, function);
        EXPECT_NE(TAV_GetParamJson(&parameters), nullptr);
        const OpenCall running = *call;
        if (!m_expected.empty() && m_expected.back().id == id) {
            m_expected.back().called = true;
        } else {
            EXPECT_EQ(m_pending.erase(running.token), 1U) << "a reply that nobody sent";
        }
        if (running.oneShot) {
            m_bus.erase(running.token);
        }
        actInside();
        if (running.oneShot) {
            std::erase_if(m_registry, [&](const OpenCall& open) { return open.id == id; });
        }
    }

    // A method of the application was called.
    void onCall(std::size_t handler, TAV_JSParameters* parameters) {
        ASSERT_FALSE(m_calls.empty());
        Call call = m_calls.back();
        EXPECT_FALSE(call.done) << "a handler was called twice";
        EXPECT_EQ(call.handler, handler);
        EXPECT_EQ(TAV_GetNumJSParams(parameters), call.count);
        const int sent = static_cast<int>(call.parameters.size());
        for (int index = -1; index <= sent; ++index) {
            const bool isThere = index >= 0 && index < std::min(call.count, sent);
            EXPECT_EQ(TAV_GetJSParamString(parameters, index),
                      isThere ? call.parameters[static_cast<std::size_t>(index)] : "");
        }
        const std::size_t place = m_calls.size() - 1;
        actInside();
        ASSERT_EQ(m_calls.size(), place + 1);
        m_calls[place].done = true;
        m_calls[place].answer = answerAtRandom(parameters);
    }

private:
    using Calls = std::vector<OpenCall>;

    struct Call {
        std::size_t handler;
        int count;
        std::vector<std::string> parameters;
        Answer answer;
        bool done;
    };

    static World* s_world;

    template <std::size_t Function>
    static void replyFunction(TAV_ServiceParameters* parameters, void* userData) {
        s_world->onReply(Function, *parameters, userData);
    }

    template <std::size_t Handler>
    static void jsHandler(TAV_JSParameters* parameters) {
        s_world->onCall(Handler, parameters);
    }

    static constexpr std::array<TAV_ServiceCallback, 4> kFunctions = {
        replyFunction<0>, replyFunction<1>, replyFunction<2>, replyFunction<3>};
    static constexpr std::array<TAV_JSHandler, 3> kHandlers = {jsHandler<0>, jsHandler<1>,
                                                               jsHandler<2>};

    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(m_random);
    }

    bool oneIn(std::size_t count) { return below(count) == 0; }

    Calls::iterator findById(std::intptr_t id) {
        return std::find_if(m_registry.begin(), m_registry.end(),
                            [id](const OpenCall& call) { return call.id == id; });
    }

    Calls::iterator findByToken(int token) {
        return std::find_if(m_registry.begin(), m_registry.end(),
                            [token](const OpenCall& call) { return call.token == token; });
    }

    // What an application may do in its own functions.
    void actInside() {
        if (m_depth == kDeepest || oneIn(2)) {
            return;
        }
        ++m_depth;
        for (std::size_t count = 1 + below(3); count > 0 && !testing::Test::HasFailure(); --count) {
            step();
        }
        --m_depth;
    }

    void registerCall() {
        if (m_bus.size() >= kMostOpen) {
            return;
        }
        const std::size_t function = below(kFunctions.size());
        const bool oneShot = !oneIn(3);
        const bool answers = oneIn(2);
        const bool fails = oneIn(10);
        const std::intptr_t id = ++m_lastId;
        m_device.failNth(sim::Fault::Dispatch, fails ? 1 : 0);
        const int code = TAV_ServiceCallWithCallback(
            answers ? kAnsweringUri : kSilentUri, "{}", kFunctions[function],
            reinterpret_cast<void*>(id), oneShot ? tavtest::anyValue<SDL_bool>(7) : SDL_FALSE);
        m_device.failNth(sim::Fault::Dispatch, 0);
        EXPECT_EQ(code, fails ? TAV_ECONNECTION : TAV_NOERROR);
        if (fails) {
            return;
        }
        const int token = m_device.openCalls().back();
        m_registry.push_back({token, id, function, oneShot});
        m_bus[token] = oneShot;
        if (answers) {
            m_pending.insert(token);
        }
    }

    void deliver() {
        forgetIgnored(m_device.openCalls());
        if (m_bus.empty()) {
            return;
        }
        auto open = m_bus.begin();
        std::advance(open, below(m_bus.size()));
        const auto [token, oneShot] = *open;
        const auto call = findByToken(token);
        const bool isRegistered = call != m_registry.end();
        if (oneShot) {
            m_bus.erase(token);
            m_pending.erase(token);  // its queued reply finds no open call any more
        }
        m_expected.push_back({isRegistered ? call->id : 0, false});
        EXPECT_TRUE(m_device.deliver(token, "{}"));
        EXPECT_EQ(m_expected.back().called, isRegistered);
        m_expected.pop_back();
    }

    // A pump that still runs has handed these calls' replies to the library, which ignored them,
    // so that the model did not see them go.
    void forgetIgnored(const std::vector<int>& open) {
        std::erase_if(m_bus, [&](const auto& call) {
            const bool gone = !std::binary_search(open.begin(), open.end(), call.first);
            EXPECT_TRUE(!gone || (call.second && m_pending.erase(call.first) == 1 &&
                                  findByToken(call.first) == m_registry.end()))
                << "the bus closed a call that is registered";
            return gone;
        });
    }

    void pump() {
        const std::set<int> due = m_pending;
        m_expected.push_back({0, false});
        m_device.pump();
        m_expected.pop_back();
        for (const int token : due) {
            EXPECT_TRUE(m_pending.erase(token) == 0 || findByToken(token) == m_registry.end())
                << "a reply that was due did not come";
            const auto open = m_bus.find(token);
            if (open != m_bus.end() && open->second) {
                EXPECT_EQ(findByToken(token), m_registry.end());
                m_bus.erase(open);
            }
        }
    }

    void unregisterFunction(std::size_t function) {
        EXPECT_EQ(TAV_UnregisterServiceCallback(kFunctions[function]), TAV_NOERROR);
        std::erase_if(m_registry, [&](const OpenCall& call) {
            const bool matches = call.function == function;
            if (matches) {
                m_bus.erase(call.token);
                m_pending.erase(call.token);
            }
            return matches;
        });
    }

    void registerMethod() {
        const std::string& name = m_names[below(m_names.size())];
        const std::size_t handler = below(kHandlers.size());
        EXPECT_EQ(TAV_RegisterJSHandler(name.c_str(), kHandlers[handler]), TAV_NOERROR);
        const auto method = std::find_if(m_methods.begin(), m_methods.end(),
                                         [&](const Method& known) { return known.name == name; });
        if (method != m_methods.end()) {
            method->handler = handler;
        } else {
            m_methods.push_back({name.substr(0, kLongestStored), handler});
        }
    }

    void callMethod() {
        const std::string& name = m_names[below(m_names.size())];
        Call call = {};
        for (std::size_t count = below(4); count > 0; --count) {
            call.parameters.push_back(std::to_string(below(1000)));
        }
        const int sent = static_cast<int>(call.parameters.size());
        call.count = oneIn(8) ? sent - 5 : oneIn(8) ? sent + 1000000 : sent;
        HDataWriter message;
        message.writeStr(name.c_str());
        message.writeInt(call.count);
        for (const std::string& parameter : call.parameters) {
            message.writeStr(parameter.c_str());
        }
        const std::string called = name.substr(0, kLongestCalled);
        const auto method = std::find_if(m_methods.begin(), m_methods.end(),
                                         [&](const Method& known) { return known.name == called; });
        const bool isKnown = method != m_methods.end();
        call.handler = isKnown ? method->handler : kHandlers.size();

        m_calls.push_back(call);
        HDataReader reader(message.bytes(), message.size());
        HDataWriter answer;
        EXPECT_TRUE(tav::jsMethodCallback(&reader, &answer));
        const Call done = m_calls.back();
        m_calls.pop_back();
        EXPECT_EQ(done.done, isKnown);
        checkAnswer(answer, isKnown ? done.answer : Answer{true, "Unknown Function"});
    }

    static void checkAnswer(const HDataWriter& writer, const Answer& expected) {
        HDataReader reader(writer.bytes(), writer.size());
        EXPECT_EQ(reader.readBool(), expected.isException);
        const std::unique_ptr<char[]> text(reader.allocReadStr());
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(text.get(), expected.text);
    }

    Answer answerAtRandom(TAV_JSParameters* parameters) {
        const std::string text = std::to_string(below(1000));
        switch (below(5)) {
        case 0:
            return {false, ""};
        case 1:
            TAV_JSReply(parameters, text.c_str());
            return {false, text};
        case 2:
            TAV_JSException(parameters, text.c_str());
            return {true, text};
        case 3:
            TAV_JSException(parameters, "not this");
            TAV_JSReply(parameters, text.c_str());
            return {false, text};
        default:
            TAV_JSReply(parameters, text.c_str());
            TAV_JSException(parameters, nullptr);
            return {true, ""};
        }
    }

    void sendOneWay() { EXPECT_EQ(TAV_ServiceCall(kAnsweringUri, "{}"), TAV_NOERROR); }

    void quitRarely() {
        switch (below(12)) {
        case 0:
            TAV_Quit();
            m_registry.clear();
            m_methods.clear();
            break;
        case 1:
            TAV_ServicesQuit();
            m_registry.clear();
            break;
        case 2:
            TAV_JSQuit();
            m_methods.clear();
            break;
        default:
            break;
        }
    }

    // The model beside what can be seen from outside: the bus's open calls and the method list.
    void compare() {
        std::vector<int> open;
        for (const auto& [token, oneShot] : m_bus) {
            open.push_back(token);
        }
        ASSERT_EQ(m_device.openCalls(), open);
        HDataWriter list;
        ASSERT_TRUE(tav::jsGetMethodsCallback(&list));
        HDataReader reader(list.bytes(), list.size());
        ASSERT_EQ(reader.readInt(), static_cast<int>(m_methods.size()));
        for (const Method& method : m_methods) {
            const std::unique_ptr<char[]> name(reader.allocReadStr());
            ASSERT_NE(name, nullptr);
            ASSERT_EQ(name.get(), method.name);
        }
    }

    friend class RandomTest;

    sim::Device& m_device;
    std::mt19937_64 m_random;
    int m_steps = 0;
    int m_depth = 0;
    std::intptr_t m_lastId = 0;
    Calls m_registry;           // in the order of registration
    std::map<int, bool> m_bus;  // open calls; whether each is one-shot
    std::set<int> m_pending;    // open calls whose reply is queued
    std::vector<Expected> m_expected;
    std::vector<std::string> m_names;
    std::vector<Method> m_methods;
    std::vector<Call> m_calls;  // running method calls, the innermost last
};

World* World::s_world = nullptr;

class RandomTest : public tavtest::DeviceTest {
protected:
    static void makeCurrent(World* world) { World::s_world = world; }
};

TEST_F(RandomTest, RegistriesFollowTheModel) {
    const char* wanted = std::getenv("TAV_TEST_SEED");
    const unsigned long seed = wanted != nullptr ? std::strtoul(wanted, nullptr, 10) : kDefaultSeed;
    std::printf("TAV_TEST_SEED=%lu\n", seed);
    device.listen("");
    World world(device, seed);
    makeCurrent(&world);
    while (world.steps() < kSteps && !HasFailure()) {
        world.step();
    }
    world.finish();
    EXPECT_FALSE(HasFailure()) << "TAV_TEST_SEED=" << seed << ", step " << world.steps();
    makeCurrent(nullptr);
}

}  // namespace

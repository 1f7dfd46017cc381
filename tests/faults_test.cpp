// Every fault once: the calls of the tour, again and again, and each time another allocation,
// dispatch, host request or read fails.
#include <filesystem>
#include <functional>
#include <new>
#include <regex>

#include "bridge.h"
#include "device_test.h"
#include "platform/hstring.h"
#include "resources.h"
#include "services.h"

extern "C" const char __executable_start, etext;

namespace {

// The library's own allocations count and fail with those of the helper library. The shared
// libraries, which have theirs from here too, are left in peace.
bool isToFail(const void* caller) {
    if (caller < &__executable_start || caller >= &etext) {
        return false;
    }
    HString* counted = HString_alloc();
    HString_free(counted);
    return counted == nullptr;
}

}  // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return isToFail(__builtin_return_address(0)) ? nullptr : ::operator new(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return isToFail(__builtin_return_address(0)) ? nullptr : ::operator new[](size);
}

namespace {

using tavsim::Fault;

constexpr char kUndisturbed[] = "what it comes to without a fault";
constexpr char kNoOrder[] = R"({"returnValue":false,"errorCode":-1,"errorText":"no such order"})";
constexpr char kDeclined[] =
    R"({"returnValue":false,"errorCode":-1,"errorText":"the purchase was declined"})";

std::string outcomeOf(int code) {
    return code == TAV_NOERROR ? "ok" : std::to_string(code) + ": " + TAV_GetError();
}

std::string outcomeOf(const std::string& outcome) {
    return outcome;
}

template <typename Record>
std::string outcomeOf(Record* record) {
    return tavtest::take(record);
}

// Runs a query that fills a buffer.
std::string filled(int (*query)(char*, int)) {
    char buffer[256] = "untouched";
    const int code = query(buffer, static_cast<int>(sizeof buffer));
    return code == TAV_NOERROR ? buffer : outcomeOf(code);
}

int appId(char* buffer, int length) {
    return TAV_GetAppinfoValue("id", buffer, length);
}

int dataFile(char* buffer, int length) {
    return TAV_GetDataFilePath("scores.txt", buffer, length);
}

int osVersion() {
    TAV_OSVersion version;
    return TAV_GetOSVersion(&version);
}

std::string rolesAfterStart() {
    namespace fs = std::filesystem;
    std::string outcome = outcomeOf(TAV_Init(0));
    const fs::path roles = tavsim::device().root() + "/var/vire/ks2/roles/pub";
    for (const char* id : {"com.example.tour", "tour"}) {
        if (fs::exists(roles / (std::string(id) + ".json"))) {
            outcome += ", roles of " + std::string(id);
        }
    }
    return outcome;
}

// The other switch goes back, whether or not the first one worked.
std::string compass() {
    const std::string outcome = outcomeOf(TAV_EnableCompass(SDL_TRUE));
    tavsim::device().advance(1000);
    const std::string back = outcomeOf(TAV_EnableCompass(SDL_FALSE));
    return outcome == "ok" ? back : outcome;
}

std::string location() {
    const std::string outcome = outcomeOf(TAV_EnableLocationTracking(SDL_TRUE));
    TAV_Location location = {};
    tavsim::device().advance(500);
    EXPECT_EQ(TAV_GetLocation(&location), outcome == "ok" ? TAV_NOERROR : TAV_UNINIT);
    TAV_EnableLocationTracking(SDL_FALSE);
    return outcome;
}

void onBattery(TAV_ServiceParameters* parameters, void* userData) {
    char source[32] = "untouched";
    TAV_GetParamString(parameters, "source", source, sizeof source);
    *static_cast<std::string*>(userData) = source;
}

std::string oneReply() {
    std::string source = "none";
    const std::string outcome = outcomeOf(TAV_ServiceCallWithCallback(
        "vire://com.vire.battery/status", "{}", onBattery, &source, SDL_TRUE));
    tavsim::device().advance(100);
    return outcome == "ok" ? source : outcome;
}

void onTick(TAV_ServiceParameters* /*parameters*/, void* userData) {
    if (++*static_cast<int*>(userData) == 5) {
        TAV_UnregisterServiceCallback(onTick);
    }
}

std::string subscription() {
    int ticks = 0;
    const std::string outcome = outcomeOf(TAV_ServiceCallWithCallback(
        "vire://com.vire.clock/ticks", "{}", onTick, &ticks, SDL_FALSE));
    tavsim::device().advance(7000);
    EXPECT_EQ(ticks, outcome == "ok" ? 5 : 0);
    return outcome;
}

void onGreet(TAV_JSParameters* parameters) {
    TAV_JSReply(parameters, TAV_GetJSParamString(parameters, 0));
}

// The page's call is made apart, in place of a page.
std::string bridge() {
    const std::string registered = outcomeOf(TAV_JSRegistrationComplete());
    const char* arguments[] = {"a text"};
    const std::string called = outcomeOf(TAV_CallJS("show", arguments, 1));
    return registered == "ok" ? called : registered;
}

std::string callFromPage() {
    TAV_RegisterJSHandler("greet", onGreet);
    const tavtest::Answer answer = tavtest::callMethod("greet", 1, {"hello"});
    const std::string error = SDL_GetError();
    return (answer ? answer->second : "unanswered") + (error.empty() ? "" : ": " + error);
}

int sendEmail() {
    const char* recipients[] = {"ann@example.com", "bob@example.com"};
    return TAV_LaunchEmailTo("Scores", "1. Ann", 2, recipients);
}

// What a step may come to when a fault strikes it.
using Struck = std::map<Fault, std::set<std::string>>;

struct Step {
    std::string name;
    std::function<std::string()> run;
    Struck struck;
};

Struck onHost(const std::string& outcome) {
    return {{Fault::HostRequest, {outcome}}};
}

#define STEP(call) #call, [] { return outcomeOf(call); }

const std::vector<Step>& steps() {
    static const Struck lookUp = onHost("4: ");  // the host's failures have no message
    static const Struck control = onHost("2: Unable to communicate with app card");
    static const Struck service = {{Fault::Dispatch, {"2: Unable to communicate with app card"}}};
    static const Struck launch = {{Fault::Dispatch, {"2: Unable to communicate with app card"}},
                                  {Fault::Allocation, {"2: Unable to communicate with app card"}}};
    // An answer is not lost for want of memory to read whether it is a refusal.
    static const Struck refused = {
        {Fault::Dispatch, {"null: failed to dispatch call"}},
        {Fault::Allocation, {"null: Could not allocate HString", kDeclined, kNoOrder}}};
    static const Struck purchase = {
        {Fault::Dispatch, {"null: failed to dispatch call"}},
        {Fault::Allocation, {"null: Could not allocate HString", kUndisturbed}}};
    static const auto& all = *new std::vector<Step>{
        // Without the executable's path there are no roles, without an id the path names them.
        {STEP(rolesAfterStart()), {{Fault::HostRequest, {"ok", "ok, roles of tour"}}}},
        {STEP(filled(TAV_GetRegionCountryCode)), lookUp},
        {STEP(filled(TAV_GetRegionCountryName)), lookUp},
        {STEP(filled(TAV_GetLanguage)), lookUp},
        {STEP(filled(TAV_GetUniqueID)), {{Fault::Read, {"9: could not read ID file"}}}},
        {STEP(osVersion()), onHost("4: Unable to extract OS version information")},
        {STEP(filled(appId)), lookUp},
        {STEP(filled(dataFile).substr(0, 4)), lookUp},
        {STEP(compass()), onHost("2: ")},
        {STEP(TAV_SetKeyboardState(SDL_TRUE)), onHost("2: Could not communicate with card")},
        {STEP(TAV_SetTouchAggression(1)),
         onHost("2: Could not communicate with Touch Aggression service")},
        {STEP(TAV_SetOrientation(TAV_ORIENTATION_RIGHT)), control},
        {STEP(TAV_GesturesEnable(SDL_FALSE)), control},
        {STEP(TAV_BannerMessagesEnable(SDL_FALSE)), control},
        {STEP(TAV_CustomPauseUiEnable(SDL_TRUE)), control},
        {STEP(TAV_ScreenTimeoutEnable(SDL_FALSE)), control},
        {STEP(TAV_Minimize()), onHost("4: Failed IPC communication for minimize")},
        {STEP(oneReply()),
         {{Fault::Dispatch, {"2: Unable to dispatch service call"}},
          {Fault::Allocation, {"", "2: Unable to dispatch service call"}}}},
        {STEP(subscription()),
         {{Fault::Dispatch, {"2: Unable to dispatch service call"}},
          {Fault::Allocation, {"2: Unable to dispatch service call"}}}},
        {STEP(location()), service},
        {STEP(TAV_Vibrate(100, 500)), service},
        {STEP(TAV_SetFirewallPortStatus(1025, SDL_TRUE)), service},
        {STEP(TAV_NotifyMusicPlaying(SDL_TRUE)), service},
        {STEP(TAV_LaunchBrowser("http://example.com/")), launch},
        {STEP(TAV_LaunchEmail("Scores", "1. Ann")), launch},
        {STEP(sendEmail()), launch},
        {STEP(TAV_GetAvailableItems()), purchase},
        {STEP(TAV_GetItemInfo("gold-skin")), purchase},
        {STEP(TAV_GetPendingPurchaseInfo("17")), refused},
        {STEP(TAV_PurchaseItem("extra-levels", 1, nullptr)), purchase},
        {STEP(TAV_PurchaseItem("gold-skin", 1, "from the tour")), refused},
        {STEP(bridge()),
         {{Fault::HostRequest,
           {"2: Could not register JS Handlers. Either this was not launched as a plugin, or the "
            "IPC is not yet set up.",
            "2: Unable to dispatch message"}}}},
        // The last reads are the page's, of its answer.
        {STEP(callFromPage()),
         {{Fault::Read, {"unanswered", "", "(null)"}},
          {Fault::Allocation,
           {"Unknown Function: Could not allocate memory", "unanswered",
            "unanswered: Could not allocate memory"}}}},
    };
    return all;
}

#undef STEP

// With an event queue, since without one some builds of SDL leave a message of their own behind.
class FaultsTest : public tavtest::EventTest {
protected:
    // Where the step is one call that failed with a message, the trace names the function with it,
    // or for a purchase request the one below in which it failed.
    void expectTraced(const std::string& step, const std::string& outcome) {
        static const std::regex failure("(null|[0-9]): (.+)");
        std::smatch parts;
        if (step.starts_with("TAV_") && std::regex_match(outcome, parts, failure)) {
            const std::string function = "tav_e " + step.substr(0, step.find('(')) + " ";
            const std::string text = parts.str(2);
            EXPECT_THAT(trace(), testing::Contains(testing::AnyOf(function + text,
                                                                  "tav_e blockingKSCall " + text,
                                                                  "tav_e dispatch " + text)));
        }
    }

    // The tour on a device, as root so that start-up makes roles, from a fresh start. Returns what
    // each step came to, and which steps the n-th occurrence struck (the steps' number: none).
    std::vector<std::string> run(bool plugin, Fault fault, int n, std::size_t* struck) {
        std::string error;
        tavsim::Profile profile = tavsim::readProfile(tavsim::profilePath("cinnabar"), &error)
                                      .value_or(tavsim::Profile());
        EXPECT_EQ(error, "");
        profile.root = true;
        profile.plugin = plugin;
        profile.executable = "/apps/bin/tour";
        startDevice(std::move(profile));
        const long descriptors = tavtest::openDescriptors();
        device.failNth(fault, n);
        *struck = steps().size();
        std::vector<std::string> outcomes;
        for (const Step& step : steps()) {
            SDL_ClearError();
            trace();
            const int before = device.occurrences(fault);
            outcomes.push_back(step.run());
            if (n > before && n <= device.occurrences(fault)) {
                *struck = outcomes.size() - 1;
                expectTraced(step.name, outcomes.back());
            }
        }
        EXPECT_EQ(device.openCalls(), std::vector<int>());
        TAV_Quit();
        EXPECT_EQ(tavtest::openDescriptors(), descriptors);
        return outcomes;
    }

    void strikeEach(bool plugin, Fault fault) {
        std::size_t struck = 0;
        const std::vector<std::string> undisturbed = run(plugin, fault, 0, &struck);
        const int occurrences = device.occurrences(fault);
        EXPECT_GT(occurrences, 0);
        for (int n = 1; n <= occurrences && !HasFailure(); ++n) {
            std::vector<std::string> outcomes = run(plugin, fault, n, &struck);
            ASSERT_LT(struck, steps().size());
            const Step& step = steps()[struck];
            SCOPED_TRACE(step.name + ", occurrence " + std::to_string(n));
            const std::string outcome = std::exchange(outcomes[struck], undisturbed[struck]);
            EXPECT_EQ(outcomes, undisturbed) << "another step than the struck one changed";
            ASSERT_TRUE(step.struck.count(fault) != 0) << outcome;
            const std::set<std::string>& allowed = step.struck.at(fault);
            EXPECT_TRUE(allowed.count(outcome) != 0 ||
                        (allowed.count(kUndisturbed) != 0 && outcome == undisturbed[struck]))
                << outcome;
        }
    }
};

TEST_F(FaultsTest, EachIsReportedAndLeavesNothingBehind) {
    for (const bool plugin : {false, true}) {
        for (const Fault fault :
             {Fault::Allocation, Fault::Dispatch, Fault::HostRequest, Fault::Read}) {
            SCOPED_TRACE("fault " + std::to_string(static_cast<int>(fault)));
            strikeEach(plugin, fault);
        }
    }
}

}  // namespace

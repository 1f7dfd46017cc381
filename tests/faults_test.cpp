// Every fault once: the calls of the tour, again and again, and each time another allocation of a
// growable string, dispatch, host request or read fails.
#include <filesystem>
#include <functional>
#include <memory>

#include "device_test.h"
#include "js/handlers.h"
#include "platform/hdata.h"
#include "resources.h"

namespace {

constexpr char kOutOfMemory[] = "null: Could not allocate HString";
constexpr char kUndisturbed[] = "what it comes to without a fault";
constexpr char kNotSent[] = "null: failed to dispatch call";
constexpr char kNotReachable[] = "2: Unable to communicate with app card";
constexpr char kNotDispatched[] = "2: Unable to dispatch service call";
constexpr char kLookUpFailed[] = "4: ";  // the host's failures have no message

constexpr char kBattery[] = "vire://com.vire.battery/status";
constexpr char kTicks[] = "vire://com.vire.clock/ticks";

std::string outcomeOf(int code) {
    return code == TAV_NOERROR ? "ok" : std::to_string(code) + ": " + TAV_GetError();
}

// Runs a query that fills a buffer.
template <typename Query>
std::string filled(Query query) {
    char buffer[256] = "untouched";
    const int code = query(buffer, static_cast<int>(sizeof buffer));
    return code == TAV_NOERROR ? buffer : outcomeOf(code);
}

template <typename Record>
std::string bought(Record* record, const char* (*text)(const Record*), void (*release)(Record*)) {
    if (record == nullptr) {
        return std::string("null: ") + TAV_GetError();
    }
    const std::string json = text(record);
    release(record);
    return json;
}

std::string rolesAfterStart() {
    namespace fs = std::filesystem;
    std::string outcome = outcomeOf(TAV_Init(0));
    const fs::path roles = sim::device().root() + "/var/vire/ks2/roles/pub";
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
    sim::device().advance(1000);
    const std::string back = outcomeOf(TAV_EnableCompass(SDL_FALSE));
    return outcome == "ok" ? back : outcome;
}

std::string location() {
    const std::string outcome = outcomeOf(TAV_EnableLocationTracking(SDL_TRUE));
    TAV_Location location = {};
    sim::device().advance(500);
    const int code = TAV_GetLocation(&location);
    EXPECT_EQ(code, outcome == "ok" ? TAV_NOERROR : TAV_UNINIT);
    TAV_EnableLocationTracking(SDL_FALSE);
    return outcome;
}

void onBattery(TAV_ServiceParameters* parameters, void* userData) {
    char source[32] = "untouched";
    TAV_GetParamString(parameters, "source", source, sizeof source);
    *static_cast<std::string*>(userData) = "source '" + std::string(source) + "'";
}

std::string oneReply() {
    std::string answer;
    const int code = TAV_ServiceCallWithCallback(kBattery, "{}", onBattery, &answer, SDL_TRUE);
    const std::string outcome = outcomeOf(code);
    sim::device().advance(100);
    return code == TAV_NOERROR ? answer : outcome;
}

void onTick(TAV_ServiceParameters* /*parameters*/, void* userData) {
    if (++*static_cast<int*>(userData) == 5) {
        TAV_UnregisterServiceCallback(onTick);
    }
}

std::string subscription() {
    int ticks = 0;
    const std::string outcome =
        outcomeOf(TAV_ServiceCallWithCallback(kTicks, "{}", onTick, &ticks, SDL_FALSE));
    sim::device().advance(7000);
    EXPECT_EQ(ticks, outcome == "ok" ? 5 : 0);
    return outcome;
}

void onGreet(TAV_JSParameters* parameters) {
    TAV_JSReply(parameters, TAV_GetJSParamString(parameters, 0));
}

// The page's call is made here, in place of a page.
std::string bridge() {
    TAV_RegisterJSHandler("greet", onGreet);
    const std::string registered = outcomeOf(TAV_JSRegistrationComplete());
    const char* arguments[] = {"a text"};
    const std::string called = outcomeOf(TAV_CallJS("show", arguments, 1));
    return registered == "ok" ? called : registered;
}

std::string callFromPage() {
    HDataWriter message;
    message.writeStr("greet");
    message.writeInt(1);
    message.writeStr("hello");
    HDataReader reader(message.bytes(), message.size());
    HDataWriter answer;
    if (!tav::jsMethodCallback(&reader, &answer)) {
        EXPECT_EQ(answer.size(), 0U);
        return "unreadable";
    }
    std::string text(static_cast<const char*>(answer.bytes()), answer.size());
    return text.find("hello") != std::string::npos ? "hello" : "empty";
}

struct Step {
    const char* name;
    std::function<std::string()> run;
    // What the step comes to when a fault strikes it: the one thing, or for a step that goes on
    // without what it could not have, each of those that it may come to.
    std::map<sim::Fault, std::set<std::string>> struck;
};

using sim::Fault;

const std::vector<Step>& steps() {
    static const char* const recipients[] = {"ann@example.com", "bob@example.com"};
    static const auto& all = *new std::vector<Step>{
        // Without the executable's path there are no roles, without an id the path names them.
        {"TAV_Init", rolesAfterStart, {{Fault::HostRequest, {"ok", "ok, roles of tour"}}}},
        {"TAV_GetRegionCountryCode",
         [] { return filled(TAV_GetRegionCountryCode); },
         {{Fault::HostRequest, {kLookUpFailed}}}},
        {"TAV_GetRegionCountryName",
         [] { return filled(TAV_GetRegionCountryName); },
         {{Fault::HostRequest, {kLookUpFailed}}}},
        {"TAV_GetLanguage",
         [] { return filled(TAV_GetLanguage); },
         {{Fault::HostRequest, {kLookUpFailed}}}},
        {"TAV_GetUniqueID",
         [] { return filled(TAV_GetUniqueID); },
         {{Fault::Read, {"9: could not read ID file"}}}},
        {"TAV_GetOSVersion",
         [] {
             TAV_OSVersion version;
             return outcomeOf(TAV_GetOSVersion(&version));
         },
         {{Fault::HostRequest, {"4: Unable to extract OS version information"}}}},
        {"TAV_GetAppinfoValue",
         [] {
             return filled([](char* buffer, int length) {
                 return TAV_GetAppinfoValue("id", buffer, length);
             });
         },
         {{Fault::HostRequest, {kLookUpFailed}}}},
        {"TAV_GetDataFilePath",
         [] {
             return filled([](char* buffer, int length) {
                        return TAV_GetDataFilePath("scores.txt", buffer, length);
                    })
                 .substr(0, 4);
         },
         {{Fault::HostRequest, {kLookUpFailed}}}},
        {"compass", compass, {{Fault::HostRequest, {"2: "}}}},
        {"TAV_SetKeyboardState",
         [] { return outcomeOf(TAV_SetKeyboardState(SDL_TRUE)); },
         {{Fault::HostRequest, {"2: Could not communicate with card"}}}},
        {"TAV_SetTouchAggression",
         [] { return outcomeOf(TAV_SetTouchAggression(1)); },
         {{Fault::HostRequest, {"2: Could not communicate with Touch Aggression service"}}}},
        {"TAV_SetOrientation",
         [] { return outcomeOf(TAV_SetOrientation(TAV_ORIENTATION_RIGHT)); },
         {{Fault::HostRequest, {kNotReachable}}}},
        {"TAV_GesturesEnable",
         [] { return outcomeOf(TAV_GesturesEnable(SDL_FALSE)); },
         {{Fault::HostRequest, {kNotReachable}}}},
        {"TAV_BannerMessagesEnable",
         [] { return outcomeOf(TAV_BannerMessagesEnable(SDL_FALSE)); },
         {{Fault::HostRequest, {kNotReachable}}}},
        {"TAV_CustomPauseUiEnable",
         [] { return outcomeOf(TAV_CustomPauseUiEnable(SDL_TRUE)); },
         {{Fault::HostRequest, {kNotReachable}}}},
        {"TAV_ScreenTimeoutEnable",
         [] { return outcomeOf(TAV_ScreenTimeoutEnable(SDL_FALSE)); },
         {{Fault::HostRequest, {kNotReachable}}}},
        {"TAV_Minimize",
         [] { return outcomeOf(TAV_Minimize()); },
         {{Fault::HostRequest, {"4: Failed IPC communication for minimize"}}}},
        {"one reply",
         oneReply,
         {{Fault::Dispatch, {kNotDispatched}}, {Fault::StringAllocation, {"source ''"}}}},
        {"subscription", subscription, {{Fault::Dispatch, {kNotDispatched}}}},
        {"location", location, {{Fault::Dispatch, {kNotReachable}}}},
        {"TAV_Vibrate",
         [] { return outcomeOf(TAV_Vibrate(100, 500)); },
         {{Fault::Dispatch, {kNotReachable}}}},
        {"TAV_SetFirewallPortStatus",
         [] { return outcomeOf(TAV_SetFirewallPortStatus(1025, SDL_TRUE)); },
         {{Fault::Dispatch, {kNotReachable}}}},
        {"TAV_NotifyMusicPlaying",
         [] { return outcomeOf(TAV_NotifyMusicPlaying(SDL_TRUE)); },
         {{Fault::Dispatch, {kNotReachable}}}},
        {"TAV_LaunchBrowser",
         [] { return outcomeOf(TAV_LaunchBrowser("http://example.com/")); },
         {{Fault::Dispatch, {kNotReachable}}, {Fault::StringAllocation, {kNotReachable}}}},
        {"TAV_LaunchEmail",
         [] { return outcomeOf(TAV_LaunchEmail("Scores", "1. Ann")); },
         {{Fault::Dispatch, {kNotReachable}}, {Fault::StringAllocation, {kNotReachable}}}},
        {"TAV_LaunchEmailTo",
         [] {
             return outcomeOf(
                 TAV_LaunchEmailTo("Scores", "1. Ann", 2, const_cast<const char**>(recipients)));
         },
         {{Fault::Dispatch, {kNotReachable}}, {Fault::StringAllocation, {kNotReachable}}}},
        // What was bought is not lost for want of memory to read that it was.
        {"TAV_GetAvailableItems",
         [] {
             return bought(TAV_GetAvailableItems(), TAV_GetItemCollectionJSON,
                           TAV_FreeItemCollection);
         },
         {{Fault::Dispatch, {kNotSent}}, {Fault::StringAllocation, {kOutOfMemory, kUndisturbed}}}},
        {"TAV_PurchaseItem",
         [] {
             return bought(TAV_PurchaseItem("extra-levels", 1, nullptr), TAV_GetItemReceiptJSON,
                           TAV_FreeItemReceipt);
         },
         {{Fault::Dispatch, {kNotSent}}, {Fault::StringAllocation, {kOutOfMemory, kUndisturbed}}}},
        {"a refused purchase",
         [] {
             return bought(TAV_PurchaseItem("gold-skin", 1, "from the tour"),
                           TAV_GetItemReceiptJSON, TAV_FreeItemReceipt);
         },
         {{Fault::Dispatch, {kNotSent}}, {Fault::StringAllocation, {kOutOfMemory}}}},
        {"bridge",
         bridge,
         {{Fault::HostRequest,
           {"2: Could not register JS Handlers. Either this was not launched as a plugin, or the "
            "IPC is not yet set up.",
            "2: Unable to dispatch message"}}}},
        {"a call from the page", callFromPage, {{Fault::Read, {"unreadable", "empty"}}}},
    };
    return all;
}

class FaultsTest : public tavtest::DeviceTest {
protected:
    // The tour on a device, as root so that start-up makes roles, from a fresh start. Returns what
    // each step came to, and which steps the n-th occurrence struck (the steps' number: none).
    std::vector<std::string> run(Fault fault, int n, std::size_t* struck) {
        std::string error;
        std::optional<sim::Profile> profile =
            sim::readProfile(sim::profilePath("cinnabar"), &error);
        EXPECT_TRUE(profile.has_value()) << error;
        profile->root = true;
        profile->plugin = m_plugin;
        profile->executable = "/apps/bin/tour";
        startDevice(*profile);
        const long descriptors = tavtest::openDescriptors();
        device.failNth(fault, n);
        *struck = steps().size();
        std::vector<std::string> outcomes;
        for (std::size_t index = 0; index < steps().size(); ++index) {
            SDL_ClearError();
            const int before = device.occurrences(fault);
            outcomes.push_back(steps()[index].run());
            if (n > before && n <= device.occurrences(fault)) {
                *struck = index;
            }
        }
        EXPECT_EQ(device.openCalls(), std::vector<int>());
        TAV_Quit();
        EXPECT_EQ(tavtest::openDescriptors(), descriptors);
        m_occurrences = device.occurrences(fault);
        return outcomes;
    }

    void strikeEach(Fault fault) {
        std::size_t struck = 0;
        const std::vector<std::string> undisturbed = run(fault, 0, &struck);
        const int occurrences = m_occurrences;
        EXPECT_GT(occurrences, 0);
        for (int n = 1; n <= occurrences && !HasFailure(); ++n) {
            const std::vector<std::string> outcomes = run(fault, n, &struck);
            ASSERT_LT(struck, steps().size());
            SCOPED_TRACE(std::string(steps()[struck].name) + ", occurrence " + std::to_string(n));
            std::vector<std::string> expected = undisturbed;
            expected[struck] = outcomes[struck];
            EXPECT_EQ(outcomes, expected) << "another step than the struck one changed";
            const auto& allowed = steps()[struck].struck;
            ASSERT_TRUE(allowed.count(fault) != 0) << outcomes[struck];
            const bool mayGoOn = allowed.at(fault).count(kUndisturbed) != 0;
            EXPECT_TRUE(allowed.at(fault).count(outcomes[struck]) != 0 ||
                        (mayGoOn && outcomes[struck] == undisturbed[struck]))
                << outcomes[struck];
        }
    }

    bool m_plugin = false;

private:
    int m_occurrences = 0;
};

TEST_F(FaultsTest, EachIsReportedAndLeavesNothingBehind) {
    for (const bool plugin : {false, true}) {
        for (const Fault fault :
             {Fault::StringAllocation, Fault::Dispatch, Fault::HostRequest, Fault::Read}) {
            SCOPED_TRACE("fault " + std::to_string(static_cast<int>(fault)));
            m_plugin = plugin;
            strikeEach(fault);
        }
    }
}

}  // namespace

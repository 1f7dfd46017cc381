// The calls of the tour, again and again, and each time another allocation, dispatch, host request
// or read fails: it alone, or all from there on.
#include <filesystem>
#include <functional>
#include <new>

#include "bridge.h"
#include "platform/hstring.h"
#include "resources.h"
#include "transcript.h"

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
    const tavtest::Answer answer =
        tavtest::callMethod("greet", 9, std::vector<const char*>(9, "hello"));
    const std::string error = SDL_GetError();
    return (answer ? answer->second : "unanswered") + (error.empty() ? "" : ": " + error);
}

int sendEmail() {
    const char* recipients[] = {"ann@example.com", "bob@example.com"};
    return TAV_LaunchEmailTo("Scores", "1. Ann", 2, recipients);
}

struct Step {
    std::string name;
    std::function<std::string()> run;
};

#define STEP(call)                            \
    {                                         \
#call, [] { return outcomeOf(call); } \
    }

const Step kSteps[] = {
    STEP(rolesAfterStart()),
    STEP(filled(TAV_GetRegionCountryCode)),
    STEP(filled(TAV_GetRegionCountryName)),
    STEP(filled(TAV_GetLanguage)),
    STEP(filled(TAV_GetUniqueID)),
    STEP(osVersion()),
    STEP(filled(appId)),
    STEP(filled(dataFile).substr(0, 4)),
    STEP(compass()),
    STEP(TAV_SetKeyboardState(SDL_TRUE)),
    STEP(TAV_SetTouchAggression(1)),
    STEP(TAV_SetOrientation(TAV_ORIENTATION_RIGHT)),
    STEP(TAV_GesturesEnable(SDL_FALSE)),
    STEP(TAV_BannerMessagesEnable(SDL_FALSE)),
    STEP(TAV_CustomPauseUiEnable(SDL_TRUE)),
    STEP(TAV_ScreenTimeoutEnable(SDL_FALSE)),
    STEP(TAV_Minimize()),
    STEP(oneReply()),
    STEP(subscription()),
    STEP(location()),
    STEP(TAV_Vibrate(100, 500)),
    STEP(TAV_SetFirewallPortStatus(1025, SDL_TRUE)),
    STEP(TAV_NotifyMusicPlaying(SDL_TRUE)),
    STEP(TAV_LaunchBrowser("http://example.com/")),
    STEP(TAV_LaunchEmail("Scores", "1. Ann")),
    STEP(sendEmail()),
    STEP(TAV_GetAvailableItems()),
    STEP(TAV_GetItemInfo("gold-skin")),
    STEP(TAV_GetPendingPurchaseInfo("17")),
    STEP(TAV_PurchaseItem("extra-levels", 1, nullptr)),
    STEP(TAV_PurchaseItem("gold-skin", 1, "from the tour")),
    STEP(bridge()),
    STEP(callFromPage()),
};
constexpr size_t kStepCount = std::size(kSteps);

#undef STEP

// What each step came to, with its failures as they were traced.
using Outcomes = std::vector<std::string>;

class FaultsTest : public tavtest::TranscriptTest {
protected:
    void SetUp() override {
        TranscriptTest::SetUp();
        std::string error;
        profile = tavsim::readProfile(tavsim::profilePath("cinnabar"), &error).value();
        profile.root = true;  // so that start-up makes roles
        profile.executable = "/apps/bin/tour";
    }

    // All steps on a fresh device. Whatever fails, nothing is left behind.
    Outcomes run(const std::function<void()>& arrange, std::vector<int>* occurrences = nullptr) {
        startDevice(profile);
        const long descriptors = tavtest::openDescriptors();
        arrange();
        Outcomes outcomes;
        for (const Step& step : kSteps) {
            SDL_ClearError();
            trace();
            std::string outcome = step.run();
            for (const std::string& line : trace()) {
                outcome += line.starts_with("tav_e") ? "; " + line.substr(6) : "";
            }
            outcomes.push_back(outcome);
            if (occurrences != nullptr) {
                occurrences->push_back(device.occurrences(fault));
            }
        }
        EXPECT_EQ(device.openCalls(), std::vector<int>());
        TAV_Quit();
        EXPECT_EQ(tavtest::openDescriptors(), descriptors);
        return outcomes;
    }

    // The step that the n-th occurrence strikes is shown; the others are as without it.
    void strikeOnce(const Outcomes& undisturbed, int count) {
        for (int n = 1; n <= count; ++n) {
            std::vector<int> occurrences;
            Outcomes outcomes = run([&] { device.failNth(fault, n); }, &occurrences);
            const auto reached = std::lower_bound(occurrences.begin(), occurrences.end(), n);
            ASSERT_NE(reached, occurrences.end());
            const auto struck = static_cast<size_t>(reached - occurrences.begin());
            const bool isChanged = outcomes[struck] != undisturbed[struck];
            note(std::to_string(n) + ": " + kSteps[struck].name + " = " +
                 (isChanged ? outcomes[struck] : "undisturbed"));
            outcomes[struck] = undisturbed[struck];
            EXPECT_EQ(outcomes, undisturbed) << "another step than the struck one changed";
        }
    }

    // From the n-th on, all fail; for each step what it then comes to, whichever n it was.
    void strikeFrom(const Outcomes& undisturbed, int count) {
        std::vector<std::set<std::string>> changed(kStepCount);
        for (int n = 1; n <= count; ++n) {
            const Outcomes outcomes = run([&] { device.failFrom(fault, n); });
            for (size_t step = 0; step < kStepCount; ++step) {
                if (outcomes[step] != undisturbed[step]) {
                    changed[step].insert(outcomes[step]);
                }
            }
        }
        for (size_t step = 0; step < kStepCount; ++step) {
            for (const std::string& outcome : changed[step]) {
                note("lasting: " + kSteps[step].name + " = " + outcome);
            }
        }
    }

    void strike(Fault kind) {
        fault = kind;
        for (const bool plugin : {false, true}) {
            note(plugin ? "as a plug-in" : "as an application");
            profile.plugin = plugin;
            const Outcomes undisturbed = run([] {});
            const int count = device.occurrences(fault);
            EXPECT_GT(count, 0);
            strikeOnce(undisturbed, count);
            strikeFrom(undisturbed, count);
        }
    }

    tavsim::Profile profile;
    Fault fault = Fault::Allocation;
};

TEST_F(FaultsTest, Allocation) {
    strike(Fault::Allocation);
}

TEST_F(FaultsTest, Dispatch) {
    strike(Fault::Dispatch);
}

TEST_F(FaultsTest, Host) {
    strike(Fault::HostRequest);
}

TEST_F(FaultsTest, Read) {
    strike(Fault::Read);
}

}  // namespace

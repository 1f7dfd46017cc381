// Commands to a running device, and the replies that they give. Input: one command a line.
#include <climits>
#include <cmath>
#include <sstream>
#include <tuple>

#include "SDL.h"
#include "fuzz.h"
#include "simulator/bus/profile_services.h"
#include "simulator/control/commands.h"
#include "simulator/device/journal.h"
#include "simulator/device/refusals.h"
#include "simulator/device/state.h"
#include "tav.h"

using tavfuzz::expect;

namespace {

constexpr std::size_t kMostCommands = 16;

auto deviceLooks() {
    const tavsim::Profile& profile = tavsim::device().profile;
    return std::tuple(profile.properties, profile.appinfo, tavsim::refusedRequests(),
                      profile.plugin, tavsim::device().openCalls().size(), tavsim::journalLength(),
                      tavsim::deviceState());
}

// Reads the reply as every type, into a buffer whose end AddressSanitizer guards.
void readReply(TAV_ServiceParameters* reply, void* /*userData*/) {
    const std::unique_ptr<char[]> buffer(new char[4]());
    TAV_GetParamString(reply, "x", buffer.get(), 4);
    const double number = TAV_GetParamDouble(reply, "x");
    const int integer = TAV_GetParamInt(reply, "x");
    const double whole = std::trunc(number);
    const bool fits = whole >= INT_MIN && whole <= INT_MAX;
    expect(integer == (fits ? static_cast<int>(whole) : 0),
           "an integer is the number without its fraction, or 0");
    expect(buffer[3] == '\0' && (buffer[0] == '\0' || TAV_ParamExists(reply, "x") == SDL_TRUE),
           "a text is all of the value or nothing");
    expect(TAV_GetParamBool(reply, "x") == SDL_FALSE || number == 0.0,
           "a value is not a boolean and a number at once");
}

// Starts over, with open calls that receive replies and fixes.
void startOver() {
    TAV_EnableLocationTracking(SDL_FALSE);
    tavsim::device().profile = {};
    tavsim::clearRefusals();
    tavsim::clearProfileServices();
    tavsim::device().pump();
    for (SDL_Event event; SDL_PollEvent(&event) != 0;) {}
    TAV_EnableLocationTracking(SDL_TRUE);
    TAV_ServiceCallWithCallback("vire://a/b", "{}", readReply, nullptr, SDL_FALSE);
}

void carryOut(const std::string& line) {
    const auto before = deviceLooks();
    const bool fitsNoUsage = tavsim::whyMalformed(line).starts_with("usage: ");
    expect(deviceLooks() == before, "looking at a command changes nothing");
    const tavsim::CommandResult result = tavsim::carryOut(line);
    expect(!fitsNoUsage || !result.error.empty(), "what fits no usage is refused");
    expect(result.output.empty() || result.output.ends_with('\n'), "output is whole lines");
    if (!result.error.empty()) {
        expect(result.error.find('\n') == std::string::npos, "an error is one line");
        expect(result.output.empty() && !result.follow, "a failed command puts nothing out");
        expect(deviceLooks() == before, "a failed command changes nothing");
    }
}

}  // namespace

// Without a video mode there is no surface, so no command writes a picture.
int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    expect(SDL_Init(SDL_INIT_VIDEO) == 0, "SDL starts");
    tavfuzz::startDevice();
    TAV_Init(0);
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    tavfuzz::forgetJournal();
    std::istringstream lines(tavfuzz::textOf(bytes, size));
    startOver();
    std::string line;
    for (std::size_t count = 0; count < kMostCommands && std::getline(lines, line); ++count) {
        carryOut(line);
    }
    tavsim::device().pump();
    TAV_UnregisterServiceCallback(readReply);
    return 0;
}

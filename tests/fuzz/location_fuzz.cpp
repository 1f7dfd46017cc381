// Replies of the location service. Input: one reply a line; an empty line is a null reply, and a
// line that begins with '!' starts the tracking anew.
#include <cstring>

#include "SDL.h"
#include "device/location.h"
#include "fuzz.h"

using tavfuzz::expect;

namespace {

constexpr std::size_t kMostReplies = 16;

struct Events {
    int fixes = 0;
    int failures = 0;
};

Events takeEvents() {
    Events events;
    for (SDL_Event event; SDL_PollEvent(&event) != 0;) {
        events.fixes += event.user.code == TAV_EVENT_LOCATION ? 1 : 0;
        events.failures += event.user.code == TAV_EVENT_LOCATION_FAILURE ? 1 : 0;
    }
    return events;
}

bool isSame(const TAV_Location& left, const TAV_Location& right) {
    return std::memcmp(&left, &right, sizeof left) == 0;
}

void restartTracking() {
    expect(TAV_EnableLocationTracking(SDL_FALSE) == TAV_NOERROR, "tracking stops");
    expect(TAV_EnableLocationTracking(SDL_TRUE) == TAV_NOERROR, "tracking starts");
}

void deliver(const std::string& line) {
    const TAV_Location fixBefore = tav::g_GPSContext.location;
    const Sint32 failureBefore = tav::g_GPSContext.failure;
    const tavsim::Reply reply = line.empty() ? tavsim::Reply() : tavsim::Reply(line);
    tavsim::device().deliver(tav::g_GPSContext.callId, reply);

    const Sint32 failure = tav::g_GPSContext.failure;
    const Events events = takeEvents();
    expect(failure == TAV_NOERROR || failure == TAV_EOTHER || failure == TAV_ELOCATIONSERVICE,
           "a failure has one of its codes");
    expect(failureBefore == TAV_NOERROR || failure != TAV_NOERROR,
           "a failure lasts until tracking starts anew");
    expect(events.fixes + events.failures <= 1, "a reply is announced once");
    expect(events.failures == 0 || failure != TAV_NOERROR, "a failure is announced when it is one");
    expect(events.fixes == 0 || failure == TAV_NOERROR, "no fix is announced after a failure");
    expect(events.fixes == 1 || isSame(tav::g_GPSContext.location, fixBefore),
           "only a fix that is announced changes the location");

    TAV_Location location;
    std::memset(&location, '#', sizeof location);
    const TAV_Location untouched = location;
    expect(TAV_GetLocation(&location) == failure, "the failure is what a query answers");
    expect(isSame(location, failure == TAV_NOERROR ? tav::g_GPSContext.location : untouched),
           "a failed query leaves the record alone");
}

}  // namespace

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    expect(SDL_Init(SDL_INIT_VIDEO) == 0, "SDL starts");
    tavfuzz::startDevice();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    tavfuzz::forgetJournal();
    tavfuzz::Input input(bytes, size);
    restartTracking();
    for (std::size_t count = 0; count < kMostReplies && !input.isEmpty(); ++count) {
        const std::string line = input.line();
        if (line.starts_with('!')) {
            restartTracking();
        } else {
            deliver(line);
        }
    }
    return 0;
}

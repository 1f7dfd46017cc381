// An application whose own names, which every library of the process can see, are ones that a
// simulated device might use too. None of them may be called by anything but this file.
#include <cstdio>
#include <cstdlib>

#include "SDL.h"
#include "tav.h"

namespace {

int caught() {
    std::puts("one of the application's own functions was called");
    std::exit(1);
}

}  // namespace

#define TAKE(name)       \
    int name() {         \
        return caught(); \
    }

TAKE(running)
TAKE(profile)
TAKE(device)
TAKE(root)
TAKE(rootFolder)
TAKE(dispatch)
TAKE(schedule)
TAKE(now)
TAKE(pump)
TAKE(accept_client)
namespace sim {
TAKE(device)
TAKE(running)
TAKE(pumpNow)
}  // namespace sim
namespace front {
TAKE(isInFront)
TAKE(firstOvertaken)
}  // namespace front
namespace helper {
TAKE(takeTraceLines)
}  // namespace helper

int main() {
    char name[64];
    TAV_Init(0);
    if (TAV_GetDeviceName(name, sizeof name) != TAV_NOERROR) {
        return 1;
    }
    SDL_PumpEvents();
    std::puts(name);
    return 0;
}

#include "simulator/device/in_front.h"

#include <dlfcn.h>

#include <cstdio>
#include <utility>

namespace tavsim {
namespace {

constexpr char kNotInFront[] =
    "tavsim: this program was linked with SDL in front of the simulated device, so it will receive "
    "no replies, readings or calls. Run it with `tavsim run`, or link with the output of "
    "`pkg-config --libs tav` before SDL.\n";

}  // namespace

void warnIfNotInFront() {
    static bool looked = false;
    if (std::exchange(looked, true)) {
        return;
    }
    Dl_info inUse;
    Dl_info own;
    void* pollEvent = dlsym(RTLD_DEFAULT, "SDL_PollEvent");
    if (pollEvent == nullptr || dladdr(pollEvent, &inUse) == 0 ||
        dladdr(reinterpret_cast<void*>(&warnIfNotInFront), &own) == 0) {
        return;
    }
    if (inUse.dli_fbase != own.dli_fbase) {
        std::fputs(kNotInFront, stderr);
    }
}

}  // namespace tavsim

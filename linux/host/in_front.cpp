#include "linux/host/in_front.h"

#include <dlfcn.h>

#include <cstdio>

namespace tavlinux {
namespace {

constexpr char kRemedy[] =
    "tav: this program has SDL in front of libtav's functions, so it would receive no replies, "
    "readings or events; its requests are refused. Link it with the output of `pkg-config --libs "
    "tav` before SDL, or start it with libtavlinux.so in LD_PRELOAD.\n";

bool look() {
    Dl_info inUse;
    Dl_info own;
    void* pollEvent = dlsym(RTLD_DEFAULT, "SDL_PollEvent");
    const bool isInFront = pollEvent != nullptr && dladdr(pollEvent, &inUse) != 0 &&
                           dladdr(reinterpret_cast<void*>(&look), &own) != 0 &&
                           inUse.dli_fbase == own.dli_fbase;
    if (!isInFront) {
        std::fputs(kRemedy, stderr);
    }
    return isInFront;
}

}  // namespace

bool isInFront() {
    static const bool result = look();
    return result;
}

}  // namespace tavlinux

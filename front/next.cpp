#include "front/next.h"

#include <dlfcn.h>

namespace front {
namespace {

// The versions that have functions which stand in front; the one of the device first.
constexpr const char* kSdlLibraries[] = {"libSDL-1.2.so.0", "libSDL2-2.0.so.0", "libSDL3.so.0"};

// A program that loads SDL by itself may keep its names from everyone else.
void* findInLoadedSdl(const char* name) {
    for (const char* library : kSdlLibraries) {
        void* loaded = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
        void* found = loaded != nullptr ? dlsym(loaded, name) : nullptr;
        if (found != nullptr) {
            return found;  // and the library stays
        }
    }
    return nullptr;
}

const void* objectOf(const char* function) {
    Dl_info found = {};
    void* address = findNext(function);
    return address != nullptr && dladdr(address, &found) != 0 ? found.dli_fbase : nullptr;
}

}  // namespace

void* findNext(const char* name) {
    if (void* next = dlsym(RTLD_NEXT, name)) {
        return next;
    }
    if (void* sdls = findInLoadedSdl(name)) {
        return sdls;
    }
    // Behind nothing at all stands a library that was linked last; then its own functions are the
    // ones that nobody calls, and the others are found from the start.
    return dlsym(RTLD_DEFAULT, name);
}

bool isSdl12() {
    // The others lack the function by which a window was named.
    static const bool is = objectOf("SDL_PollEvent") == objectOf("SDL_WM_SetCaption");
    return is;
}

}  // namespace front

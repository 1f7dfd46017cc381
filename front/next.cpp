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

const void* objectOf(void* function) {
    Dl_info found = {};
    return function != nullptr && dladdr(function, &found) != 0 ? found.dli_fbase : nullptr;
}

}  // namespace

void* findNext(const char* name) {
    void* next = dlsym(RTLD_NEXT, name);
    void* other = dlsym(RTLD_NEXT, "tav_front_next");
    if (next != nullptr && objectOf(next) == objectOf(other)) {
        return reinterpret_cast<decltype(tav_front_next)*>(other)(name);
    }
    if (next != nullptr) {
        return next;
    }
    if (void* sdls = findInLoadedSdl(name)) {
        return sdls;
    }
    // Behind nothing at all stands a library that was linked last; then its own functions are the
    // ones that nobody calls, and the others are found from the start.
    return dlsym(RTLD_DEFAULT, name);
}

bool isFirst() {
    return objectOf(dlsym(RTLD_DEFAULT, "tav_front_next")) ==
           objectOf(reinterpret_cast<void*>(&findNext));
}

bool isSdl12() {
    // The others lack the function by which a window was named.
    static const bool is =
        objectOf(findNext("SDL_PollEvent")) == objectOf(findNext("SDL_WM_SetCaption"));
    return is;
}

}  // namespace front

void* tav_front_next(const char* name) {
    return front::findNext(name);
}

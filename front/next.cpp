#include "front/next.h"

#include <dlfcn.h>

namespace front {
namespace {

// The versions of SDL that have the interposed functions; the device's version first.
constexpr const char* kSdlLibraries[] = {"libSDL-1.2.so.0", "libSDL2-2.0.so.0", "libSDL3.so.0"};

// For a program that loads SDL with RTLD_LOCAL.
void* findInLoadedSdl(const char* name) {
    for (const char* library : kSdlLibraries) {
        void* loaded = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
        void* found = loaded != nullptr ? dlsym(loaded, name) : nullptr;
        if (found != nullptr) {
            return found;  // the handle is kept, so SDL stays loaded
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
    // No library comes after one that was linked last. Nobody calls its functions then, and a
    // search from the start finds the others.
    return dlsym(RTLD_DEFAULT, name);
}

bool isFirst() {
    return objectOf(dlsym(RTLD_DEFAULT, "tav_front_next")) ==
           objectOf(reinterpret_cast<void*>(&findNext));
}

bool isSdl12() {
    // Other versions lack SDL_WM_SetCaption.
    static const bool is =
        objectOf(findNext("SDL_PollEvent")) == objectOf(findNext("SDL_WM_SetCaption"));
    return is;
}

}  // namespace front

void* tav_front_next(const char* name) {
    return front::findNext(name);
}

#include "front/next.h"

#include <dlfcn.h>

#include "front/functions.h"

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

#define TAV_FRONT_PATH_NAME(name, Result, Parameters, Arguments) #name,
#define TAV_FRONT_NAME(name) #name,
constexpr const char* kNames[] = {TAV_FRONT_PATH_FUNCTIONS(TAV_FRONT_PATH_NAME)
                                      TAV_FRONT_OTHER_FUNCTIONS(TAV_FRONT_NAME)};

// Another library may come before this one and pass calls on, as sanitizers do. But symbol lookup
// must not find the original function first.
bool isOvertaken(const char* name) {
    void* found = dlsym(RTLD_DEFAULT, name);
    return found != nullptr && found == reinterpret_cast<void*>(nextFunction<void()>(name));
}

// Whether symbol lookup finds no other implementation of platform/ before this one.
bool isFirst() {
    return objectOf(dlsym(RTLD_DEFAULT, "tav_front_next")) ==
           objectOf(reinterpret_cast<void*>(&findNext));
}

}  // namespace

const void* objectOf(const void* function) {
    Dl_info found = {};
    return function != nullptr && dladdr(function, &found) != 0 ? found.dli_fbase : nullptr;
}

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

// The second look-up is for a program that loads the library with RTLD_LOCAL.
bool usesLibrary() {
    if (dlsym(RTLD_DEFAULT, "TAV_Init") != nullptr) {
        return true;
    }
    void* library = dlopen(TAV_LIBRARY, RTLD_LAZY | RTLD_NOLOAD);
    return library != nullptr && dlclose(library) == 0;
}

const char* firstOvertaken() {
    if (!isFirst()) {
        return kNames[0];
    }
    for (const char* name : kNames) {
        if (isOvertaken(name)) {
            return name;
        }
    }
    return nullptr;
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

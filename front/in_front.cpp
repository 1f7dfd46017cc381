#include "front/in_front.h"

#include <dlfcn.h>

#include "front/functions.h"
#include "front/next.h"

namespace front {
namespace {

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

}  // namespace

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

}  // namespace front

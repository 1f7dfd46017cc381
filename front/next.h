// The functions behind those that stand in front.
#ifndef TAV_FRONT_NEXT_H
#define TAV_FRONT_NEXT_H

#include <dlfcn.h>

namespace front {

template <typename Function>
Function* nextFunction(const char* name) {
    void* found = dlsym(RTLD_NEXT, name);
    // Behind nothing at all stands a library that was linked last; then its own functions are the
    // ones that nobody calls, and the others are found from the start.
    if (found == nullptr) {
        found = dlsym(RTLD_DEFAULT, name);
    }
    return reinterpret_cast<Function*>(found);
}

}  // namespace front

#endif

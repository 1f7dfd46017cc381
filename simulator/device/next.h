// The functions behind those that the simulator puts in front.
#ifndef TAV_SIMULATOR_DEVICE_NEXT_H
#define TAV_SIMULATOR_DEVICE_NEXT_H

#include <dlfcn.h>

namespace tavsim {

template <typename Function>
Function* nextFunction(const char* name) {
    void* found = dlsym(RTLD_NEXT, name);
    // Behind nothing at all stands the simulator when it was linked last; then its own functions
    // are the ones that nobody calls, and the others are found from the start.
    if (found == nullptr) {
        found = dlsym(RTLD_DEFAULT, name);
    }
    return reinterpret_cast<Function*>(found);
}

}  // namespace tavsim

#endif

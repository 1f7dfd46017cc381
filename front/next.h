// The functions behind those that stand in front, and those of SDL that these need.
//
// Two implementations of platform/ can be in a process, as when a simulated device is put in front
// of a program that was linked with what is for Linux. Then the one behind is left out.
//
// What stands in front is not linked with SDL: a program that has none, or another version, shall
// not get SDL 1.2 because it inherited the preloading.
#ifndef TAV_FRONT_NEXT_H
#define TAV_FRONT_NEXT_H

#include "platform/visibility.h"

namespace front {

void* findNext(const char* name);

template <typename Function>
Function* nextFunction(const char* name) {
    return reinterpret_cast<Function*>(findNext(name));
}

// The same for one that is declared: TAV_FRONT_NEXT(SDL_Delay).
#define TAV_FRONT_NEXT(function) front::nextFunction<decltype(function)>(#function)

// Whether no other implementation of platform/ is found before this one.
bool isFirst();

// Whether the SDL of this process is version 1.2. Others have functions of the same names, and a
// program that uses them is none of ours.
bool isSdl12();

}  // namespace front

// findNext() for an implementation in front of this one.
extern "C" TAV_PLATFORM_API void* tav_front_next(const char* name);

#endif

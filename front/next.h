// Look-up of the original functions behind the interposed ones, and of other functions of SDL; and
// whether interposition works in this program.
//
// A process can contain two implementations of platform/, as when a simulated device is preloaded
// into a program that was linked with the one for Linux. The look-up then skips the second one.
//
// Implementations are not linked with SDL: a program without SDL, or with another version, must not
// get SDL 1.2 just because it inherited the preloading.
#pragma once

#include "platform/visibility.h"

namespace front {

void* findNext(const char* name);

template <typename Function>
Function* nextFunction(const char* name) {
    return reinterpret_cast<Function*>(findNext(name));
}

// The same for a declared function: TAV_FRONT_NEXT(SDL_Delay).
#define TAV_FRONT_NEXT(function) front::nextFunction<decltype(function)>(#function)

// The library or program that contains a function; null for a null pointer.
const void* objectOf(const void* function);

// Whether libtav is in this process. In a process that merely inherited a preloaded implementation,
// such as a shell, every call is passed on.
bool usesLibrary();

// The name of the first function that is not interposed, because the program was linked with SDL
// first or loaded the library late. Null when there is none.
const char* firstOvertaken();

// Whether the SDL of this process is version 1.2. Other versions have functions of the same names,
// and a program that uses them does not use the library.
bool isSdl12();

}  // namespace front

// findNext() for an implementation that comes before this one.
extern "C" TAV_PLATFORM_API void* tav_front_next(const char* name);

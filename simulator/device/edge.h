// The ends of a program that cannot go on, and the boundary for exceptions: none leaves a function
// that other code calls.
//
// Such a function is a function try block, and its handler calls one of these:
//
//     int NApp_Minimize() try {
//         …
//     } catch (...) {
//         return tavsim::refused(0);
//     }
#pragma once

#include <string>

namespace tavsim {

// The exit status of a program that cannot have its device, and of `tavsim` itself.
inline constexpr int kBadSetup = 2;

// Says why on standard error and ends the process with that status.
[[noreturn]] void endProgram(const std::string& reason);

// Thrown by running(): the device must not run in this process.
struct NotInFront {};

// In a handler: returns if the request can be refused, because memory is exhausted or the device
// must not run. After any other exception the device cannot go on, and the program ends.
void refuseOrEnd();

// In a handler of a function that cannot refuse.
[[noreturn]] void endProgramByException();

template <typename Result>
Result refused(Result refusal) {
    refuseOrEnd();
    return refusal;
}

}  // namespace tavsim

// The edge of the simulator: no exception leaves a function that others call.
//
// Such a function is a function try block, and its handler calls one of these:
//
//     int NApp_Minimize() try {
//         …
//     } catch (...) {
//         return tavsim::refused(0);
//     }
#ifndef TAV_SIMULATOR_DEVICE_EDGE_H
#define TAV_SIMULATOR_DEVICE_EDGE_H

namespace tavsim {

// Thrown by running(): the device must not run in this process.
struct NotInFront {};

// In a handler: returns where what was asked for can be refused, because memory is exhausted or
// the device must not run. Ends the program otherwise: the device could not go on.
void refuseOrEnd();

// In a handler, where nothing can be refused.
[[noreturn]] void endProgramByException();

template <typename Result>
Result refused(Result refusal) {
    refuseOrEnd();
    return refusal;
}

}  // namespace tavsim

#endif

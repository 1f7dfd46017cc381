#include "simulator/device/edge.h"

#include <cxxabi.h>

#include <exception>
#include <new>

#include "simulator/device/end_program.h"

namespace tavsim {

void refuseOrEnd() {
    try {
        throw;
    } catch (const NotInFront&) {
        return;
    } catch (const std::bad_alloc&) {
        return;
    } catch (...) {
        endProgramByException();
    }
}

void endProgramByException() {
    try {
        throw;
    } catch (const abi::__forced_unwind&) {
        throw;  // the application ends the thread
    } catch (const std::exception& problem) {
        endProgram(problem.what());
    } catch (...) {
        endProgram("an exception of unknown kind");
    }
}

}  // namespace tavsim

#include "simulator/device/edge.h"

#include <cxxabi.h>

#include <exception>
#include <new>

#include "helper/end_program.h"

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
        helper::endProgram(problem.what());
    } catch (...) {
        helper::endProgram("an exception of unknown kind");
    }
}

}  // namespace tavsim

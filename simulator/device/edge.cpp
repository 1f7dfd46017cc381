#include "simulator/device/edge.h"

#include <cxxabi.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <new>
#include <utility>

#include "base/print_line.h"

namespace tavsim {

void endProgram(const std::string& reason) {
    static bool isEnding = false;
    base::printLine(stderr, "tavsim: " + reason);
    if (std::exchange(isEnding, true)) {
        _exit(kBadSetup);  // handlers of exit() would fail again
    }
    std::exit(kBadSetup);
}

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

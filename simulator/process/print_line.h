// Lines of the device's own on the application's standard output and standard error.
#ifndef TAV_SIMULATOR_PROCESS_PRINT_LINE_H
#define TAV_SIMULATOR_PROCESS_PRINT_LINE_H

#include <cstdio>
#include <string>

namespace tavsim {

// Behind what the application has printed before.
inline void printLine(FILE* stream, const std::string& line) {
    std::fflush(stdout);
    std::fprintf(stream, "%s\n", line.c_str());
}

}  // namespace tavsim

#endif

#include "helper/trace.h"

#include "helper/print_line.h"

void helper::traceCannotBeHad(const std::string& problem) {
    printLine(stderr, "tav: " + problem);
}

#include "helper/trace.h"

#include "base/print_line.h"

void helper::traceCannotBeHad(const std::string& problem) {
    base::printLine(stderr, "tav: " + problem);
}

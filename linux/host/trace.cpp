#include "helper/trace.h"

#include "base/print_line.h"

void base::traceCannotBeHad(const std::string& problem) {
    printLine(stderr, "tav: " + problem);
}

// The cases that failed when they last ran: a file for each, in the user's cache.
#pragma once

#include "tools/test/result.h"
#include "tools/test/scenario_files.h"

namespace tools {

bool hasFailed(const TestCase& one);

// Does nothing where the cache cannot be written, as it often is where programs are built.
void rememberWhetherFailed(const TestResult& result);

}  // namespace tools

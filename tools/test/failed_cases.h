// Which cases have failed when they last ran, whoever ran them: a file for each, in the user's
// cache.
#ifndef TAV_TOOLS_TEST_FAILED_CASES_H
#define TAV_TOOLS_TEST_FAILED_CASES_H

#include "tools/test/result.h"
#include "tools/test/scenario_files.h"

namespace tools {

bool hasFailed(const TestCase& one);

// Does nothing where the cache cannot be written, as it often is where programs are built.
void rememberWhetherFailed(const TestResult& result);

}  // namespace tools

#endif

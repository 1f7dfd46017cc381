// The report that continuous integration reads.
#ifndef TAV_TOOLS_TEST_JUNIT_H
#define TAV_TOOLS_TEST_JUNIT_H

#include <iosfwd>
#include <vector>

#include "tools/test/result.h"

namespace tools {

// JUnit's XML: a suite with a case for each scenario.
void writeJunitReport(const std::vector<TestResult>& results, double seconds, std::ostream& report);

}  // namespace tools

#endif

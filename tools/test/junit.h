// The report that continuous integration reads.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include "tools/test/result.h"

namespace tools {

// Where the differences of a case's pictures are, beside its report.
std::string differencesFolder(const std::string& report, size_t number, const TestCase& what);

// Removes what an earlier run has left there.
void removeDifferences(const std::string& report);

// JUnit's XML: a suite with a case for each scenario.
void writeJunitReport(const std::vector<TestResult>& results, double seconds,
                      const std::string& name, std::ostream& report);

}  // namespace tools

// `tavsim test`: scenarios as tests.
#pragma once

#include <string>
#include <vector>

namespace tools {

struct TestRequest {
    std::vector<std::string> paths;  // of scenarios, and of folders with such
    unsigned jobs = 0;               // how many run at once; 0: as many as there are processors
    std::string device;              // empty: each scenario's own
    std::string program;             // likewise
    std::string junit;               // the report's file; empty: none
    std::string filter;              // a glob for a part of their names
    bool failed = false;             // only those that failed when they last ran
    bool verbose = false;
    bool updatePictures = false;
};

// Runs the scenarios, and tells how that went. The exit status: 0 when all have passed, 1 when some
// have failed, 2 when some could not be run or there are none, 128 + n after signal n.
int test(const TestRequest& request);

}  // namespace tools

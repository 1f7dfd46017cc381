// The progress of a scenario, in a file of the root folder, so that it is known even if the program
// is killed.
#pragma once

#include <string>

#include "base/line_file.h"
#include "platform/visibility.h"
#include "simulator/time/clock.h"

namespace tavsim {

enum class Outcome {
    Unplayed,  // no device has started it
    Waiting,
    Passed,  // all steps are done, and no `expect never` has failed
    Failed   // the reason was printed on standard error
};

struct Verdict {
    Outcome outcome = Outcome::Unplayed;
    std::string step;  // waiting: FILE:LINE and the step's text
    double since = 0;  // milliseconds
};

class VerdictFile {
public:
    // False when it cannot be written.
    bool open(const std::string& root);

    void note(Outcome outcome, const std::string& step = {});

private:
    base::LineFile m_file;
};

TAV_PLATFORM_API Verdict readVerdict(const std::string& root);
TAV_PLATFORM_API void removeVerdict(const std::string& root);

}  // namespace tavsim

// `tavsim journal`: looks into a journal that a run has written.
#pragma once

#include <string>
#include <vector>

namespace tools {

struct JournalRequest {
    bool numbers = false;            // in front of each entry: which it is, from 0 on
    std::vector<std::string> words;  // the file, and a pattern or nothing
};

// Prints the entries that match. 0; or 1 when there is none, and standard error says which comes
// closest; or 2 for a pattern that is malformed, or a file that cannot be read.
int showJournal(const JournalRequest& request);

}  // namespace tools

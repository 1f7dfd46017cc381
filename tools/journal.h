// `tavsim journal`: looks into a journal that a run has written.
#pragma once

#include <string>
#include <vector>

namespace tools {

// The words are the file, and a pattern or nothing. Prints the entries that match, each with its
// number in front of it, from 0 on, if that is wanted. 0; or 1 when there is none, and standard
// error says which comes closest; or 2 for a pattern that is malformed, or a file that cannot be
// read.
int showJournal(const std::vector<std::string>& words, bool withNumbers);

}  // namespace tools

// Why an entry that was expected is not there, for people to read.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/visibility.h"
#include "simulator/language/pattern.h"

namespace tavsim {

// Lines of the journal, which must outlive it.
using EntryLines = std::vector<std::string_view>;

// About the last entry that meets all conditions but one: when it came, the value that it has, and
// the one that is expected. Empty where there is none.
TAV_PLATFORM_API std::string closestTo(const Pattern& pattern, const EntryLines& lines);

// The time of an entry, as "120 ms".
std::string timeOf(std::string_view line);

// An entry with its long values cut in the middle.
std::string shownEntry(std::string_view line);

// The end of the journal, a line each, with what repeats as one; before it the last entries of the
// pattern's what or uri that came earlier. The pattern may be null.
std::vector<std::string> journalEnd(EntryLines lines, const Pattern* pattern);

}  // namespace tavsim

// What can be named: the journal's entries with their members, and the parts of the device.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/visibility.h"
#include "simulator/language/pattern.h"

namespace tavsim {

// Entries that have the same members beside at, kind and what. Names are separated by a comma and
// a blank; `*` stands for what an application or a profile names.
struct EntryForm {
    std::string_view kind;
    std::string_view whats;
    std::string_view members;
};
TAV_PLATFORM_API std::span<const EntryForm> entryForms();

// The separated names.
TAV_PLATFORM_API std::vector<std::string> namesIn(std::string_view list);

// Why no entry can ever match the pattern; empty when one can.
std::string whyNoEntry(const Pattern& pattern);

// Whether the line is an entry of one of the forms, with no other members.
TAV_PLATFORM_API bool hasEntryForm(std::string_view line);

// Why there is no such state, preference or system property; empty when there is.
std::string whyNoState(std::string_view name);
std::string whyNoPreference(std::string_view name);
std::string whyNoProperty(std::string_view name);

}  // namespace tavsim

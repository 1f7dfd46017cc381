// The machine's settings, in the form in which the library reads a device's.
#pragma once

#include <string>

namespace tavlinux {

// Makes the database of preferences: the machine's name, region and language, as far as hostnamed,
// the environment and localed know them.
bool writePreferences(const std::string& file);

}  // namespace tavlinux

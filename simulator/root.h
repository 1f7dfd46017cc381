// The folder that holds the device's files.
#ifndef TAV_SIMULATOR_ROOT_H
#define TAV_SIMULATOR_ROOT_H

#include <optional>
#include <string>

#include "simulator/profile.h"

namespace sim {

// Makes the folder, a fresh one when the path is empty, and in it what the profile asks for and is
// not there yet. False, with a line in `error`, when that cannot be done.
bool prepareRoot(const Profile& profile, const std::string& folder, std::string* error);

// Removes the folder if prepareRoot made a fresh one.
void releaseRoot();

const std::string& rootFolder();

// Writes a preference, a JSON text, into the device's database; false when that is not possible.
bool storePreference(const std::string& key, const std::string& value);

// The real path of one of the device's fixed paths; nothing for any other path.
std::optional<std::string> devicePath(const char* path);

// The same, for the folders above the device's own as well.
std::optional<std::string> deviceFolderPath(const char* path);

}  // namespace sim

#endif

// The root folder, which contains the device's files.
#pragma once

#include <map>
#include <string>

#include "simulator/device/profile.h"

namespace tavsim {

// Creates the folder, and in it the files of the profile that do not exist yet. It is a fresh one
// when the path is empty, or when another program of the same run uses this folder. False, with a
// line in `error`, on failure.
bool prepareRoot(const Profile& profile, const std::string& folder, std::string* error);

// Removes the folder if it is a fresh one. Otherwise releases it for other devices.
void releaseRoot();

// Empty when there is none. May be called on any thread.
const std::string& rootFolder();
bool isRootFresh();

// Writes a preference, a JSON text, into the device's database; false when that is not possible.
bool storePreference(const std::string& key, const std::string& value);

// All that are in it.
std::map<std::string, std::string> storedPreferences();

}  // namespace tavsim

// The folder that holds the device's files.
#ifndef TAV_SIMULATOR_DEVICE_ROOT_H
#define TAV_SIMULATOR_DEVICE_ROOT_H

#include <string>

#include "platform/visibility.h"
#include "simulator/device/profile.h"

namespace tavsim {

// Makes the folder, a fresh one when the path is empty, and in it what the profile asks for and is
// not there yet. False, with a line in `error`, when that cannot be done.
bool prepareRoot(const Profile& profile, const std::string& folder, std::string* error);

// Removes the folder if prepareRoot made a fresh one.
void releaseRoot();

const std::string& rootFolder();

// Writes a preference, a JSON text, into the device's database; false when that is not possible.
bool storePreference(const std::string& key, const std::string& value);

// Makes a fresh, private folder for a device's files below freshRootsFolder(); empty on failure.
TAV_PLATFORM_API std::string makeFreshRoot();
TAV_PLATFORM_API void removeFreshRoot(const std::string& path);
TAV_PLATFORM_API std::string freshRootsFolder();

// False when there is none and none of this user's own can be made.
bool makeFreshRootsFolder();

}  // namespace tavsim

#endif

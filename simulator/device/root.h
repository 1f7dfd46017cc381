// The folder that holds the device's files.
#ifndef TAV_SIMULATOR_DEVICE_ROOT_H
#define TAV_SIMULATOR_DEVICE_ROOT_H

#include <string>

#include "platform/visibility.h"
#include "simulator/device/profile.h"

namespace tavsim {

// Makes the folder, and in it what the profile asks for and is not there yet. It is a fresh one
// when the path is empty, or when another program of the same run is on the device of this folder.
// False, with a line in `error`, when that cannot be done.
bool prepareRoot(const Profile& profile, const std::string& folder, std::string* error);

// Removes the folder if it is a fresh one, and leaves it to others if not.
void releaseRoot();

// Empty where there is none. Can be asked on any thread.
const std::string& rootFolder();
bool isRootFresh();

// Writes a preference, a JSON text, into the device's database; false when that is not possible.
bool storePreference(const std::string& key, const std::string& value);

}  // namespace tavsim

#endif

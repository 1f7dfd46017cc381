// The list of devices that run on this machine, and the files by which they are found.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/visibility.h"

namespace tavsim {

struct RunningDevice {
    std::string device;   // the profile's name
    std::string program;  // with its arguments
    int64_t process = 0;  // 0 when it is not known
    std::string root;
};

// The words of this process, separated by blanks.
const std::string& commandLine();

// Writes a description of this process into the root folder, before it listens there. Readers need
// no answer of the application, which may be busy.
bool describeDevice();

// To be called once it listens: creates a symbolic link for runningDevices() to a root folder that
// the user chose, and removes the links of devices that were killed.
void announceDevice();
void withdrawDevice();

// Whether a device listens in the root folder.
TAV_PLATFORM_API bool isDeviceRunning(const std::string& root);

// The devices of this user with the same folder for temporary files: of the root folders that there
// are, those for which the function says so.
TAV_PLATFORM_API std::vector<RunningDevice> runningDevices(
    const std::function<bool(const std::string& root)>& isRunning = isDeviceRunning);

}  // namespace tavsim

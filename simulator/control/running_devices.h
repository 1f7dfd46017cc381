// The devices that run on this machine, and what each leaves behind to be known by.
#ifndef TAV_SIMULATOR_CONTROL_RUNNING_DEVICES_H
#define TAV_SIMULATOR_CONTROL_RUNNING_DEVICES_H

#include <cstdint>
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

// Writes a description of this process into the root folder, before it listens there. It is read
// without asking the application, which may be busy.
bool describeDevice();

// Once it listens: leaves a link for runningDevices() to a root folder that the user chose, and
// tidies up those of devices that were killed.
void announceDevice();
void withdrawDevice();

// Whether a device listens in the root folder.
bool isDeviceRunning(const std::string& root);

// Those of this user, and of the same folder for temporary files.
TAV_PLATFORM_API std::vector<RunningDevice> runningDevices();

}  // namespace tavsim

#endif

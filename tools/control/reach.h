// Finds a running device and connects to it.
#pragma once

#include <chrono>
#include <string>

namespace tools {

struct ReachedDevice {
    std::string root;
    int connection = -1;     // negative: none
    std::string problem;     // then why
    bool isNone = false;     // and whether that is because none runs
    bool isCrowded = false;  // or because one runs that too many others wait for
};

// The longest time that a command waits for a device that is just starting.
inline constexpr std::chrono::milliseconds kStarting(1000);

// Connects to the device with this root folder; with none, to the only one that runs. Waits so long
// for one that is just starting, and for room where many others are waiting for it.
ReachedDevice reachDevice(const std::string& root, std::chrono::milliseconds untilStarted,
                          std::chrono::milliseconds untilRoom);

inline std::chrono::milliseconds inMilliseconds(double seconds) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::duration<double>(seconds));
}

// The output of `tavsim ctl list`.
void printRunningDevices(bool asJson);

}  // namespace tools

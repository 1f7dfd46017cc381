#include "tools/control/reach.h"

#include <poll.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include "base/json/writer.h"
#include "base/socket_address.h"
#include "simulator/control/running_devices.h"
#include "simulator/device/trusted_folder.h"

using std::chrono::milliseconds;
using tavsim::RunningDevice;

namespace tools {
namespace {

constexpr milliseconds kBetweenTries(20);

// In one line.
std::string description(const RunningDevice& device) {
    const std::string name = device.device.empty() ? "unnamed" : device.device;
    return base::escapedJson(name + ": " + device.program);
}

std::string choiceOf(const std::vector<RunningDevice>& devices) {
    std::string text = "several devices are running, choose one with";
    for (const RunningDevice& device : devices) {
        text += "\n  --root " + device.root + "  " + description(device);
    }
    return text;
}

// One attempt. Another one may succeed later if no device runs, or too many clients wait for it.
ReachedDevice tryToReach(const std::string& wanted, bool* isFinal) {
    std::string root = wanted;
    if (root.empty()) {
        const std::vector<RunningDevice> devices = tavsim::runningDevices();
        *isFinal = devices.size() > 1;
        if (devices.empty()) {
            return {{}, -1, "no device is running; start a program with `tavsim run`", true};
        }
        if (*isFinal) {
            return {{}, -1, choiceOf(devices)};
        }
        root = devices[0].root;
    }
    const int connection = base::connectTo(root + tavsim::kControlSocket);
    if (connection >= 0) {
        return {root, connection, {}};
    }
    const bool isNone = errno == ENOENT || errno == ECONNREFUSED;
    const bool isCrowded = errno == EAGAIN;
    *isFinal = !isNone && !isCrowded;
    const std::string reason = isNone      ? "no device is running there"
                               : isCrowded ? "too many others are waiting for the application"
                                           : std::strerror(errno);
    return {root, -1, root + ": " + reason, isNone, isCrowded};
}

}  // namespace

ReachedDevice reachDevice(const std::string& root, milliseconds untilStarted,
                          milliseconds untilRoom) {
    const auto begin = std::chrono::steady_clock::now();
    while (true) {
        bool isFinal = false;
        ReachedDevice device = tryToReach(root, &isFinal);
        const milliseconds patience = device.isNone ? untilStarted : untilRoom;
        if (device.connection >= 0 || isFinal ||
            std::chrono::steady_clock::now() >= begin + patience) {
            return device;
        }
        poll(nullptr, 0, kBetweenTries.count());
    }
}

void printRunningDevices(bool asJson) {
    base::JsonWriter json;
    json.beginArray();
    for (const RunningDevice& device : tavsim::runningDevices()) {
        json.beginObject().members("root", device.root, "device", device.device);
        json.members("program", device.program, "process", device.process).endObject();
        if (!asJson) {
            std::printf("%s  %s\n", device.root.c_str(), description(device).c_str());
        }
    }
    if (asJson) {
        std::puts(json.endArray().text().c_str());
    }
}

}  // namespace tools

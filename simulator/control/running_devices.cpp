#include "simulator/control/running_devices.h"

#include <simdjson.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "base/file.h"
#include "base/json/text.h"
#include "base/json/writer.h"
#include "base/socket_address.h"
#include "simulator/device/fresh_root.h"
#include "simulator/device/root.h"
#include "simulator/device/running.h"
#include "simulator/device/trusted_folder.h"

namespace dom = simdjson::dom;
namespace fs = std::filesystem;

namespace tavsim {
namespace {

constexpr size_t kMostBytes = 1 << 20;

// A folder that the user chose is found through a symbolic link beside the fresh folders.
fs::path linkToRoot() {
    return freshRootsFolder() + "/" + std::to_string(getpid()) + "-root";
}

bool isFreshRoot() {
    std::error_code problem;
    return fs::equivalent(fs::path(rootFolder()).parent_path(), freshRootsFolder(), problem);
}

RunningDevice describedIn(const std::string& root) {
    dom::parser parser;
    dom::object description;
    RunningDevice device;
    device.root = root;
    std::string error;
    const auto text = base::readFile(root + kDescription, kMostBytes, &error);
    if (!text || parser.parse(*text).get(description) != simdjson::SUCCESS) {
        return device;
    }
    device.device = base::textMember(description, "device");
    device.program = base::textMember(description, "program");
    device.process = base::memberOf<int64_t>(description, "process").value_or(0);
    return device;
}

std::string readCommandLine() {
    std::string error;
    std::string words = base::readFile("/proc/self/cmdline", kMostBytes, &error).value_or("");
    words.resize(words.find_last_not_of('\0') + 1);
    std::replace(words.begin(), words.end(), '\0', ' ');
    return words;
}

}  // namespace

const std::string& commandLine() {
    static const auto& line = *new const std::string(readCommandLine());
    return line;
}

bool describeDevice() {
    const std::string path = rootFolder() + kDescription;
    unlink(path.c_str());
    return base::createFile(path, base::jsonObject("device", profile().name, "program",
                                                   commandLine(), "process", getpid()) +
                                      "\n");
}

void announceDevice() {
    if (isFreshRoot() || !makeFreshRootsFolder()) {
        return;
    }
    std::error_code problem;
    for (fs::directory_iterator at(freshRootsFolder(), problem), end; !problem && at != end;
         at.increment(problem)) {
        if (at->is_symlink() && !isDeviceRunning(at->path())) {
            fs::remove(at->path(), problem);
        }
    }
    fs::create_directory_symlink(rootFolder(), linkToRoot(), problem);
}

void withdrawDevice() {
    std::error_code problem;
    fs::remove(rootFolder() + kDescription, problem);
    if (!isFreshRoot()) {
        removeFreshRoot(linkToRoot());
    }
}

bool isDeviceRunning(const std::string& root) {
    const int probe = base::connectTo(root + kControlSocket);
    // A device without room for another client runs too.
    const bool runs = probe >= 0 || errno == EAGAIN;
    if (probe >= 0) {
        close(probe);
    }
    return runs;
}

std::vector<RunningDevice> runningDevices(
    const std::function<bool(const std::string& root)>& isRunning) {
    std::vector<RunningDevice> devices;
    std::error_code problem;
    for (fs::directory_iterator at(freshRootsFolder(), problem), end; !problem && at != end;
         at.increment(problem)) {
        std::error_code notALink;
        const fs::path target = fs::read_symlink(at->path(), notALink);
        const std::string root = notALink ? at->path() : target;
        if (isRunning(root)) {
            devices.push_back(describedIn(root));
        }
    }
    std::ranges::sort(devices, {}, &RunningDevice::root);
    // Devices that were killed leave their links to a root folder where another one runs.
    const auto isSame = [](const auto& left, const auto& right) { return left.root == right.root; };
    devices.erase(std::unique(devices.begin(), devices.end(), isSame), devices.end());
    return devices;
}

}  // namespace tavsim

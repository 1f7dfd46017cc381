#include "tools/process/members.h"

#include <unistd.h>

#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "base/descriptor.h"
#include "base/file.h"

extern "C" {  // which the header itself lacks
#include <sys/pidfd.h>
}

namespace tools {
namespace {

using Clock = std::chrono::steady_clock;

constexpr char kVariable[] = "TAVSIM_RUN";
// For processes that cannot be killed at once, because they wait for a disk.
constexpr std::chrono::seconds kLongestEnd(5);
constexpr std::chrono::milliseconds kBetweenLooks(5);

std::string newMark() {
    return '<' + std::to_string(getpid()) + '-' +
           std::to_string(std::chrono::system_clock::now().time_since_epoch().count()) + '>';
}

}  // namespace

Members::Members() : m_mark(newMark()) {
    const char* around = std::getenv(kVariable);
    setenv(kVariable, ((around != nullptr ? around : "") + m_mark).c_str(), 1);
}

// A process that has ended has no environment.
bool Members::has(pid_t process) const {
    std::ifstream environment("/proc/" + std::to_string(process) + "/environ");
    std::string variable;
    while (std::getline(environment, variable, '\0')) {
        if (variable.starts_with(kVariable) && variable.find(m_mark) != std::string::npos) {
            return true;
        }
    }
    return false;
}

bool Members::send(pid_t process, int signal) const {
    // Opened first. Otherwise there is a race: another process could get the same number meanwhile.
    const base::Descriptor handle(process > 0 ? pidfd_open(process, 0) : -1);
    return handle.isOurs() && has(process) &&
           pidfd_send_signal(handle.number(), signal, nullptr, 0) == 0;
}

void Members::kill() const {
    const Clock::time_point limit = Clock::now() + kLongestEnd;
    bool isAnyLeft = true;
    while (isAnyLeft && Clock::now() < limit) {
        isAnyLeft = false;
        for (const std::string& path : base::entriesOf("/proc")) {
            const std::string name = path.substr(path.rfind('/') + 1);
            pid_t process = 0;  // of what is no process
            std::from_chars(name.data(), name.data() + name.size(), process);
            isAnyLeft |= send(process, SIGKILL);
        }
        if (isAnyLeft) {
            std::this_thread::sleep_for(kBetweenLooks);
        }
    }
}

}  // namespace tools

// The simulated device's part of the interposed functions for files, the rescan command and the
// user id.
#include "front/files.h"

#include <unistd.h>

#include <string_view>

#include "base/file.h"
#include "simulator/device/edge.h"
#include "simulator/device/faults.h"
#include "simulator/device/journal.h"
#include "simulator/device/root.h"
#include "simulator/device/running.h"

namespace tavsim {
namespace {

constexpr uid_t kOrdinaryUser = 1000;

uid_t ordinaryUser(uid_t user) {
    return user != 0 ? user : kOrdinaryUser;
}

std::string shellQuoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return quoted + "'";
}

}  // namespace
}  // namespace tavsim

namespace front {

std::optional<std::string> pathOf(const char* devicePath) try {
    if (!tavsim::isWanted()) {
        return std::nullopt;
    }
    tavsim::running();
    const std::string& root = tavsim::rootFolder();
    // A folder can be opened, but every read of it fails.
    const bool unreadable =
        std::string_view(devicePath) == kUniqueId && tavsim::faultStrikes(tavsim::Fault::Read);
    return unreadable ? root : root + devicePath;
} catch (...) {
    return tavsim::refused(kNowhere);
}

uid_t deviceUser(uid_t realUser) try {
    if (!tavsim::isWanted()) {
        return realUser;
    }
    if (tavsim::running().root) {
        return 0;
    }
    return tavsim::ordinaryUser(realUser);
} catch (...) {
    return tavsim::refused(tavsim::ordinaryUser(realUser));
}

std::optional<int> rescan(int (*realSystem)(const char* command)) try {
    if (!tavsim::isWanted()) {
        return std::nullopt;
    }
    tavsim::running();
    const std::string program = tavsim::rootFolder() + kRescanProgram;
    if (access(program.c_str(), X_OK) == 0) {
        const int result = realSystem((tavsim::shellQuoted(program) + " scan-services").c_str());
        tavsim::writeEntry("bus", "rescan", "program", program, "status", result);
        return result;
    }
    const std::string roles = tavsim::rootFolder() + kRoles;
    const size_t found =
        base::entriesOf(roles + "/pub").size() + base::entriesOf(roles + "/prv").size();
    tavsim::JournalEntry("bus", "rescan", "roles", found).outcome("rescanned");
    return 0;
} catch (...) {
    return tavsim::refused(-1);
}

}  // namespace front

#include "run_folder.h"

#include <filesystem>
#include <utility>

#include "base/file.h"
#include "environment.h"
#include "simulator/device/claim.h"
#include "simulator/device/fresh_root.h"

namespace fs = std::filesystem;

namespace tools {

RunFolder::RunFolder(const std::string& wanted) {
    if (wanted.empty()) {
        m_root = freshFolder();
        if (m_root.empty()) {
            m_problem = tavsim::freshRootsFolder() + ": no folder for the device can be made there";
        }
        return;
    }
    const std::string path = absolutePath(wanted);
    tavsim::removeClaim(path, tavsim::kDeviceClaim);  // of a program that was killed
    if (tavsim::isClaimed(path, tavsim::kDeviceClaim) ||
        tavsim::isClaimed(path, tavsim::kRunClaim)) {
        m_problem = wanted + ": another program is running on this device";
    } else if (!tavsim::claim(path, tavsim::kRunClaim)) {
        m_problem = wanted + ": the device's root folder cannot be written";
    } else {
        m_root = path;
    }
}

const std::string& RunFolder::freshFolder() {
    if (m_fresh.empty()) {
        m_fresh = tavsim::makeFreshRoot(tavsim::kRunClaim);
    }
    return m_fresh;
}

bool RunFolder::isUntouched() const {
    std::error_code unknown;
    const bool hasClaim = fs::exists(m_root + "/" + tavsim::kDeviceClaim, unknown);
    return !hasClaim && tavsim::isClaimed(m_root, tavsim::kRunClaim);
}

std::set<pid_t> RunFolder::programs() const {
    std::set<pid_t> programs = {tavsim::claimant(m_root, tavsim::kDeviceClaim)};
    for (const std::string& folder : base::entriesOf(tavsim::freshRootsFolder())) {
        programs.insert(tavsim::claimant(folder, tavsim::kDeviceClaim));
    }
    programs.erase(0);
    return programs;
}

void RunFolder::release() {
    const std::string used = std::exchange(m_root, {});
    const std::string fresh = std::exchange(m_fresh, {});
    for (const std::string& folder : {used, fresh}) {
        tavsim::removeClaim(folder, tavsim::kDeviceClaim);
        tavsim::removeClaim(folder, tavsim::kRunClaim);
    }
    if (!fresh.empty() && !tavsim::isClaimed(fresh, tavsim::kDeviceClaim)) {
        tavsim::removeFreshRoot(fresh);
    }
}

}  // namespace tools

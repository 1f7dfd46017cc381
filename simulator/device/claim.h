// Claims: which process uses a folder with a device's files.
//
// A claim is a locked file in the folder, which names the process. The process keeps the file
// mapped, not open. So the kernel ends the lock with the process, even if it was killed, and not
// before that, even if it has closed all its descriptors.
#pragma once

#include <sys/types.h>

#include <string>

#include "base/descriptor.h"
#include "platform/visibility.h"

namespace tavsim {

// The names of the files: the run whose folder it is, and the process whose device it is.
inline constexpr char kRunClaim[] = ".run";
inline constexpr char kDeviceClaim[] = ".device";

// Claims the folder for this process, and replaces the claim of a process that has ended. False
// when another process holds the claim, or the folder cannot be written.
TAV_PLATFORM_API bool claim(const std::string& folder, const char* name);

// Removes the claim, unless another process holds it.
TAV_PLATFORM_API void removeClaim(const std::string& folder, const char* name);

// Whether a living process holds the claim.
TAV_PLATFORM_API bool isClaimed(const std::string& folder, const char* name);

// The living process of this namespace that holds the claim; 0 when there is none.
TAV_PLATFORM_API pid_t claimant(const std::string& folder, const char* name);

// Opens a folder, and locks it so that no other process can claim it.
class LockedFolder {
public:
    explicit LockedFolder(const std::string& path);

    // Negative when it is not a folder, others kept it locked, or it was replaced meanwhile.
    int descriptor() const { return m_folder.number(); }

private:
    base::Descriptor m_folder;
};

}  // namespace tavsim

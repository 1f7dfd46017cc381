// Which process a folder with a device's files is for.
//
// A claim is a symbolic link in the folder that leads nowhere: its text names the process. So it
// tells whether that process still lives, however it ended and whatever it did to its descriptors,
// which a locked file would not.
#ifndef TAV_SIMULATOR_DEVICE_CLAIM_H
#define TAV_SIMULATOR_DEVICE_CLAIM_H

#include <sys/types.h>

#include <string>

#include "base/descriptor.h"
#include "platform/visibility.h"

namespace tavsim {

// The names of the links: the run whose folder it is, and the process whose device it is.
inline constexpr char kRunClaim[] = ".run";
inline constexpr char kDeviceClaim[] = ".device";

// Claims the folder for this process, also in place of one that has ended. False when another one
// holds the claim, or the folder cannot be written.
TAV_PLATFORM_API bool claim(const std::string& folder, const char* name);

// Removes the claim, unless another process holds it.
TAV_PLATFORM_API void removeClaim(const std::string& folder, const char* name);

// Whether a process that lives holds the claim.
TAV_PLATFORM_API bool isClaimed(const std::string& folder, const char* name);

// The process of this namespace that holds the claim; 0 when there is none that lives.
TAV_PLATFORM_API pid_t claimant(const std::string& folder, const char* name);

// Opens a folder, and keeps others from claiming it meanwhile.
class LockedFolder {
public:
    explicit LockedFolder(const std::string& path);

    // Negative when it is no folder, others kept it locked, or it was replaced meanwhile.
    int descriptor() const { return m_folder.number(); }

private:
    base::Descriptor m_folder;
};

}  // namespace tavsim

#endif

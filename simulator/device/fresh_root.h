// Temporary root folders, each created for one run and removed after it.
#pragma once

#include <string>

#include "platform/visibility.h"

namespace tavsim {

// The folder in which they are created.
TAV_PLATFORM_API std::string freshRootsFolder();

// False when it does not exist and cannot be created, or does not belong to the user.
bool makeFreshRootsFolder();

// Creates a private folder there with this claim of the process on it, and removes the stale
// folders of processes that were killed. Empty when none can be created.
TAV_PLATFORM_API std::string makeFreshRoot(const char* claim);

// Removes a folder that makeFreshRoot created, and the stale ones.
TAV_PLATFORM_API void removeFreshRoot(const std::string& path);

}  // namespace tavsim

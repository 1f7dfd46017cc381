// Root folders that are made for one run and go with it.
#ifndef TAV_SIMULATOR_DEVICE_FRESH_ROOT_H
#define TAV_SIMULATOR_DEVICE_FRESH_ROOT_H

#include <string>

#include "platform/visibility.h"

namespace tavsim {

// Where they are made.
TAV_PLATFORM_API std::string freshRootsFolder();

// False when it is not there and cannot be made, or is not the user's own.
bool makeFreshRootsFolder();

// Makes a private folder there with this claim of the process on it, and tidies up the folders of
// processes that were killed. Empty when none can be made.
TAV_PLATFORM_API std::string makeFreshRoot(const char* claim);

// Removes a folder that makeFreshRoot made, and tidies up likewise.
TAV_PLATFORM_API void removeFreshRoot(const std::string& path);

}  // namespace tavsim

#endif

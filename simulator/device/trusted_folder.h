// Folders in which nobody else can put anything into the device's way.
#ifndef TAV_SIMULATOR_DEVICE_TRUSTED_FOLDER_H
#define TAV_SIMULATOR_DEVICE_TRUSTED_FOLDER_H

#include <string>

#include "platform/visibility.h"

namespace tavsim {

// What a device has in its root folder beside its own folders.
inline constexpr char kDescription[] = "/running.json";
inline constexpr char kControlSocket[] = "/control";
inline constexpr char kVerdict[] = "/verdict";
inline constexpr char kRecordingMark[] = "/recorded";

// Makes the folder and those above it where they are missing, so that only the user can write to
// them, whatever the process's file-creation mask is.
bool makeFolders(const std::string& path);

// Makes a folder that was asked for as a device's root. Empty on success; else why the device must
// not use it: it cannot be made, or somebody else could have put links and programs there that the
// device would follow and run as this user, or pipes that it would wait for. Then nothing is made.
// An absolute path.
TAV_PLATFORM_API std::string makeTrustedRoot(const std::string& path);

}  // namespace tavsim

#endif

// Folders that other users cannot manipulate.
#pragma once

#include <string>

#include "platform/visibility.h"

namespace tavsim {

// Files and folders that a device creates in its root folder, besides the fixed paths.
inline constexpr char kDescription[] = "/running.json";
inline constexpr char kControlSocket[] = "/control";
inline constexpr char kVerdict[] = "/verdict";
inline constexpr char kRecordingMark[] = "/recorded";
inline constexpr char kRecording[] = "/recording";  // of a run with a panel
inline constexpr char kPageSocket[] = "/page";      // of tav-page
inline constexpr char kDataFolder[] = "/data";

// Creates the folder and its missing parents, writable only by the user, whatever the umask is.
bool makeFolders(const std::string& path);

// Creates the folder that was given as a device's root, an absolute path. Empty on success, else
// why the device must not use it: it cannot be created, or another user could have put links and
// programs there that the device would follow and run as this user, or pipes that it would wait
// for. Then nothing is created.
TAV_PLATFORM_API std::string makeTrustedRoot(const std::string& path);

}  // namespace tavsim

// Interposes functions of libc and SQLite, to redirect the device's fixed paths, its rescan command
// and its user id.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace front {

// The fixed paths at which the library finds the device's files.
inline constexpr char kDatabase[] = "/var/kora/preferences/systemprefs.db";
inline constexpr char kUniqueId[] = "/proc/nduid";
inline constexpr char kRoles[] = "/var/vire/ks2/roles";
inline constexpr char kTemplates[] = "/usr/vire/ks2/templates";
inline constexpr char kRescanProgram[] = "/usr/bin/ks-control";
inline constexpr char kRescanCommand[] = "/usr/bin/ks-control scan-services";

// A path at which no file can exist. Refused paths are redirected to it.
inline constexpr char kNowhere[] = "/dev/null/none";

// Whether a path is one of these, or is inside of one that is a folder.
bool isDevicePath(const char* path);

// The following is defined by the implementation of platform/. It is called on any thread, even
// before the implementation's static constructors have run.

// The real path of this file of the device. Nothing when the process does not use the library: the
// path is then not redirected.
std::optional<std::string> pathOf(const char* devicePath);

// The user id of the application on the device.
uid_t deviceUser(uid_t realUser);

// Carries out the rescan command instead of the shell and waits for it; the result is as of
// system(). Nothing when the process does not use the library.
std::optional<int> rescan(int (*realSystem)(const char* command));

}  // namespace front

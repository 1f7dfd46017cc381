// The fixed paths at which the library finds the device's files.
#ifndef TAV_FRONT_FIXED_PATHS_H
#define TAV_FRONT_FIXED_PATHS_H

namespace front {

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

// Whether a folder is one of these, or a parent of the roles' folder, which the library creates
// too.
bool isDeviceFolder(const char* path);

}  // namespace front

#endif

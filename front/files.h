// The device's fixed paths, its rescan command and its user, in front of libc and SQLite.
#ifndef TAV_FRONT_FILES_H
#define TAV_FRONT_FILES_H

#include <sys/types.h>

#include <optional>
#include <string>

namespace front {

// What follows is defined by the implementation of platform/. It is called on any thread, and
// before the implementation's own constructors have run.

// Where the device's file of this fixed path really is. Nothing: the path means what it says,
// because this process takes no part.
std::optional<std::string> placeOf(const char* devicePath);

// The user that the application runs as, on the device.
uid_t deviceUser(uid_t realUser);

// Carries out the rescan command in place of the shell and waits for it; the result is that of
// system(). Nothing: this process takes no part.
std::optional<int> rescan(int (*realSystem)(const char* command));

}  // namespace front

#endif

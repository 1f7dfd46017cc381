// Interposes functions of libc and SQLite, to redirect the device's fixed paths, its rescan command
// and its user id.
#ifndef TAV_FRONT_FILES_H
#define TAV_FRONT_FILES_H

#include <sys/types.h>

#include <optional>
#include <string>

namespace front {

// The following is defined by the implementation of platform/. It is called on any thread, even
// before the implementation's static constructors have run.

// The real path of this file of the device. Nothing when the process does not use the library: the
// path is then not redirected.
std::optional<std::string> placeOf(const char* devicePath);

// The user id of the application on the device.
uid_t deviceUser(uid_t realUser);

// Carries out the rescan command instead of the shell and waits for it; the result is as of
// system(). Nothing when the process does not use the library.
std::optional<int> rescan(int (*realSystem)(const char* command));

}  // namespace front

#endif

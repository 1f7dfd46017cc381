#include "front/files.h"

#include <dirent.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "front/functions.h"
#include "front/next.h"
#include "platform/visibility.h"

namespace front {
namespace {

constexpr std::string_view kFoldersAbove[] = {"/var", "/var/vire", "/var/vire/ks2"};

bool isIn(std::string_view path, std::string_view folder) {
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

// Such a path leaves the device's folder, and could leave the root folder too.
bool climbs(std::string_view path) {
    return path.find("/../") != std::string_view::npos || path.ends_with("/..");
}

// Most paths are not the device's. For these, this must cost nothing and must not start the device.
const char* realPath(const char* path, bool isDevices, std::string* redirected) {
    if (!isDevices) {
        return path;
    }
    std::optional<std::string> found = pathOf(path);
    if (!found) {
        return path;
    }
    *redirected = climbs(path) ? kNowhere : std::move(*found);
    return redirected->c_str();
}

const char* realPath(const char* path, std::string* redirected) {
    return realPath(path, path != nullptr && isDevicePath(path), redirected);
}

// Whether a folder is one of the device's, or a parent of the roles' folder, which the library
// creates too.
bool isDeviceFolder(const char* path) {
    const bool isAbove =
        std::ranges::find(kFoldersAbove, std::string_view(path)) != std::end(kFoldersAbove);
    return isAbove || isDevicePath(path);
}

}  // namespace

bool isDevicePath(const char* path) {
    const std::string_view view = path;
    return view == kDatabase || view == kUniqueId || isIn(view, kRoles) || isIn(view, kTemplates);
}

}  // namespace front

// The functions are defined by their symbol names: the headers of libc declare them with attributes
// that do not hold here, and with other symbols where large-file support is on.
#define TAV_FRONT_DECLARE(name, Result, Parameters) \
    extern "C" TAV_PLATFORM_API Result front_##name Parameters asm(#name)

#define TAV_FRONT_DEFINE_PATH_FUNCTION(name, Result, Parameters, Arguments)     \
    TAV_FRONT_DECLARE(name, Result, Parameters);                                \
    Result front_##name Parameters {                                            \
        static const auto real = front::nextFunction<Result Parameters>(#name); \
        std::string redirected;                                                 \
        path = front::realPath(path, &redirected);                              \
        return real Arguments;                                                  \
    }
TAV_FRONT_PATH_FUNCTIONS(TAV_FRONT_DEFINE_PATH_FUNCTION)

TAV_FRONT_DECLARE(mkdir, int, (const char* path, mode_t mode));
int front_mkdir(const char* path, mode_t mode) {
    static const auto real = front::nextFunction<int(const char*, mode_t)>("mkdir");
    std::string redirected;
    path = front::realPath(path, path != nullptr && front::isDeviceFolder(path), &redirected);
    return real(path, mode);
}

TAV_FRONT_DECLARE(system, int, (const char* command));
int front_system(const char* command) {
    static const auto real = front::nextFunction<int(const char*)>("system");
    if (command == nullptr || std::string_view(command) != front::kRescanCommand) {
        return real(command);
    }
    const std::optional<int> result = front::rescan(real);
    return result ? *result : real(command);
}

TAV_FRONT_DECLARE(getuid, uid_t, ());
uid_t front_getuid() {
    static const auto real = front::nextFunction<uid_t()>("getuid");
    return front::deviceUser(real());
}

// Aliases of the same functions for the library's own calls.
#define TAV_FRONT_DEFINE_FOR_LIBRARY(name)                                                       \
    extern "C" TAV_PLATFORM_API decltype(front_##name) front_wrapped_##name asm("__wrap_" #name) \
        __attribute__((alias(#name)));
TAV_FRONT_LIBRARY_FUNCTIONS(TAV_FRONT_DEFINE_FOR_LIBRARY)

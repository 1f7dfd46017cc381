#include "front/fixed_paths.h"

#include <string_view>

namespace front {
namespace {

constexpr std::string_view kFoldersAbove[] = {"/var", "/var/vire", "/var/vire/ks2"};

bool isIn(std::string_view path, std::string_view folder) {
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

}  // namespace

bool isDevicePath(const char* path) {
    const std::string_view view = path;
    return view == kDatabase || view == kUniqueId || isIn(view, kRoles) || isIn(view, kTemplates);
}

bool isDeviceFolder(const char* path) {
    for (const std::string_view folder : kFoldersAbove) {
        if (path == folder) {
            return true;
        }
    }
    return isDevicePath(path);
}

}  // namespace front

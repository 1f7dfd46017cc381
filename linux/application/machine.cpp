#include "linux/application/machine.h"

#include <glib.h>

#include <string_view>

#include "base/file.h"

namespace tavlinux {
namespace {

constexpr const char* kModelFiles[] = {"/proc/device-tree/model", "/sys/class/dmi/id/product_name"};
constexpr const char* kMachineIdFiles[] = {"/etc/machine-id", "/var/lib/dbus/machine-id"};
constexpr size_t kMostBytes = 1 << 20;
constexpr size_t kUniqueIdDigits = 40;

// The first line of the first file that has one.
template <size_t count>
std::optional<std::string> firstLine(const char* const (&files)[count]) {
    for (const char* file : files) {
        std::string error;
        const std::string text = base::readFile(file, kMostBytes, &error).value_or("");
        // What the kernel has of a device tree ends with a zero.
        std::string line = text.substr(0, text.find_first_of(std::string_view("\n\0", 2)));
        if (!line.empty()) {
            return line;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> machineName() {
    return firstLine(kModelFiles);
}

std::optional<std::string> systemVersion() {
    g_autofree char* version = g_get_os_info(G_OS_INFO_KEY_VERSION_ID);
    if (version == nullptr) {
        return std::nullopt;
    }
    const std::string text = version;
    return text.find('.') == std::string::npos ? text + ".0" : text;
}

std::optional<std::string> uniqueId(const std::string& applicationId) {
    const std::optional<std::string> machine = firstLine(kMachineIdFiles);
    if (!machine) {
        return std::nullopt;
    }
    g_autofree char* digest = g_compute_hmac_for_string(
        G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(machine->data()), machine->size(),
        applicationId.c_str(), static_cast<gssize>(applicationId.size()));
    return std::string(digest, kUniqueIdDigits);
}

}  // namespace tavlinux

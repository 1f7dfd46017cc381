#include "tools/web/security.h"

#include <sys/random.h>

#include <array>
#include <cstdint>

namespace web {
namespace {

constexpr std::string_view kDigits = "0123456789";
constexpr char kHexadecimal[] = "0123456789abcdef";
constexpr const char* kNames[] = {"127.0.0.1", "localhost", "[::1]"};
constexpr std::string_view kOfHosts =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-:[]";

bool isEveryOf(std::string_view text, std::string_view characters) {
    return text.find_first_not_of(characters) == std::string_view::npos;
}

}  // namespace

std::string newToken() {
    std::array<uint8_t, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        return {};
    }
    std::string token;
    for (const uint8_t byte : bytes) {
        token += {kHexadecimal[byte >> 4], kHexadecimal[byte & 15]};
    }
    return token;
}

bool isSameSecret(std::string_view left, std::string_view right) {
    if (left.size() != right.size()) {
        return false;
    }
    int difference = 0;
    for (size_t at = 0; at < left.size(); ++at) {
        difference |= left[at] ^ right[at];
    }
    return difference == 0;
}

bool isLoopback(std::string_view host) {
    for (const std::string_view name : kNames) {
        if (host.starts_with(name)) {
            const std::string_view port = host.substr(name.size());
            return port.empty() ||
                   (port.size() > 1 && port[0] == ':' && isEveryOf(port.substr(1), kDigits));
        }
    }
    return false;
}

bool isOrigin(std::string_view text) {
    for (const std::string_view scheme : {"https://", "http://", "wss://", "ws://"}) {
        if (text.starts_with(scheme)) {
            const std::string_view host = text.substr(scheme.size());
            return !host.empty() && isEveryOf(host, kOfHosts);
        }
    }
    return false;
}

}  // namespace web

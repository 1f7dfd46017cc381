#include "security.h"

#include <glib.h>
#include <sys/random.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <sstream>

#include "simulator/control/commands.h"

namespace fs = std::filesystem;

namespace panel {
namespace {

constexpr std::string_view kDigits = "0123456789";
constexpr char kHexadecimal[] = "0123456789abcdef";
constexpr const char* kNames[] = {"127.0.0.1", "localhost", "[::1]"};

bool isEveryOf(std::string_view text, std::string_view characters) {
    return text.find_first_not_of(characters) == std::string_view::npos;
}

bool isInside(const fs::path& file, const fs::path& folder) {
    std::error_code problem;
    const fs::path within =
        fs::weakly_canonical(file, problem).lexically_relative(fs::canonical(folder, problem));
    return !problem && !within.empty() && *within.begin() != "..";
}

std::string whyNoFile(const std::string& file, const std::string& folder) {
    return "the panel reads and writes files only in the device's folder " + folder + ", and not " +
           file;
}

// Without the words in front of a command; a condition can hold colons of its own.
std::string whyNoStep(std::string step, const std::string& folder) {
    constexpr std::string_view kExpect = "expect ";
    if (step.starts_with("include ") || step.starts_with("table ")) {
        return "the panel plays no scenario with an include or a table";
    }
    if (step.starts_with(kExpect)) {
        step.erase(0, kExpect.size());
    }
    const std::string file = tavsim::fileNamedIn(step);
    if (!file.empty() && !isInside(fs::path(folder) / file, folder)) {
        return whyNoFile(file, folder);
    }
    const size_t colon = step.find(": ");
    return colon == std::string::npos ? "" : whyNoStep(step.substr(colon + 2), folder);
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

std::optional<std::string> originOfTiles(const std::string& address) {
    for (const char* place : {"{x}", "{y}", "{z}"}) {
        if (address.find(place) == std::string::npos) {
            return std::nullopt;
        }
    }
    const bool isSecure = address.starts_with("https://");
    if (!isSecure && !address.starts_with("http://")) {
        return std::nullopt;
    }
    const size_t host = address.find("//") + 2;
    const size_t end = address.find('/', host);
    // Nothing else can stand in an origin, and so nothing can add to the policy.
    const bool isHost = end != std::string::npos && end > host &&
                        isEveryOf(std::string_view(address).substr(host, end - host),
                                  "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                  "0123456789.-:[]");
    return isHost ? std::optional(address.substr(0, end)) : std::nullopt;
}

std::string contentPolicy(const std::string& tiles) {
    return "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:" +
           (tiles.empty() ? "" : " " + tiles) +
           "; connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
}

std::string whyNoCommand(const std::string& line, const std::string& folder) {
    const std::string file = tavsim::fileNamedIn(line);
    return file.empty() || isInside(file, folder) ? "" : whyNoFile(file, folder);
}

std::string whyNoScenario(const std::string& text, const std::string& folder) {
    std::istringstream lines(text);
    std::string problem;
    for (std::string line; problem.empty() && std::getline(lines, line);) {
        problem =
            whyNoStep(line.substr(std::min(line.find_first_not_of(" \t"), line.size())), folder);
    }
    return problem;
}

}  // namespace panel

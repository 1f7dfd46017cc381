#include "security.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "simulator/control/commands.h"
#include "tools/web/security.h"

namespace fs = std::filesystem;

namespace panel {
namespace {

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

std::optional<std::string> originOfTiles(const std::string& address) {
    for (const char* place : {"{x}", "{y}", "{z}"}) {
        if (address.find(place) == std::string::npos) {
            return std::nullopt;
        }
    }
    const std::string origin = address.substr(0, address.find('/', address.find("//") + 2));
    return origin != address && origin.starts_with("http") && web::isOrigin(origin)
               ? std::optional(origin)
               : std::nullopt;
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

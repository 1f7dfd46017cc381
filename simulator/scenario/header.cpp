// Reads the statements of a scenario's header.
#include <filesystem>

#include "simulator/device/profile.h"
#include "simulator/language/words.h"
#include "simulator/scenario/reader.h"

namespace tavsim {
namespace {

constexpr double kLongestLimit = 7 * 24 * 3600;  // seconds

// Each reads the text after the statement's name, and returns what was expected there.
using ReadValue = const char* (*)(std::string_view value, const Line& line, Scenario* scenario);

const char* readDevice(std::string_view value, const Line& line, Scenario* scenario) {
    std::string device(value);
    const bool isFile = profilePath(device) == device;
    scenario->device = isFile ? inFolder(line.folder, device) : std::move(device);
    return value.empty() ? "the device's name or file is missing" : nullptr;
}

// A program without a slash is searched as by a shell.
const char* readProgram(std::string_view value, const Line& line, Scenario* scenario) {
    while (!value.empty()) {
        const std::optional<std::string> word = contentOf(takeWord(&value));
        if (!word) {
            return "what begins with a quote must be a JSON string";
        }
        scenario->program.push_back(*word);
    }
    if (scenario->program.empty() || scenario->program[0].empty()) {
        return "the program is missing";
    }
    std::string& file = scenario->program[0];
    if (file.find('/') != std::string::npos) {
        file = inFolder(line.folder, file);
    }
    return nullptr;
}

const char* readPage(std::string_view value, const Line& line, Scenario* scenario) {
    scenario->page = inFolder(line.folder, value);
    return value.empty() ? "the page's file is missing" : nullptr;
}

const char* readLimit(std::string_view value, const Line& /*line*/, Scenario* scenario) {
    double seconds = 0;
    const bool isNumber = Words(value).areNumbers(&seconds);
    scenario->limit = seconds;
    return isNumber && seconds > 0 && seconds <= kLongestLimit
               ? nullptr
               : "the limit is a number of seconds above 0 and at most 604800";
}

// A command, though it begins as the header with the page's file does.
constexpr std::string_view kCallByPage = "page call ";

struct HeaderStatement {
    std::string_view name;
    ReadValue read;
    bool (*isGiven)(const Scenario& scenario);
};

constexpr HeaderStatement kStatements[] = {
    {"device", readDevice, [](const Scenario& scenario) { return scenario.device.has_value(); }},
    {"program", readProgram, [](const Scenario& scenario) { return !scenario.program.empty(); }},
    {"page", readPage, [](const Scenario& scenario) { return scenario.page.has_value(); }},
    {"limit", readLimit, [](const Scenario& scenario) { return scenario.limit.has_value(); }},
};

}  // namespace

std::string inFolder(const std::string& folder, std::string_view file) {
    return std::filesystem::path(folder) / file;
}

bool readHeader(const Line& line, Scenario* scenario, std::string* error) {
    std::string_view value = line.text;
    if (value.starts_with(kCallByPage)) {
        return false;
    }
    const std::string_view name = takeWord(&value);
    for (const HeaderStatement& statement : kStatements) {
        if (statement.name != name) {
            continue;
        }
        const char* problem = nullptr;
        if (!scenario->steps.empty()) {
            problem = "stands in front of the first step";
        } else if (statement.isGiven(*scenario)) {
            problem = "was given already";
        } else {
            problem = statement.read(value, line, scenario);
        }
        if (problem != nullptr) {
            *error = std::string(name) + ": " + problem;
        }
        return true;
    }
    return false;
}

}  // namespace tavsim

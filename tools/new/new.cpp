#include "tools/new/new.h"

#include <glib.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <map>
#include <optional>
#include <vector>

#include "base/application_id.h"
#include "base/file.h"
#include "base/json/writer.h"
#include "simulator/device/profile.h"
#include "tools/process/exit_status.h"

namespace fs = std::filesystem;

namespace tools {
namespace {

constexpr size_t kMostBytes = 1 << 20;
constexpr size_t kLongestName = 64;
constexpr char kName[] = "^[a-z][a-z0-9-]*[a-z0-9]\\z";
// Targets that CMake has in every build folder.
constexpr const char* kTargets[] = {"all", "clean", "help", "install", "package", "test"};

// What the templates' placeholders, such as @NAME@, stand for.
using Values = std::map<std::string, std::string>;

// "star-map" as "Star Map" or "StarMap".
std::string inCapitals(const std::string& name, const char* between) {
    std::string words;
    bool isStart = true;
    for (const char c : name) {
        if (c == '-') {
            words += between;
        } else {
            words += isStart ? g_ascii_toupper(c) : c;
        }
        isStart = c == '-';
    }
    return words;
}

std::string timeAs(const char* format) {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    char text[64];
    return std::string(text, std::strftime(text, sizeof text, format, gmtime_r(&now, &parts)));
}

Values valuesFor(const std::string& name, const std::string& id) {
    return {{"NAME", name},
            {"ID", id.empty() ? "org.example." + inCapitals(name, "") : id},
            {"TITLE", inCapitals(name, " ")},
            {"DATE", timeAs("%Y-%m-%d")},
            {"YEAR", timeAs("%Y")},
            {"TIME", timeAs("%a, %d %b %Y %H:%M:%S +0000")}};
}

std::string filledIn(std::string text, const Values& values) {
    for (const auto& [name, value] : values) {
        const std::string placeholder = "@" + name + "@";
        for (size_t at = 0; (at = text.find(placeholder, at)) != std::string::npos;
             at += value.size()) {
            text.replace(at, placeholder.size(), value);
        }
    }
    return text;
}

std::string whyNoName(const std::string& name) {
    const bool isName = name.size() <= kLongestName &&
                        g_regex_match_simple(kName, name.c_str(), G_REGEX_RAW, {}) != FALSE;
    if (isName && std::find(std::begin(kTargets), std::end(kTargets), name) == std::end(kTargets)) {
        return {};
    }
    return base::quoted(name) + " cannot be a program's name; give one with --name, of 2 to 64 " +
           "small letters, digits and hyphens that begins with a letter, such as star-map" +
           (isName ? ", and is no target of every build" : "");
}

std::string whyNoFolder(const fs::path& folder) {
    std::error_code problem;
    if (!fs::exists(folder, problem)) {
        const fs::path parent = folder.parent_path();
        const bool canBeMade = !problem && fs::is_directory(parent, problem);
        return canBeMade ? std::string() : parent.string() + ": is no folder; make it first";
    }
    if (!fs::is_directory(folder, problem)) {
        return folder.string() + ": is a file; name a new folder";
    }
    const bool isEmpty = fs::is_empty(folder, problem);
    if (problem) {
        return folder.string() + ": " + problem.message();
    }
    return isEmpty ? std::string() : folder.string() + ": is not empty; name a new folder";
}

// Empty, or what is wrong.
std::string writeFile(const fs::path& source, const fs::path& target, const Values& values) {
    std::string error;
    const std::optional<std::string> text = base::readFile(source, kMostBytes, &error);
    std::error_code problem;
    fs::create_directories(target.parent_path(), problem);
    if (problem) {
        return target.parent_path().string() + ": " + problem.message();
    }
    if (text && base::writeFile(target, filledIn(*text, values), &error) &&
        text->starts_with("#!")) {
        constexpr auto all = fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;
        fs::permissions(target, all, fs::perm_options::add, problem);
    }
    return error;
}

std::string writeAll(const fs::path& templates, const fs::path& folder, const Values& values) {
    std::error_code problem;
    for (fs::recursive_directory_iterator at(templates, problem), end; !problem && at != end;
         at.increment(problem)) {
        if (at->is_regular_file()) {
            const std::string name = fs::path(at->path()).lexically_relative(templates);
            std::string error = writeFile(at->path(), folder / filledIn(name, values), values);
            if (!error.empty()) {
                return error;
            }
        }
    }
    return problem ? templates.string() + ": " + problem.message() : std::string();
}

// The folder was empty, or was not there.
void undo(const fs::path& folder, bool wasThere) {
    std::error_code ignored;
    for (const std::string& entry : base::entriesOf(folder)) {
        fs::remove_all(entry, ignored);
    }
    if (!wasThere) {
        fs::remove(folder, ignored);
    }
}

}  // namespace

int makeProject(const NewRequest& request) {
    if (request.folder.empty()) {
        return complain("new: no folder given, such as `tavsim new star-map`");
    }
    std::error_code problem;
    fs::path folder = fs::absolute(request.folder, problem).lexically_normal();
    folder = folder.has_filename() ? folder : folder.parent_path();
    const std::string name = request.name.empty() ? folder.filename().string() : request.name;
    std::string error = whyNoName(name);
    if (error.empty() && !request.id.empty() && !base::isApplicationId(request.id)) {
        error = base::quoted(request.id) +
                " is no D-Bus name; give one with --id, such as org.example.StarMap";
    }
    if (error.empty()) {
        error = whyNoFolder(folder);
    }
    if (!error.empty()) {
        return complain("new: " + error);
    }
    const bool wasThere = fs::exists(folder, problem);
    const fs::path templates = fs::path(tavsim::profileFolder()).parent_path() / "new";
    error = writeAll(templates, folder, valuesFor(name, request.id));
    if (!error.empty()) {
        undo(folder, wasThere);
        return complain("new: " + error);
    }
    std::printf("%s: made; its README.md says how to build, test and package it\n",
                request.folder.c_str());
    return 0;
}

}  // namespace tools

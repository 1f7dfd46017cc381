#include "tools/test/scenario_files.h"

#include <unistd.h>

#include <filesystem>
#include <map>

#include "base/application_folder.h"
#include "simulator/scenario/reader.h"

namespace fs = std::filesystem;

namespace tools {
namespace {

constexpr char kExtension[] = ".scenario";

// Scenarios, each with the program that is to play it.
using Files = std::map<fs::path, std::string>;

// Symbolic links to folders are not followed, because they could form a cycle.
std::error_code addBelow(const fs::path& folder, const std::string& program, Files* files) {
    std::error_code problem;
    for (fs::recursive_directory_iterator at(folder, problem), end; !problem && at != end;
         at.increment(problem)) {
        std::error_code unknown;
        if (at->path().extension() == kExtension && !at->is_directory(unknown)) {
            files->emplace(at->path().lexically_normal(), program);
        }
    }
    return problem;
}

bool isProgram(const fs::path& path, const fs::file_status& status) {
    return fs::is_regular_file(status) && path.extension() != kExtension &&
           access(path.c_str(), X_OK) == 0;
}

// Empty, or what is wrong.
std::string add(const std::string& path, Files* files) {
    std::error_code problem;
    const fs::file_status status = fs::status(path, problem);
    if (problem) {
        return path + ": " + problem.message();
    }
    const bool isOfProgram = isProgram(path, status);
    if (!isOfProgram && !fs::is_directory(status)) {
        files->emplace(fs::path(path).lexically_normal(), "");
        return {};
    }
    const std::string folder = isOfProgram ? base::applicationFolder(path) + "/tests" : path;
    const size_t before = files->size();
    problem = addBelow(folder, isOfProgram ? fs::absolute(path).string() : "", files);
    if (problem && isOfProgram) {
        return path + ": a program without scenarios: " + folder + ": " + problem.message();
    }
    if (problem) {
        return path + ": " + problem.message();
    }
    return files->size() == before ? folder + ": no *" + kExtension + " in this folder" : "";
}

// One that is malformed is a case too, which says so when it runs.
void addCases(const std::string& file, const std::string& program, std::vector<TestCase>* cases) {
    std::string error;
    const std::optional<tavsim::Scenario> scenario = tavsim::readScenario(file, {}, &error);
    if (!scenario || scenario->rows.empty()) {
        cases->push_back({file, {}, program});
        return;
    }
    for (const std::string& row : scenario->rows) {
        cases->push_back({file, row, program});
    }
}

}  // namespace

std::optional<std::vector<TestCase>> findScenarios(const std::vector<std::string>& paths,
                                                   std::string* error) {
    Files files;
    for (const std::string& path : paths) {
        *error = add(path, &files);
        if (!error->empty()) {
            return std::nullopt;
        }
    }
    std::vector<TestCase> cases;
    for (const auto& [file, program] : files) {
        addCases(file, program, &cases);
    }
    return cases;
}

bool expectsNothing(const TestCase& one) {
    std::string error;
    const std::optional<tavsim::Scenario> scenario =
        tavsim::readScenario(one.scenario, one.row, &error);
    return scenario && !tavsim::expectsSomething(*scenario);
}

}  // namespace tools

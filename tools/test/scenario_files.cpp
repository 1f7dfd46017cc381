#include "tools/test/scenario_files.h"

#include <filesystem>
#include <set>

#include "simulator/scenario/reader.h"

namespace fs = std::filesystem;

namespace tools {
namespace {

constexpr char kExtension[] = ".scenario";

// Symbolic links to folders are not followed, because they could form a cycle.
std::error_code addBelow(const fs::path& folder, std::set<fs::path>* files) {
    std::error_code problem;
    for (fs::recursive_directory_iterator at(folder, problem), end; !problem && at != end;
         at.increment(problem)) {
        std::error_code unknown;
        if (at->path().extension() == kExtension && !at->is_directory(unknown)) {
            files->insert(at->path().lexically_normal());
        }
    }
    return problem;
}

// One that is malformed is a case too, which says so when it runs.
void addCases(const std::string& file, std::vector<TestCase>* cases) {
    std::string error;
    const std::optional<tavsim::Scenario> scenario = tavsim::readScenario(file, {}, &error);
    if (!scenario || scenario->rows.empty()) {
        cases->push_back({file, {}});
        return;
    }
    for (const std::string& row : scenario->rows) {
        cases->push_back({file, row});
    }
}

}  // namespace

std::optional<std::vector<TestCase>> findScenarios(const std::vector<std::string>& paths,
                                                   std::string* error) {
    std::set<fs::path> files;
    for (const std::string& path : paths) {
        const size_t before = files.size();
        std::error_code problem;
        const fs::file_status status = fs::status(path, problem);
        if (fs::is_directory(status)) {
            problem = addBelow(path, &files);
            if (!problem && files.size() == before) {
                *error = path + ": no *" + kExtension + " in this folder";
                return std::nullopt;
            }
        } else if (!problem) {
            files.insert(fs::path(path).lexically_normal());
        }
        if (problem) {
            *error = path + ": " + problem.message();
            return std::nullopt;
        }
    }
    std::vector<TestCase> cases;
    for (const fs::path& file : files) {
        addCases(file, &cases);
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

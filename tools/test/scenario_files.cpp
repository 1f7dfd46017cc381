#include "tools/test/scenario_files.h"

#include <filesystem>
#include <set>

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

}  // namespace

std::optional<std::vector<std::string>> findScenarios(const std::vector<std::string>& paths,
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
    return std::vector<std::string>(files.begin(), files.end());
}

}  // namespace tools

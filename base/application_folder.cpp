#include "base/application_folder.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace base {

std::string executable() {
    std::error_code problem;
    return fs::read_symlink("/proc/self/exe", problem);
}

std::string besideExecutable(const std::string& path) {
    return fs::path(executable()).replace_filename(path);
}

std::string applicationFolder(const std::string& executable) {
    std::error_code problem;
    const fs::path file = fs::weakly_canonical(executable, problem);
    const fs::path folder = file.parent_path();
    if (folder.filename() == "bin" || folder.filename() == "games") {
        const fs::path shared = folder.parent_path() / "share";
        for (const fs::path& data :
             {shared / file.filename(), shared / "games" / file.filename()}) {
            if (fs::is_directory(data, problem)) {
                return data;
            }
        }
    }
    return folder;
}

}  // namespace base

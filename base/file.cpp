#include "base/file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <utility>

namespace fs = std::filesystem;

namespace base {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

std::string whyNoFile(const std::string& path) {
    std::error_code problem;
    const fs::file_status status = fs::status(path, problem);
    if (fs::is_regular_file(status)) {
        return {};
    }
    if (fs::exists(status)) {
        return path + ": is no regular file";
    }
    return path + ": " +
           (status.type() == fs::file_type::none ? problem.message() : "no such file");
}

std::optional<std::string> readFile(const std::string& path, size_t mostBytes, std::string* error) {
    // Reading a pipe or a device may never end, and even opening it may block.
    if (std::string reason = whyNoFile(path); !reason.empty()) {
        *error = std::move(reason);
        return std::nullopt;
    }
    std::ifstream file(path, std::ios::binary);
    std::string content;
    char block[1 << 14];
    while (file.is_open() && content.size() <= mostBytes &&
           (file.read(block, sizeof block) || file.gcount() > 0)) {
        content.append(block, static_cast<size_t>(file.gcount()));
    }
    if (!file.is_open() || file.bad()) {
        *error = path + ": cannot be read";
        return std::nullopt;
    }
    if (content.size() > mostBytes) {
        *error = path + ": is larger than " + std::to_string(mostBytes >> 20) + " MiB";
        return std::nullopt;
    }
    content.erase(0, content.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
    return content;
}

bool writeFile(const std::string& path, const std::string& content, std::string* error) {
    const std::string part = path + "." + std::to_string(getpid()) + ".part";
    std::ofstream file(part, std::ios::binary | std::ios::trunc);
    file << content;
    file.close();
    std::error_code problem;
    if (file) {
        fs::rename(part, path, problem);
    } else {
        problem = std::error_code(errno, std::generic_category());
    }
    if (problem) {
        *error = path + ": cannot be written: " + problem.message();
        fs::remove(part, problem);
        return false;
    }
    return true;
}

bool createFile(const std::string& path, const std::string& content) {
    constexpr mode_t kForOwner = 0600;
    const int file =
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kForOwner);
    if (file < 0) {
        return false;
    }
    const ssize_t written = write(file, content.data(), content.size());
    return close(file) == 0 && written == static_cast<ssize_t>(content.size());
}

std::vector<std::string> entriesOf(const std::string& folder) {
    std::vector<std::string> paths;
    std::error_code problem;
    for (fs::directory_iterator at(folder, problem), end; !problem && at != end;
         at.increment(problem)) {
        paths.push_back(at->path());
    }
    return paths;
}

}  // namespace base

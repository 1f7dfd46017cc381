#include "roles/role_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <tuple>

namespace {

constexpr mode_t kDirectoryMode = 0700;
constexpr char kIdPlaceholder[] = "XXXIDXXX";
constexpr char kExePathPlaceholder[] = "XXXEXEPATHXXX";
constexpr char kRescanCommand[] = "/usr/bin/ks-control scan-services";

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

FilePtr openFile(const std::string& path, const char* mode) {
    return FilePtr(std::fopen(path.c_str(), mode));
}

bool isMissing(const char* path) {
    struct stat status;
    return stat(path, &status) != 0 && errno == ENOENT;
}

// An ancestor that is there already makes its mkdir fail, which does no harm.
void createWithAncestors(const std::string& path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        mkdir(path.substr(0, slash).c_str(), kDirectoryMode);
    }
    mkdir(path.c_str(), kDirectoryMode);
}

// Replaces every placeholder, also one that an insertion completes together with the text beside
// it: such a one begins less than a placeholder's length before the insertion. A value that holds
// its own placeholder is not searched again.
//
// Values made of pieces of the placeholder can complete new ones for ever, hence the limit. No
// other value comes near it: one that completes nothing needs a replacement for each placeholder of
// the line, which has as many bytes, and one that is shorter than the placeholder makes the line
// shorter each time.
void replaceAll(std::string* line, std::string_view placeholder, const std::string& value) {
    const bool holdsItself = value.find(placeholder) != std::string::npos;
    const std::size_t limit = line->size();
    std::size_t position = line->find(placeholder);
    for (std::size_t count = 0; count < limit && position != std::string::npos; ++count) {
        line->replace(position, placeholder.size(), value);
        const std::size_t next = holdsItself
                                     ? position + value.size()
                                     : position - std::min(position, placeholder.size() - 1);
        position = line->find(placeholder, next);
    }
}

// The text behind the template's last '\n' is a line too, even when it is empty. Where reading
// fails, at once for a directory, the copy ends: the role file then holds the lines before.
void copyTemplate(std::FILE* source, std::FILE* target, const std::string& appId,
                  const std::string& exePath) {
    char* buffer = nullptr;
    std::size_t capacity = 0;
    for (bool atEnd = false; !atEnd;) {
        const ssize_t length = getline(&buffer, &capacity, source);
        if (std::ferror(source) != 0 || (length < 0 && std::feof(source) == 0)) {
            break;
        }
        std::string line(buffer, length < 0 ? 0 : static_cast<std::size_t>(length));
        atEnd = !line.ends_with('\n');
        if (!atEnd) {
            line.pop_back();
        }
        replaceAll(&line, kIdPlaceholder, appId);
        replaceAll(&line, kExePathPlaceholder, exePath);
        line += '\n';
        std::fwrite(line.data(), 1, line.size(), target);
        std::fflush(target);
    }
    std::free(buffer);
}

// The role file is there from the moment it is opened, so a reader can meet it empty or in part
// until it is closed, and two processes that start together both write it, with the same text. The
// bus reads role files when it is told to, and each writer tells it after its own file is complete.
void writeRoleFile(const std::string& templatePath, const std::string& rolePath,
                   const std::string& appId, const std::string& exePath) {
    const FilePtr source = openFile(templatePath, "r");
    // Opened without a template too: the empty file keeps later starts from trying again.
    const FilePtr target = openFile(rolePath, "w");
    if (source != nullptr && target != nullptr) {
        copyTemplate(source.get(), target.get(), appId, exePath);
    }
}

}  // namespace

namespace tav {

void ensureRoleDirectories() {
    if (isMissing(kPublicRoles)) {
        if (isMissing(kRoleStore)) {
            createWithAncestors(kRoleStore);
        }
        mkdir(kPublicRoles, kDirectoryMode);
    }
    if (isMissing(kPrivateRoles)) {
        mkdir(kPrivateRoles, kDirectoryMode);
    }
}

}  // namespace tav

// NOLINTBEGIN(performance-unnecessary-value-param): the symbol's name holds the types
void roleGenerate(std::string templatePath, std::string rolePath, std::string appId,
                  std::string exePath) {
    // NOLINTEND(performance-unnecessary-value-param)
    if (openFile(rolePath, "r") != nullptr) {
        return;
    }
    writeRoleFile(templatePath, rolePath, appId, exePath);
    // Waits for the command. It may be missing or fail, and nobody here could do anything about it.
    std::ignore = std::system(kRescanCommand);
}

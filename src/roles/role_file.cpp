#include "roles/role_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <tuple>

#include "core/handles.h"

namespace {

constexpr mode_t kDirectoryMode = 0700;
constexpr char kIdPlaceholder[] = "XXXIDXXX";
constexpr char kExePathPlaceholder[] = "XXXEXEPATHXXX";
constexpr char kBothBeginWith[] = "XXX";
constexpr char kRescanCommand[] = "/usr/bin/ks-control scan-services";

using FilePtr = tav::Owner<std::FILE, std::fclose>;

FilePtr openFile(const char* path, const char* mode) {
    return FilePtr(std::fopen(path, mode));
}

bool isMissing(const char* path) {
    struct stat status;
    return stat(path, &status) != 0 && errno == ENOENT;
}

// mkdir fails for a parent that exists already, which does no harm.
void createStoreWithAncestors() {
    char path[sizeof tav::kRoleStore];
    std::snprintf(path, sizeof path, "%s", tav::kRoleStore);
    for (char* slash = std::strchr(path + 1, '/'); slash != nullptr;
         slash = std::strchr(slash + 1, '/')) {
        *slash = '\0';
        mkdir(path, kDirectoryMode);
        *slash = '/';
    }
    mkdir(path, kDirectoryMode);
}

// A line of a template, in getline()'s buffer, which grows with each insertion.
struct Line {
    char* text = nullptr;
    std::size_t capacity = 0;
    std::size_t length = 0;

    ~Line() { std::free(text); }

    std::size_t find(std::string_view sought, std::size_t from = 0) const {
        return std::string_view(text, length).find(sought, from);
    }

    // False when memory is exhausted.
    bool replace(std::size_t position, std::size_t count, std::string_view value) {
        const std::size_t newLength = length - count + value.size();
        if (newLength > capacity) {
            char* grown = static_cast<char*>(std::realloc(text, newLength));
            if (grown == nullptr) {
                return false;
            }
            text = grown;
            capacity = newLength;
        }
        std::memmove(text + position + value.size(), text + position + count,
                     length - position - count);
        std::memcpy(text + position, value.data(), value.size());
        length = newLength;
        return true;
    }
};

// Replaces every placeholder. An insertion may complete another placeholder together with the text
// beside it. That one begins less than a placeholder's length before the insertion, so the search
// goes back this far. A value that contains its own placeholder is not searched again.
//
// The number of replacements is limited, because a value that consists of pieces of the placeholder
// can complete new ones without end. Other values do not reach the limit. If a value completes no
// placeholder, there is one replacement for each placeholder of the line. If it is shorter than the
// placeholder, each replacement makes the line shorter.
//
// False when memory is exhausted.
bool replaceAll(Line* line, std::string_view placeholder, std::string_view value) {
    std::size_t position = line->find(placeholder);
    if (position == std::string_view::npos) {
        return true;
    }
    const bool holdsItself = value.find(placeholder) != std::string_view::npos;
    const std::size_t limit = line->length;
    for (std::size_t count = 0; count < limit && position != std::string_view::npos; ++count) {
        if (!line->replace(position, placeholder.size(), value)) {
            return false;
        }
        const std::size_t next = holdsItself
                                     ? position + value.size()
                                     : position - std::min(position, placeholder.size() - 1);
        position = line->find(placeholder, next);
    }
    return true;
}

// The text after the template's last '\n' is a line too, even when it is empty. False when reading
// fails, as it does for a directory, or memory is exhausted.
bool copyTemplate(std::FILE* source, std::FILE* target, std::string_view appId,
                  std::string_view exePath) {
    Line line;
    for (bool atEnd = false; !atEnd;) {
        const ssize_t length = getline(&line.text, &line.capacity, source);
        line.length = length < 0 ? 0 : static_cast<std::size_t>(length);
        atEnd = line.length == 0 || line.text[line.length - 1] != '\n';
        if (atEnd && (std::ferror(source) != 0 || (length < 0 && std::feof(source) == 0))) {
            return false;
        }
        if (atEnd && !line.replace(line.length, 0, "\n")) {
            return false;
        }
        if (line.find(kBothBeginWith) != std::string_view::npos &&
            (!replaceAll(&line, kIdPlaceholder, appId) ||
             !replaceAll(&line, kExePathPlaceholder, exePath))) {
            return false;
        }
        std::fwrite(line.text, 1, line.length, target);
        std::fflush(target);
    }
    return true;
}

// There is a harmless race: the role file exists as soon as it is opened, so a reader can see it
// empty or incomplete, and two processes that start together both write it, with the same text. The
// bus reads role files when it is told to, and each writer tells it only after its file is
// complete.
void writeRoleFile(const char* templatePath, const char* rolePath, const char* appId,
                   const char* exePath) {
    const FilePtr source = openFile(templatePath, "r");
    // Opened even without a template: the empty file keeps later starts from trying again.
    const FilePtr target = openFile(rolePath, "w");
    if (source == nullptr || target == nullptr) {
        return;
    }
    if (!copyTemplate(source.get(), target.get(), appId, exePath)) {
        std::remove(rolePath);  // an existing file is never written again, so it must be complete
    }
}

}  // namespace

namespace tav {

void ensureRoleDirectories() {
    if (isMissing(kPublicRoles)) {
        if (isMissing(kRoleStore)) {
            createStoreWithAncestors();
        }
        mkdir(kPublicRoles, kDirectoryMode);
    }
    if (isMissing(kPrivateRoles)) {
        mkdir(kPrivateRoles, kDirectoryMode);
    }
}

void generateRoleFile(const char* templatePath, const char* rolePath, const char* appId,
                      const char* exePath) {
    if (openFile(rolePath, "r") != nullptr) {
        return;
    }
    writeRoleFile(templatePath, rolePath, appId, exePath);
    // Waits for the command. It may be missing or fail, which cannot be helped here.
    std::ignore = std::system(kRescanCommand);
}

}  // namespace tav

// NOLINTBEGIN(performance-unnecessary-value-param): the symbol's name holds the types
void roleGenerate(std::string templatePath, std::string rolePath, std::string appId,
                  std::string exePath) {
    // NOLINTEND(performance-unnecessary-value-param)
    tav::generateRoleFile(templatePath.c_str(), rolePath.c_str(), appId.c_str(), exePath.c_str());
}

#include "program.h"

#include <elf.h>
#include <link.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace tools {
namespace {

constexpr char kOwnFile[] = "/proc/self/exe";
constexpr char kDefaultPath[] = "/usr/local/bin:/usr/bin:/bin";
constexpr char kCapabilities[] = "security.capability";
// The kernel's limits for the first line of a script and for nested interpreters.
constexpr int kLongestInterpreterLine = 256;
constexpr int kMostInterpreters = 5;

constexpr char kOtherRights[] =
    ": runs with rights that its user does not have, so nothing can be preloaded into it; run a "
    "copy that has no set-id bit and no capabilities";
constexpr char kOtherMachine[] =
    ": is built for another processor or word size than the simulated device; run one that is "
    "built for this tavsim";
constexpr char kStatic[] =
    ": is linked statically, so nothing can be preloaded into it; link it dynamically, or let what "
    "it starts run under `tavsim run`";

bool isExecutableFile(const std::string& path, int* problem) {
    std::error_code unknown;
    if (!fs::is_regular_file(path, unknown)) {
        return false;
    }
    *problem = EACCES;
    return access(path.c_str(), X_OK) == 0;
}

bool hasOtherRights(const std::string& file) {
    struct stat status;
    if (stat(file.c_str(), &status) != 0) {
        return false;
    }
    const bool isOtherUser = (status.st_mode & S_ISUID) != 0 && status.st_uid != geteuid();
    const bool isOtherGroup = (status.st_mode & S_ISGID) != 0 && status.st_gid != getegid();
    // Root has all capabilities anyway.
    const bool isCapable = geteuid() != 0 && getxattr(file.c_str(), kCapabilities, nullptr, 0) > 0;
    return isOtherUser || isOtherGroup || isCapable;
}

// The interpreter of a script; empty for anything else.
std::string interpreterOf(std::ifstream& file) {
    char start[kLongestInterpreterLine] = {};
    file.read(start, sizeof start - 1);
    std::istringstream line(start);
    std::string interpreter;
    if (line.get() == '#' && line.get() == '!' && line.peek() != '\n') {
        line >> interpreter;
    }
    return interpreter;
}

template <typename Record>
bool readAt(std::ifstream& file, std::streamoff offset, Record* record) {
    file.clear();
    file.seekg(offset);
    return !!file.read(reinterpret_cast<char*>(record), sizeof *record);
}

bool isElf(const ElfW(Ehdr) & header) {
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0;
}

bool isForThisMachine(const ElfW(Ehdr) & header) {
    std::ifstream file(kOwnFile, std::ios::binary);
    ElfW(Ehdr) own{};
    return !readAt(file, 0, &own) || (own.e_machine == header.e_machine &&
                                      own.e_ident[EI_CLASS] == header.e_ident[EI_CLASS] &&
                                      own.e_ident[EI_DATA] == header.e_ident[EI_DATA]);
}

// Only a program that names a dynamic linker is dynamically linked.
bool isStatic(std::ifstream& file, const ElfW(Ehdr) & header) {
    std::streamoff offset = static_cast<std::streamoff>(header.e_phoff);
    for (int n = 0; n < header.e_phnum; ++n, offset += header.e_phentsize) {
        ElfW(Phdr) segment;
        if (!readAt(file, offset, &segment) || segment.p_type == PT_INTERP) {
            return false;  // it cannot be started either, which is reported then
        }
    }
    return true;
}

std::string whyNoDeviceIn(const std::string& path, bool isInterpreter, int depth) {
    if (hasOtherRights(path)) {
        return path + kOtherRights;
    }
    std::ifstream file(path, std::ios::binary);
    const std::string interpreter = interpreterOf(file);
    if (!interpreter.empty() && depth < kMostInterpreters) {
        return whyNoDeviceIn(interpreter, true, depth + 1);
    }
    ElfW(Ehdr) header{};
    if (!readAt(file, 0, &header) || !isElf(header)) {
        return {};
    }
    if (!isForThisMachine(header)) {
        return path + kOtherMachine;
    }
    // A statically linked shell may still start dynamically linked programs.
    return !isInterpreter && isStatic(file, header) ? path + kStatic : std::string();
}

}  // namespace

std::string findProgram(const std::string& name, int* problem) {
    *problem = ENOENT;
    if (name.find('/') != std::string::npos) {
        std::error_code unknown;
        *problem = fs::exists(name, unknown) ? EACCES : ENOENT;
        return isExecutableFile(name, problem) ? name : std::string();
    }
    const char* path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : kDefaultPath);
    for (std::string folder; std::getline(folders, folder, ':');) {
        std::string file = (folder.empty() ? "." : folder) + "/" + name;
        if (!name.empty() && isExecutableFile(file, problem)) {
            return file;
        }
    }
    return {};
}

std::string whyNoDevice(const std::string& file) {
    return whyNoDeviceIn(file, false, 0);
}

}  // namespace tools

#include "real.h"

#include <cstdio>
#include <cstring>

#include "environment.h"
#include "program.h"
#include "tools/process/process.h"

namespace tools {
namespace {

constexpr int kBadSetup = 2;
constexpr int kCannotStart = 127;

int complain(const std::string& text, int status) {
    std::fprintf(stderr, "tavsim: %s\n", text.c_str());
    return status;
}

}  // namespace

int runOnThisMachine(const std::vector<std::string>& command) {
    int problem = 0;
    const std::string file = findProgram(command[0], &problem);
    if (file.empty()) {
        return complain(command[0] + ": " + std::strerror(problem), kCannotStart);
    }
    if (const std::string reason = whyNoDevice(file); !reason.empty()) {
        return complain(reason, kBadSetup);
    }
    std::string reason;
    const std::string library = preloadableLinux(&reason);
    if (library.empty()) {
        return complain(reason, kBadSetup);
    }
    preload(library);
    return complain(command[0] + ": " + std::strerror(execute(file, command)), kCannotStart);
}

}  // namespace tools

#include "real.h"

#include <cstring>

#include "environment.h"
#include "program.h"
#include "tools/process/exit_status.h"
#include "tools/process/process.h"

namespace tools {

int runOnThisMachine(const std::vector<std::string>& command) {
    int problem = 0;
    const std::string file = findProgram(command[0], &problem);
    if (file.empty()) {
        return complain(command[0] + ": " + std::strerror(problem), kCannotStart);
    }
    if (const std::string reason = whyNoDevice(file); !reason.empty()) {
        return complain(reason);
    }
    std::string reason;
    const std::string library = preloadableLinux(&reason);
    if (library.empty()) {
        return complain(reason);
    }
    preload(library);
    return complain(command[0] + ": " + std::strerror(execute(file, command)), kCannotStart);
}

}  // namespace tools

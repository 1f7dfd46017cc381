#include "tools/control/ctl.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>

#include "base/child.h"
#include "simulator/control/commands.h"
#include "simulator/language/words.h"
#include "tools/control/client.h"
#include "tools/control/reach.h"
#include "tools/process/exit_status.h"

using std::chrono::milliseconds;

namespace tools {
namespace {

constexpr int kRefused = 1;

// False when it cannot be printed, which is said.
bool print(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
        std::fflush(stdout) == 0) {
        return true;
    }
    complain(std::string("ctl: standard output: ") + std::strerror(errno));
    return false;
}

// Prints the answer, to its end, and gives the exit status.
int show(Answer answer, Client& device) {
    bool hasFollowed = false;
    while (answer.end == Answer::End::Following) {
        hasFollowed = true;
        if (!answer.lost.empty()) {
            complain("ctl: " + answer.lost + " lines were not taken in time and are lost");
        }
        if (!print(answer.text)) {
            return kNotReached;
        }
        answer = device.more();
    }
    if (!answer.frame.empty()) {
        return complain("ctl: frame is for programs that show the device", kRefused);
    }
    switch (answer.end) {
    case Answer::End::Refused:
        return complain(answer.text, kRefused);
    case Answer::End::Ended:
        return hasFollowed ? 0 : complain("ctl: the application ended before it answered");
    case Answer::End::Gone:
        return complain("ctl: the device is gone, the answer not complete");
    case Answer::End::Late:
        return complain(
            "ctl: the application has not handled SDL's events in time; --timeout gives it more");
    case Answer::End::Strange:
        return complain("ctl: what answers there is no device");
    default:
        return print(answer.text) ? 0 : kNotReached;
    }
}

}  // namespace

int control(const ControlRequest& request) {
    const std::string line = base::joined(request.command);
    if (line.empty()) {
        return complain("ctl: no command given (`tavsim ctl --help` lists them)");
    }
    if (line.find('\n') != std::string::npos) {
        return complain("ctl: a command is one line");
    }
    tavsim::Words words(line);
    const std::string_view name = words.next();
    if (name == "wait") {
        return waitFor(request, words.rest());
    }
    if (const std::string problem = tavsim::whyMalformed(line); !problem.empty()) {
        return complain(problem, kRefused);
    }
    if (name == "list") {
        printRunningDevices(!words.isEmpty());
        return 0;
    }
    const milliseconds timeout = inMilliseconds(request.timeout);
    const auto end = std::chrono::steady_clock::now() + timeout;
    const ReachedDevice reached = reachDevice(request.root, std::min(timeout, kStarting), timeout);
    if (reached.connection < 0) {
        return complain("ctl: " + reached.problem);
    }
    Client device(reached.connection);
    const auto left = [end] {
        return std::max(milliseconds(0),
                        std::chrono::ceil<milliseconds>(end - std::chrono::steady_clock::now()));
    };
    return show(device.ask(line, left()), device);
}

}  // namespace tools

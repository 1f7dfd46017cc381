#include "tools/control/ctl.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <optional>

#include "base/message_socket.h"
#include "simulator/control/protocol.h"
#include "simulator/control/words.h"
#include "tools/control/reach.h"
#include "tools/control/wait.h"

using std::chrono::milliseconds;
using tavsim::ControlMessage;

namespace tools {
namespace {

constexpr int kRefused = 1;
constexpr int kNotReached = 2;

int complain(const std::string& text) {
    std::fprintf(stderr, "tavsim: ctl: %s\n", text.c_str());
    return kNotReached;
}

class Answer {
public:
    Answer(base::MessageSocket& device, milliseconds timeout)
        : m_device(device), m_timeout(timeout) {}

    // Prints what comes, and gives the exit status.
    int print() {
        while (const std::optional<base::Message> message = m_device.receive(m_timeout)) {
            if (const std::optional<int> status = take(*message)) {
                return *status;
            }
        }
        return complain(m_device.isGone() ? "the device is gone, the answer not complete"
                                          : "the application has not handled SDL's events in "
                                            "time; --timeout gives it more");
    }

private:
    std::optional<int> take(const base::Message& message) {
        switch (static_cast<ControlMessage>(message.kind)) {
        case ControlMessage::Refused:
            std::fprintf(stderr, "tavsim: %s\n", message.content.c_str());
            return kRefused;
        case ControlMessage::Output:
            m_output += message.content;
            return m_timeout ? std::nullopt : flush();
        case ControlMessage::Following:
            m_timeout.reset();
            return flush();
        case ControlMessage::Lost:
            std::fprintf(stderr, "tavsim: ctl: %s lines were not taken in time and are lost\n",
                         message.content.c_str());
            return std::nullopt;
        case ControlMessage::Done:
            return flush().value_or(0);
        case ControlMessage::Ended:
            return m_timeout ? complain("the application ended before it answered") : 0;
        default:
            return complain("what answers there is no device");
        }
    }

    // The whole answer is received before it is printed, so that the device need not wait for a
    // slow reader of our output. Returns a status when it cannot be printed.
    std::optional<int> flush() {
        const size_t printed = std::fwrite(m_output.data(), 1, m_output.size(), stdout);
        if (printed != m_output.size() || std::fflush(stdout) != 0) {
            return complain(std::string("standard output: ") + std::strerror(errno));
        }
        m_output.clear();
        return std::nullopt;
    }

    base::MessageSocket& m_device;
    base::MessageSocket::Limit m_timeout;  // none while the journal is followed
    std::string m_output;
};

std::string joined(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        line += (line.empty() ? "" : " ") + word;
    }
    return line;
}

}  // namespace

int control(const ControlRequest& request) {
    const std::string line = joined(request.command);
    if (line.empty()) {
        return complain("no command given (`tavsim ctl --help` lists them)");
    }
    if (line.find('\n') != std::string::npos) {
        return complain("a command is one line");
    }
    tavsim::Words words(line);
    if (words.next() == "wait") {
        return waitFor(request, words.rest());
    }
    if (line == "list" || line == "list --json") {
        line == "list" ? printRunningDevices() : printRunningDevicesAsJson();
        return 0;
    }
    const milliseconds timeout = inMilliseconds(request.timeout);
    const auto end = std::chrono::steady_clock::now() + timeout;
    const ReachedDevice reached = reachDevice(request.root, std::min(timeout, kStarting), timeout);
    if (reached.connection < 0) {
        return complain(reached.problem);
    }
    base::MessageSocket device(reached.connection, kLongestMessage);
    const auto left = [end] {
        return std::max(milliseconds(0),
                        std::chrono::ceil<milliseconds>(end - std::chrono::steady_clock::now()));
    };
    device.send(static_cast<uint8_t>(ControlMessage::Command), line, left());
    return Answer(device, left()).print();
}

}  // namespace tools

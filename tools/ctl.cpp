#include "ctl.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>

#include "helper/json_writer.h"
#include "helper/message_socket.h"
#include "simulator/control/protocol.h"
#include "simulator/control/running_devices.h"
#include "simulator/control/socket_address.h"

using std::chrono::milliseconds;
using tavsim::ControlMessage;
using tavsim::RunningDevice;

namespace tools {
namespace {

constexpr int kRefused = 1;
constexpr int kNotReached = 2;
constexpr milliseconds kRetry(20);
// More than any answer, as a device keeps less of its journal.
constexpr uint64_t kLongestMessage = 1 << 30;

int complain(const std::string& text) {
    std::fprintf(stderr, "tavsim: ctl: %s\n", text.c_str());
    return kNotReached;
}

// In one line.
std::string description(const RunningDevice& device) {
    const std::string name = device.device.empty() ? "unnamed" : device.device;
    return helper::escapedJson(name + ": " + device.program);
}

int list() {
    for (const RunningDevice& device : tavsim::runningDevices()) {
        std::printf("%s  %s\n", device.root.c_str(), description(device).c_str());
    }
    return 0;
}

int listAsJson() {
    helper::JsonWriter json;
    json.beginArray();
    for (const RunningDevice& device : tavsim::runningDevices()) {
        json.beginObject().member("root", device.root).member("device", device.device);
        json.member("program", device.program).member("process", device.process).endObject();
    }
    std::puts(json.endArray().text().c_str());
    return 0;
}

// The root folder of the only device that runs. Nothing, with the reason in `error`, when it is not
// the only one.
std::optional<std::string> onlyRoot(std::string* error) {
    const std::vector<RunningDevice> devices = tavsim::runningDevices();
    if (devices.size() == 1) {
        return devices[0].root;
    }
    *error = devices.empty() ? "no device is running; start a program with `tavsim run`"
                             : "several devices are running, choose one with";
    for (const RunningDevice& device : devices) {
        *error += "\n  --root " + device.root + "  " + description(device);
    }
    return std::nullopt;
}

// Tries again while the device has no room for another client. Negative, with errno, on failure.
int connectTo(const std::string& root, milliseconds timeout) {
    const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    for (milliseconds waited(0); connection >= 0; waited += kRetry) {
        if (tavsim::ControlAddress(root).connectTo(connection)) {
            return connection;
        }
        if (errno != EAGAIN || waited > timeout) {
            break;
        }
        poll(nullptr, 0, kRetry.count());
    }
    return -1;
}

class Answer {
public:
    Answer(helper::MessageSocket& device, milliseconds timeout)
        : m_device(device), m_timeout(timeout) {}

    // Prints what comes, and gives the exit status.
    int print() {
        while (const std::optional<helper::Message> message = m_device.receive(m_timeout)) {
            if (const std::optional<int> status = take(*message)) {
                return *status;
            }
        }
        return complain(m_device.isGone() ? "the device is gone, the answer not complete"
                                          : "the application has not handled SDL's events in "
                                            "time; --timeout gives it more");
    }

private:
    std::optional<int> take(const helper::Message& message) {
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

    // All that a command says is taken before any of it is printed, so that the device need not
    // wait for whoever reads it here. A status when it cannot be printed.
    std::optional<int> flush() {
        const size_t printed = std::fwrite(m_output.data(), 1, m_output.size(), stdout);
        if (printed != m_output.size() || std::fflush(stdout) != 0) {
            return complain(std::string("standard output: ") + std::strerror(errno));
        }
        m_output.clear();
        return std::nullopt;
    }

    helper::MessageSocket& m_device;
    helper::MessageSocket::Limit m_timeout;  // none while the journal is followed
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
    if (line == "list") {
        return list();
    }
    if (line == "list --json") {
        return listAsJson();
    }
    std::string error;
    const std::optional<std::string> root =
        request.root.empty() ? onlyRoot(&error) : std::optional(request.root);
    if (!root) {
        return complain(error);
    }
    const auto timeout =
        std::chrono::duration_cast<milliseconds>(std::chrono::duration<double>(request.timeout));
    const int connection = connectTo(*root, timeout);
    if (connection < 0) {
        const bool isThere = errno != ENOENT && errno != ECONNREFUSED;
        return complain(*root + ": " +
                        (isThere ? std::strerror(errno) : "no device is running there"));
    }
    helper::MessageSocket device(connection, kLongestMessage);
    device.send(static_cast<uint8_t>(ControlMessage::Command), line, timeout);
    return Answer(device, timeout).print();
}

}  // namespace tools

#include "ctl.h"

#include <cstdio>
#include <filesystem>

#include "simulator/control/socket_address.h"
#include "simulator/interface/device.h"

namespace fs = std::filesystem;

namespace tools {
namespace {

constexpr int kRefused = 1;
constexpr int kNotReached = 2;
constexpr std::string_view kOk = "ok\n";
constexpr std::string_view kError = "error ";

class Connection {
public:
    explicit Connection(const std::string& root)
        : m_socket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)),
          m_connected(m_socket >= 0 && tavsim::ControlAddress(root).connectTo(m_socket)) {}
    ~Connection() {
        if (m_socket >= 0) {
            close(m_socket);
        }
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool isConnected() const { return m_connected; }

    bool send(const std::string& bytes) const {
        size_t sent = 0;
        while (sent < bytes.size()) {
            const ssize_t count =
                ::send(m_socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
            if (count <= 0) {
                return false;
            }
            sent += static_cast<size_t>(count);
        }
        return true;
    }

    // The next bytes; empty at the end.
    std::string receive() const {
        char bytes[4096];
        const ssize_t count = recv(m_socket, bytes, sizeof bytes, 0);
        return std::string(bytes, count > 0 ? static_cast<size_t>(count) : 0);
    }

private:
    int m_socket;
    bool m_connected;
};

int complain(const std::string& text) {
    std::fprintf(stderr, "tavsim: ctl: %s\n", text.c_str());
    return kNotReached;
}

std::vector<std::string> runningDevices() {
    std::vector<std::string> roots;
    std::error_code problem;
    for (fs::directory_iterator at(tavsim::freshRootsFolder(), problem), end; !problem && at != end;
         at.increment(problem)) {
        if (Connection(at->path()).isConnected()) {
            roots.push_back(at->path());
        }
    }
    return roots;
}

// Prints what comes, as it comes, behind the line that says whether the command was carried out.
int printAnswer(const Connection& connection) {
    std::string head;
    while (head.find('\n') == std::string::npos) {
        const std::string bytes = connection.receive();
        if (bytes.empty()) {
            return complain("the device did not answer");
        }
        head += bytes;
    }
    if (head.compare(0, kOk.size(), kOk) != 0) {
        std::fprintf(stderr, "tavsim: %s", head.substr(kError.size()).c_str());
        return kRefused;
    }
    std::string bytes = head.substr(kOk.size());
    do {
        std::fwrite(bytes.data(), 1, bytes.size(), stdout);
        std::fflush(stdout);
        bytes = connection.receive();
    } while (!bytes.empty());
    return 0;
}

}  // namespace

int control(const std::string& root, const std::vector<std::string>& command) {
    std::string line;
    for (const std::string& word : command) {
        line += (line.empty() ? "" : " ") + word;
    }
    if (line.find('\n') != std::string::npos) {
        return complain("a command is one line");
    }
    std::vector<std::string> roots = {root};
    if (root.empty()) {
        roots = runningDevices();
    }
    if (roots.empty()) {
        return complain("no device is running; start a program with `tavsim run`");
    }
    if (roots.size() > 1) {
        std::string all;
        for (const std::string& one : roots) {
            all += "\n  --root " + one;
        }
        return complain("several devices are running, choose one with" + all);
    }
    const Connection connection(roots[0]);
    if (!connection.isConnected()) {
        return complain(roots[0] + ": no device is running there");
    }
    if (!connection.send(line + "\n")) {
        return complain(roots[0] + ": the device has ended");
    }
    return printAnswer(connection);
}

}  // namespace tools

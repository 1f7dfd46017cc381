#include "simulator/control/control.h"

#include <poll.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <list>

#include "simulator/control/commands.h"
#include "simulator/control/socket_address.h"
#include "simulator/device/journal.h"
#include "simulator/device/root.h"

namespace tavsim {
namespace {

using SteadyClock = std::chrono::steady_clock;

// What a client may take up before it is let go.
constexpr size_t kMostClients = 16;
constexpr size_t kLongestCommand = 1 << 20;
constexpr size_t kMostWaitingOutput = 8 << 20;
constexpr std::chrono::seconds kLongestSilence(5);
constexpr int kReadsAtOnce = 16;  // of a few kilobytes each, so that a flood costs little at a time

// One connection carries one command: a line from the client, then "ok" or "error" and the output,
// then the end, unless the client follows the journal.
struct Client {
    explicit Client(int connected) : socket(connected) {}
    ~Client() { close(socket); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    int socket;
    std::string input;
    std::string output;
    SteadyClock::time_point since = SteadyClock::now();
    bool answered = false;
    bool follows = false;
    bool gone = false;
    std::int64_t journalSeen = 0;
};

struct Control {
    int listener = -1;
    std::list<Client> clients;
    bool serving = false;
};

Control& control() {
    static Control& instance = *new Control;
    return instance;
}

void accept() {
    while (control().clients.size() < kMostClients) {
        const int connected =
            accept4(control().listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (connected < 0) {
            return;
        }
        control().clients.emplace_back(connected);
    }
}

void receive(Client& client) {
    char bytes[4096];
    for (int i = 0; i < kReadsAtOnce && !client.answered; ++i) {
        const ssize_t count = recv(client.socket, bytes, sizeof bytes, 0);
        if (count <= 0) {
            client.gone = client.gone || count == 0 || (errno != EAGAIN && errno != EINTR);
            return;
        }
        client.input.append(bytes, static_cast<size_t>(count));
        if (client.input.find('\n') != std::string::npos) {
            return;
        }
    }
}

void answer(Client& client) {
    const size_t end = client.input.find('\n');
    if (end == std::string::npos) {
        if (client.input.size() > kLongestCommand) {
            client.output = "error the command is too long\n";
            client.answered = true;
        }
        return;
    }
    const CommandResult result = carryOut(client.input.substr(0, end));
    client.answered = true;
    client.follows = result.follow;
    client.journalSeen = journalLength();
    client.output = result.error.empty() ? "ok\n" + result.output : "error " + result.error + "\n";
    client.input.clear();
}

void follow(Client& client) {
    const auto& lines = journalLines();
    const std::int64_t first = journalLength() - static_cast<std::int64_t>(lines.size());
    for (std::int64_t n = std::max(client.journalSeen, first); n < journalLength(); ++n) {
        client.output += lines[static_cast<size_t>(n - first)] + "\n";
    }
    client.journalSeen = journalLength();
}

void send(Client& client) {
    while (!client.output.empty()) {
        const ssize_t count =
            ::send(client.socket, client.output.data(), client.output.size(), MSG_NOSIGNAL);
        if (count <= 0) {
            client.gone = client.gone || (errno != EAGAIN && errno != EINTR);
            return;
        }
        client.output.erase(0, static_cast<size_t>(count));
    }
}

bool isFinished(const Client& client) {
    const bool isSilent = SteadyClock::now() - client.since > kLongestSilence;
    const bool isStalled = client.output.size() > kMostWaitingOutput ||
                           (isSilent && !client.follows && !client.output.empty());
    const bool hasAll = client.answered && !client.follows && client.output.empty();
    return client.gone || hasAll || isStalled || (isSilent && !client.answered);
}

void serve(Client& client) {
    receive(client);
    if (!client.answered) {
        answer(client);
    }
    if (client.follows) {
        follow(client);
    }
    send(client);
}

bool isAnswered(const ControlAddress& address) {
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool connected = socket >= 0 && address.connectTo(socket);
    if (socket >= 0) {
        close(socket);
    }
    return connected;
}

}  // namespace

bool startControl(std::string* error) {
    const ControlAddress address(rootFolder());
    if (isAnswered(address)) {
        *error = rootFolder() + ": another program is running on this device";
        return false;
    }
    unlink(address.path());
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    control().listener = listener;
    // Between bind and chmod nobody listens yet, so nobody can connect.
    const bool listens = listener >= 0 && address.bindTo(listener) &&
                         chmod(address.path(), S_IRUSR | S_IWUSR) == 0 &&
                         listen(listener, static_cast<int>(kMostClients)) == 0;
    if (!listens) {
        *error = rootFolder() + ": the control socket cannot be made there";
    }
    return listens;
}

void serveControl() {
    // A command can make the application poll events, and so come here again.
    if (control().listener < 0 || control().serving) {
        return;
    }
    control().serving = true;
    accept();
    auto& clients = control().clients;
    for (auto client = clients.begin(); client != clients.end();) {
        serve(*client);
        client = isFinished(*client) ? clients.erase(client) : std::next(client);
    }
    control().serving = false;
}

void stopControl() {
    if (control().listener < 0) {
        return;
    }
    close(control().listener);
    control().listener = -1;
    control().clients.clear();
    unlink(ControlAddress(rootFolder()).path());
}

}  // namespace tavsim

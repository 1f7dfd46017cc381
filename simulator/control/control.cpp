#include "simulator/control/control.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <iterator>
#include <list>
#include <thread>

#include "base/descriptor.h"
#include "base/print_line.h"
#include "base/socket_address.h"
#include "simulator/control/control_client.h"
#include "simulator/control/running_devices.h"
#include "simulator/control/watch.h"
#include "simulator/device/root.h"
#include "simulator/device/trusted_folder.h"
#include "simulator/input/window.h"
#include "simulator/time/pause.h"

namespace tavsim {
namespace {

constexpr size_t kMostClients = 16;
constexpr std::chrono::milliseconds kHeldStep(5);

using Clients = std::list<ControlClient>;

struct Control {
    base::Descriptor listener;
    Clients clients;
    Clients ended;    // with the device, by a command that is still being carried out
    pid_t owner = 0;  // 0: not listening
    bool serving = false;
};

Control& control() {
    static Control& instance = *new Control;
    return instance;
}

bool listenInRoot(std::string* error) {
    const base::SocketAddress address(rootFolder() + kControlSocket);
    unlink(address.path());
    control().listener =
        base::Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const int listener = control().listener.number();
    // Between bind and chmod nobody listens yet, so nobody can connect.
    const bool listens = address.bindTo(listener) &&
                         chmod(address.path(), S_IRUSR | S_IWUSR) == 0 &&
                         listen(listener, static_cast<int>(kMostClients)) == 0;
    if (!listens) {
        *error = rootFolder() + ": the control socket cannot be made there";
    }
    return listens;
}

// The program may have closed the socket together with all its descriptors.
void listenAgain() {
    std::string error;
    if (!listenInRoot(&error)) {
        base::printLine(stderr, "tavsim: the program has closed the control socket: " + error);
        control().owner = 0;
    }
}

void serve(Clients::iterator client) {
    client->serve();
    if (control().ended.empty() && client->isFinished()) {
        control().clients.erase(client);
    }
}

// The client that is the first to go.
Clients::iterator leastClient() {
    return std::ranges::min_element(control().clients, {}, &ControlClient::standing);
}

// Accepts only as many waiting clients as there is room for, so that each client is served once
// more before it may have to go.
void accept() {
    auto& clients = control().clients;
    for (size_t count = 0; count < kMostClients; ++count) {
        const bool isFull = clients.size() == kMostClients;
        const auto least = leastClient();
        if (isFull && least->isFollowing()) {
            return;
        }
        const int connected = accept4(control().listener.number(), nullptr, nullptr, SOCK_CLOEXEC);
        if (connected < 0) {
            return;
        }
        if (isFull) {
            clients.erase(least);
        }
        clients.emplace_back(connected);
        serve(std::prev(clients.end()));
    }
}

void serveClients() {
    if (!control().listener.isOurs()) {
        listenAgain();
    }
    for (auto client = control().clients.begin();
         client != control().clients.end() && control().ended.empty();) {
        serve(client++);
    }
    accept();
    control().ended.clear();
}

bool canSend() {
    return isControlled() && !control().serving;
}

void holdWhilePaused() {
    if (!isTimeHeld()) {
        return;
    }
    while (isTimeHeld() && isControlled()) {
        if (isQuitWaiting()) {
            resumeTime();
            break;
        }
        std::this_thread::sleep_for(kHeldStep);
        serveClients();
    }
    forgetLag();
}

}  // namespace

// A fork of the application inherits the state, but must not use it.
bool isControlled() {
    return control().owner == getpid();
}

bool startControl(std::string* error) {
    if (isDeviceRunning(rootFolder())) {
        *error = rootFolder() + ": another program is running on this device";
        return false;
    }
    if (!describeDevice()) {
        *error = rootFolder() + ": the device's description cannot be written there";
        return false;
    }
    if (!listenInRoot(error)) {
        return false;
    }
    control().owner = getpid();
    forgetWhatWasTold();
    announceDevice();
    return true;
}

void serveControl() {
    // A command can make the application poll events, and so re-enter this function.
    if (!isControlled() || control().serving) {
        return;
    }
    control().serving = true;
    serveClients();
    holdWhilePaused();
    control().serving = false;
}

std::vector<pollfd> controlsToPoll() {
    std::vector<pollfd> sockets;
    if (canSend()) {
        for (const ControlClient& client : control().clients) {
            if (client.isSending()) {
                sockets.push_back({client.socket(), POLLOUT, 0});
            }
        }
    }
    return sockets;
}

void sendToControls() {
    if (canSend()) {
        std::for_each(control().clients.begin(), control().clients.end(),
                      std::mem_fn(&ControlClient::send));
    }
}

void stopControl() {
    if (!isControlled()) {
        return;
    }
    control().owner = 0;
    control().listener.close();
    unlink(base::SocketAddress(rootFolder() + kControlSocket).path());
    withdrawDevice();
    for (ControlClient& client : control().clients) {
        client.end();
    }
    control().ended.splice(control().ended.end(), control().clients);
    if (!control().serving) {
        control().ended.clear();
    }
}

}  // namespace tavsim

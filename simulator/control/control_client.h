// A client of the control socket.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

#include "base/message_socket.h"
#include "screen/changes.h"
#include "simulator/control/commands.h"
#include "simulator/control/protocol.h"

namespace tavsim {

// One connection. A client may stall, flood or vanish: it never keeps the application waiting while
// that runs.
class ControlClient {
public:
    explicit ControlClient(int socket);

    // Does what can be done without waiting: takes a command once the one before has its answer,
    // carries it out, sends what there is.
    void serve();

    // Sends what it takes now of what it is to be sent.
    void send();

    // Whether there is more of that.
    bool isSending() const { return m_socket.queued() > 0 && !m_socket.isGone(); }
    int socket() const { return m_socket.socket(); }

    // Nothing more is to be done for it, or it does not deserve more.
    bool isFinished() const;

    bool isFollowing() const { return m_follow != nullptr; }

    // Of several clients, the one where this is least is the first to go when others need the
    // room: whoever asks nothing, then whoever does not take the answer, each longest first.
    auto standing() const { return std::tuple(isFollowing(), m_socket.queued() > 0, m_lastSign); }

    // The device ends: waits until the client has its answer, as long as it goes on taking it.
    void end();

private:
    using SteadyClock = std::chrono::steady_clock;

    struct Asked {
        base::Message message;
        SteadyClock::time_point time = SteadyClock::now();
    };

    void answer(const Asked& asked);
    std::string nextFrame(std::string* error);
    void follow();
    void say(ControlMessage kind, std::string_view content = {});

    base::MessageSocket m_socket;
    SteadyClock::time_point m_lastSign = SteadyClock::now();  // of the client being there
    std::optional<Asked> m_asked;  // and has no answer yet; tried again if it came early
    bool m_hasAsked = false;
    std::function<News()> m_follow;  // gives what it is sent from now on; null: it does not follow
    screen::ScreenChanges m_screen;
};

}  // namespace tavsim

#include "simulator/control/control_client.h"

#include <utility>

namespace tavsim {
namespace {

constexpr uint64_t kLongestCommand = 1 << 20;
constexpr size_t kMostQueued = 64 << 20;  // bytes for a client that is slow
constexpr std::chrono::seconds kLongestSilence(5);
constexpr std::chrono::seconds kPatience(2);  // with a command that comes early

}  // namespace

ControlClient::ControlClient(int socket) : m_socket(socket, kLongestCommand) {
}

void ControlClient::serve() {
    // A follower's messages are looked for too, because that shows whether it is still there.
    const bool mayAsk = isFollowing() || (m_socket.queued() == 0 && !m_asked);
    const std::optional<base::Message> message = mayAsk ? m_socket.receiveNow() : std::nullopt;
    if (message && !isFollowing()) {
        m_asked = Asked{*message};
        m_hasAsked = true;
    }
    if (m_asked) {
        answer(*m_asked);
    }
    if (isFollowing()) {
        follow();
    }
    m_screen.forgetWhenUnasked();
    send();
}

void ControlClient::send() {
    if (m_socket.sendNow() > 0) {
        m_lastSign = SteadyClock::now();
    }
}

bool ControlClient::isFinished() const {
    if (m_socket.isGone()) {
        return true;
    }
    const bool isWaiting = m_hasAsked && m_socket.queued() == 0;  // for its user
    if (isFollowing() || m_asked || isWaiting) {
        return false;
    }
    return SteadyClock::now() - m_lastSign > kLongestSilence;
}

void ControlClient::end() {
    if (isFollowing()) {
        follow();
    }
    if (isFollowing() || m_socket.queued() == 0) {
        say(ControlMessage::Ended);
    }
    m_socket.sendQueued(kLongestSilence);
}

void ControlClient::answer(const Asked& asked) {
    const base::Message& message = asked.message;
    const bool isCommand = message.kind == static_cast<uint8_t>(ControlMessage::Command) &&
                           message.content.find('\n') == std::string::npos;
    CommandResult result =
        isCommand ? carryOut(message.content) : CommandResult{"a command is one line", {}};
    std::string frame;
    if (result.isFrame) {
        frame = nextFrame(&result.error);
        result.isEarly = frame.empty();
    }
    if (result.isEarly && SteadyClock::now() - asked.time < kPatience) {
        return;
    }
    m_asked.reset();
    if (!result.error.empty()) {
        say(ControlMessage::Refused, result.error);
        return;
    }
    if (!result.output.empty()) {
        say(ControlMessage::Output, result.output);
    }
    if (!frame.empty()) {
        say(ControlMessage::Frame, frame);
    }
    m_follow = result.follow;
    say(isFollowing() ? ControlMessage::Following : ControlMessage::Done);
}

// Empty, with an error, while there is none.
std::string ControlClient::nextFrame(std::string* error) {
    std::string problem;
    std::optional<std::string> frame = m_screen.next(&problem);
    *error = frame ? "" : "frame: " + problem;
    return std::move(frame).value_or("");
}

// What comes is kept for a client that is behind, but not without end.
void ControlClient::follow() {
    if (m_socket.queued() > kMostQueued) {
        return;
    }
    const News news = m_follow();
    if (news.lost > 0) {
        say(ControlMessage::Lost, std::to_string(news.lost));
    }
    if (!news.lines.empty()) {
        say(ControlMessage::Output, news.lines);
    }
}

void ControlClient::say(ControlMessage kind, std::string_view content) {
    m_socket.queue(static_cast<uint8_t>(kind), content);
}

}  // namespace tavsim

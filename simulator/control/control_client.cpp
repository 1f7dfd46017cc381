#include "simulator/control/control_client.h"

#include <string>

#include "simulator/control/commands.h"
#include "simulator/device/journal.h"

namespace tavsim {
namespace {

constexpr uint64_t kLongestCommand = 1 << 20;
constexpr size_t kMostQueued = 64 << 20;  // bytes of the journal for a client that is slow
constexpr std::chrono::seconds kLongestSilence(5);
constexpr std::chrono::seconds kPatience(2);  // with a command that comes early

}  // namespace

ControlClient::ControlClient(int socket) : m_socket(socket, kLongestCommand) {
}

void ControlClient::serve() {
    // A follower's messages are looked for too, because that shows whether it is still there.
    const bool mayAsk = m_follows || (m_socket.queued() == 0 && !m_asked);
    const std::optional<base::Message> message = mayAsk ? m_socket.receiveNow() : std::nullopt;
    if (message && !m_follows) {
        m_asked = Asked{*message};
    }
    if (m_asked) {
        answer(*m_asked);
    }
    if (m_follows) {
        follow();
    }
    if (m_socket.sendNow() > 0) {
        m_lastSign = SteadyClock::now();
    }
}

bool ControlClient::isFinished() const {
    if (m_socket.isGone()) {
        return true;
    }
    if (m_follows || m_asked) {
        return false;
    }
    return SteadyClock::now() - m_lastSign > kLongestSilence;
}

void ControlClient::end() {
    if (m_follows) {
        follow();
    }
    if (m_follows || m_socket.queued() == 0) {
        say(ControlMessage::Ended);
    }
    m_socket.sendQueued(kLongestSilence);
}

void ControlClient::answer(const Asked& asked) {
    const base::Message& message = asked.message;
    const bool isCommand = message.kind == static_cast<uint8_t>(ControlMessage::Command) &&
                           message.content.find('\n') == std::string::npos;
    const CommandResult result =
        isCommand ? carryOut(message.content) : CommandResult{"a command is one line", {}, false};
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
    say(result.follow ? ControlMessage::Following : ControlMessage::Done);
    m_follows = result.follow;
    m_followed = result.followed;
    m_nextLine = journalLength();
}

// The journal keeps lines for a client that is behind, but not without end.
void ControlClient::follow() {
    if (m_socket.queued() > kMostQueued) {
        return;
    }
    const auto& lines = journalLines();
    const int64_t first = journalLength() - static_cast<int64_t>(lines.size());
    if (m_nextLine < first) {
        say(ControlMessage::Lost, std::to_string(first - m_nextLine));
        m_nextLine = first;
    }
    std::string output;
    for (; m_nextLine < journalLength(); ++m_nextLine) {
        const std::string& line = lines[static_cast<size_t>(m_nextLine - first)];
        output += m_followed.empty() || matches(line, m_followed) ? line + "\n" : "";
    }
    if (!output.empty()) {
        say(ControlMessage::Output, output);
    }
}

void ControlClient::say(ControlMessage kind, std::string_view content) {
    m_socket.queue(static_cast<uint8_t>(kind), content);
}

}  // namespace tavsim

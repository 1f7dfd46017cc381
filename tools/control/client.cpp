#include "tools/control/client.h"

#include <optional>

#include "simulator/control/protocol.h"

using tavsim::ControlMessage;

namespace tools {
namespace {

// More than any answer, as a device keeps less of its journal.
constexpr uint64_t kLongestMessage = 1 << 30;

}  // namespace

Client::Client(int connection) : m_device(connection, kLongestMessage) {
}

Answer Client::ask(const std::string& line, Limit longestWait) {
    m_device.send(static_cast<uint8_t>(ControlMessage::Command), line, longestWait);
    return more(longestWait);
}

Answer Client::more(Limit longestWait) {
    Answer answer;
    while (const std::optional<base::Message> message = m_device.receive(longestWait)) {
        switch (static_cast<ControlMessage>(message->kind)) {
        case ControlMessage::Output:
            answer.text += message->content;
            if (m_follows) {
                answer.end = Answer::End::Following;
                return answer;
            }
            break;
        case ControlMessage::Frame:
            answer.frame = message->content;
            break;
        case ControlMessage::Lost:
            answer.lost = message->content;
            break;
        case ControlMessage::Following:
            m_follows = true;
            answer.end = Answer::End::Following;
            return answer;
        case ControlMessage::Done:
            answer.end = Answer::End::Done;
            return answer;
        case ControlMessage::Refused:
            return {Answer::End::Refused, message->content};
        case ControlMessage::Ended:
            answer.end = Answer::End::Ended;
            return answer;
        default:
            return {Answer::End::Strange, {}};
        }
    }
    answer.end = m_device.isGone() ? Answer::End::Gone : Answer::End::Late;
    return answer;
}

}  // namespace tools

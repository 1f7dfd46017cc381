#include "questions.h"

#include <utility>

#include "simulator/control/protocol.h"

using tavsim::ControlMessage;

namespace panel {
namespace {

constexpr size_t kMostQuestions = 64;
constexpr int kMostTries = 3;
constexpr guint kBetweenAttempts = 100;  // milliseconds, with a device that has no room

constexpr char kNoDevice[] = "no device is running there";

}  // namespace

Questions::Questions(std::string root)
    : m_root(std::move(root)),
      m_device([this](const base::Message& message) { take(message); }, [this] { sendAgain(); }) {
}

void Questions::ask(const std::string& line, OnAnswer onAnswer) {
    if (m_questions.size() == kMostQuestions) {
        onAnswer(false, "too many commands are waiting for the application");
        return;
    }
    m_questions.push_back({line, std::move(onAnswer), {}});
    if (m_retry.isRunning()) {
        return;
    }
    if (m_device.isOpen()) {
        send(m_questions.back());
    } else {
        sendAgain();
    }
}

void Questions::take(const base::Message& message) {
    if (m_questions.empty()) {
        return;
    }
    switch (static_cast<ControlMessage>(message.kind)) {
    case ControlMessage::Output:
        m_questions.front().output += message.content;
        break;
    case ControlMessage::Done:
        answer(true, std::string(m_questions.front().output));
        break;
    case ControlMessage::Refused:
        answer(false, message.content);
        break;
    case ControlMessage::Following:  // it takes no further line
        m_device.close();
        answer(false, "the panel follows the device by itself");
        sendAgain();
        break;
    case ControlMessage::Ended:
        answerAll("the device has ended before it answered");
        break;
    default:
        break;
    }
}

void Questions::answer(bool isDone, const std::string& text) {
    const OnAnswer onAnswer = std::move(m_questions.front().onAnswer);
    m_questions.pop_front();
    onAnswer(isDone, text);
}

void Questions::answerAll(const std::string& reason) {
    while (!m_questions.empty()) {
        answer(false, reason);
    }
}

// A device that closes a connection has carried out no line that it has not answered.
void Questions::sendAgain() {
    if (m_questions.empty()) {
        return;
    }
    switch (m_device.open(m_root)) {
    case DeviceConnection::Opened::None:
        answerAll(kNoDevice);
        return;
    case DeviceConnection::Opened::Crowded:
        m_retry.after(kBetweenAttempts, [this] { sendAgain(); });
        return;
    case DeviceConnection::Opened::Yes:
        break;
    }
    if (++m_questions.front().tries > kMostTries) {
        answer(false, "the device takes this command, but gives no answer");
    }
    for (Question& question : m_questions) {
        send(question);
    }
}

void Questions::send(Question& question) {
    question.output.clear();
    m_device.send(question.line);
}

}  // namespace panel

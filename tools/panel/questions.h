// What a browser asks of a device.
#pragma once

#include <deque>
#include <functional>
#include <string>

#include "device_connection.h"

namespace panel {

// Gives command lines to a device, one after the other, and hands the answers back.
class Questions {
public:
    // With the output, or with the reason of a refusal.
    using OnAnswer = std::function<void(bool isDone, const std::string& text)>;

    explicit Questions(std::string root);

    void ask(const std::string& line, OnAnswer onAnswer);

private:
    struct Question {
        std::string line;
        OnAnswer onAnswer;
        std::string output;
        int tries = 0;
    };

    void take(const base::Message& message);
    void answer(bool isDone, const std::string& text);
    void answerAll(const std::string& reason);
    void sendAgain();
    void send(Question& question);

    std::string m_root;
    DeviceConnection m_device;
    std::deque<Question> m_questions;  // that were sent and have no answer yet
    web::Source m_retry;
};

}  // namespace panel

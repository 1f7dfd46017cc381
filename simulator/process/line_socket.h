// Lines of text over a pair of sockets.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/descriptor.h"

namespace tavsim {

// One end of a connection with a program, which can close its input and its output independently.
// The program is not trusted: input is received in small steps, and the caller checks the length of
// incomplete lines.
class LineSocket {
public:
    LineSocket(base::Descriptor toProgram, base::Descriptor fromProgram)
        : m_toProgram(std::move(toProgram)), m_fromProgram(std::move(fromProgram)) {}

    // True, and true from then on, when the other end has closed one of the two sockets or has
    // ended, and everything was received, or when the application has closed one of our
    // descriptors.
    bool isGone() const { return m_isGone; }

    // False when the application has closed one of our descriptors.
    bool isOurs() const { return m_toProgram.isOurs() && m_fromProgram.isOurs(); }

    // Sends as much as the socket accepts, without waiting.
    void queue(std::string_view line);
    void sendNow();
    size_t queued() const { return m_outgoing.size(); }

    // Receives a part of the pending input. A program that had ended sends nothing more.
    void receiveNow(bool hadEnded);

    // The next line of what was received.
    std::optional<std::string> takeLine();
    size_t receivedWithoutEnd() const { return m_incoming.size() - m_taken; }

    // Waits until something can be received or sent.
    void wait(std::chrono::milliseconds longest) const;

    // Closes the sending direction.
    void endSending();

private:
    base::Descriptor m_toProgram;
    base::Descriptor m_fromProgram;
    bool m_isUnread = false;  // the other end does not read any more
    bool m_isGone = false;
    std::string m_incoming;
    size_t m_taken = 0;  // bytes of it
    std::string m_outgoing;
};

}  // namespace tavsim

// Lines of text over a pair of sockets.
#ifndef TAV_SIMULATOR_PROCESS_LINE_SOCKET_H
#define TAV_SIMULATOR_PROCESS_LINE_SOCKET_H

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/descriptor.h"

namespace tavsim {

// One end of a connection with a program, which can close its output and keep its input, and the
// other way round. Nothing is believed of what comes: a step at a time is taken, and whoever takes
// the lines looks at what is left over.
class LineSocket {
public:
    LineSocket(base::Descriptor toProgram, base::Descriptor fromProgram)
        : m_toProgram(std::move(toProgram)), m_fromProgram(std::move(fromProgram)) {}

    // True for good when the other end has closed one of the two or has ended and all that it said
    // has been received, or the process has lost one.
    bool isGone() const { return m_isGone; }

    // False when the process has lost one of the two.
    bool isOurs() const { return m_toProgram.isOurs() && m_fromProgram.isOurs(); }

    // Sends without waiting what the other end takes.
    void queue(std::string_view line);
    void sendNow();
    size_t queued() const { return m_outgoing.size(); }

    // Receives a part of what has come. Nothing more is to come from a program that had ended.
    void receiveNow(bool hadEnded);

    // The next line of what was received.
    std::optional<std::string> takeLine();
    size_t receivedWithoutEnd() const { return m_incoming.size() - m_taken; }

    // Waits until something can be received or sent.
    void wait(std::chrono::milliseconds longest) const;

    // Tells the other end that nothing more will come.
    void endSending();

private:
    base::Descriptor m_toProgram;
    base::Descriptor m_fromProgram;
    bool m_isUnread = false;  // nobody is there to read what is sent
    bool m_isGone = false;
    std::string m_incoming;
    size_t m_taken = 0;  // bytes of it
    std::string m_outgoing;
};

}  // namespace tavsim

#endif

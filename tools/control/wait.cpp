#include "tools/control/wait.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string>

#include "base/message_socket.h"
#include "base/suggestion.h"
#include "simulator/control/pattern.h"
#include "simulator/control/protocol.h"
#include "simulator/control/words.h"
#include "simulator/device/claim.h"
#include "tools/control/reach.h"

using std::chrono::milliseconds;
using tavsim::ControlMessage;

namespace tools {
namespace {

constexpr int kHasNotHappened = 1;
constexpr int kNotReached = 2;
constexpr milliseconds kBetweenLooks(20);

constexpr char kReady[] = "ready";
constexpr char kEnded[] = "ended";

int complain(const std::string& text, int status) {
    std::fprintf(stderr, "tavsim: ctl: wait: %s\n", text.c_str());
    return status;
}

// For what is no entry of the journal.
std::optional<tavsim::Awaited> readLimit(tavsim::Words words, std::string* error) {
    tavsim::Awaited awaited;
    if (words.isEmpty()) {
        return awaited;
    }
    const bool isWithin = words.next() == "within";
    awaited.within = tavsim::readTime(words.next());
    if (!isWithin || !awaited.within || !words.isEmpty()) {
        *error = std::string("only `within TIME` can follow; ") + tavsim::kTimeUsage;
        return std::nullopt;
    }
    return awaited;
}

// The first line in the text that matches; empty when there is none.
std::string firstMatch(std::string_view lines, const tavsim::Pattern& pattern) {
    while (!lines.empty()) {
        const std::string_view line = lines.substr(0, lines.find('\n'));
        if (tavsim::matches(line, pattern)) {
            return std::string(line);
        }
        lines.remove_prefix(std::min(line.size() + 1, lines.size()));
    }
    return {};
}

// What the message says about the wait; nothing while that goes on. Any answer will do for an empty
// pattern.
std::optional<int> take(const base::Message& message, const tavsim::Pattern& pattern) {
    std::string line;
    switch (static_cast<ControlMessage>(message.kind)) {
    case ControlMessage::Refused:
        return complain(message.content, kNotReached);
    case ControlMessage::Ended:
        return complain("the application ended before that", kHasNotHappened);
    case ControlMessage::Lost:
        std::fprintf(stderr, "tavsim: ctl: wait: %s lines were not taken in time and are lost\n",
                     message.content.c_str());
        return std::nullopt;
    case ControlMessage::Output:
        line = pattern.empty() ? std::string() : firstMatch(message.content, pattern);
        break;
    case ControlMessage::Following:
    case ControlMessage::Done:
        break;
    default:
        return complain("what answers there is no device", kNotReached);
    }
    if (!line.empty()) {
        std::puts(line.c_str());
    }
    return line.empty() && !pattern.empty() ? std::nullopt : std::optional(0);
}

class Wait {
public:
    explicit Wait(milliseconds limit) : m_limit(limit), m_end(Clock::now() + limit) {}

    // An empty pattern stands for the application being ready.
    int forAnswer(const std::string& root, const tavsim::Pattern& pattern) const;
    int forEnd(const std::string& root) const;

private:
    using Clock = std::chrono::steady_clock;

    milliseconds left() const {
        const auto time = std::chrono::duration_cast<milliseconds>(m_end - Clock::now());
        return std::max(time, milliseconds(0));
    }

    int complainOfTime(const std::string& what) const {
        const std::string limit = std::to_string(m_limit.count());
        return complain(what + " within " + limit + " ms", kHasNotHappened);
    }

    milliseconds m_limit;
    Clock::time_point m_end;
};

int Wait::forAnswer(const std::string& root, const tavsim::Pattern& pattern) const {
    const ReachedDevice reached = reachDevice(root, left(), left());
    if (reached.connection < 0) {
        return complain(reached.problem, kNotReached);
    }
    base::MessageSocket device(reached.connection, kLongestMessage);
    device.send(static_cast<uint8_t>(ControlMessage::Command),
                pattern.empty() ? "state" : "journal --follow", left());
    while (left() > milliseconds(0)) {
        const std::optional<base::Message> message = device.receive(left());
        if (!message) {
            break;
        }
        if (const std::optional<int> status = take(*message, pattern)) {
            return *status;
        }
    }
    if (device.isGone()) {
        return complain("the application is gone before that", kHasNotHappened);
    }
    return complainOfTime(pattern.empty() ? "the application has not handled SDL's events"
                                          : "no such entry");
}

int Wait::forEnd(const std::string& root) const {
    // That it runs is enough.
    const ReachedDevice reached = reachDevice(root, std::min(left(), kStarting), milliseconds(0));
    if (reached.connection < 0 && !reached.isCrowded) {
        return reached.isNone ? 0 : complain(reached.problem, kNotReached);
    }
    if (reached.connection >= 0) {
        close(reached.connection);
    }
    while (tavsim::isClaimed(reached.root, tavsim::kRunClaim) ||
           tavsim::isClaimed(reached.root, tavsim::kDeviceClaim)) {
        if (left() == milliseconds(0)) {
            return complainOfTime("the program has not ended");
        }
        poll(nullptr, 0, kBetweenLooks.count());
    }
    return 0;
}

}  // namespace

int waitFor(const ControlRequest& request, std::string_view line) {
    tavsim::Words words(line);
    const std::string first(words.next());
    const bool isEntry = first != kReady && first != kEnded;
    std::string error;
    const std::optional<tavsim::Awaited> awaited =
        isEntry ? tavsim::readAwaited(line, &error) : readLimit(words, &error);
    if (!awaited) {
        return complain(error + (isEntry ? base::suggestion(first, {kReady, kEnded}) : ""),
                        kNotReached);
    }
    const Wait wait(awaited->within ? milliseconds(*awaited->within)
                                    : inMilliseconds(request.timeout));
    return first == kEnded ? wait.forEnd(request.root)
                           : wait.forAnswer(request.root, awaited->pattern);
}

}  // namespace tools

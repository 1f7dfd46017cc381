// Waits for an event on a device.
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string>

#include "base/suggestion.h"
#include "simulator/control/pattern.h"
#include "simulator/control/words.h"
#include "simulator/device/claim.h"
#include "tools/control/client.h"
#include "tools/control/ctl.h"
#include "tools/control/reach.h"
#include "tools/process/exit_status.h"

using std::chrono::milliseconds;

namespace tools {
namespace {

constexpr int kHasNotHappened = 1;
constexpr milliseconds kBetweenLooks(20);

constexpr char kReady[] = "ready";
constexpr char kEnded[] = "ended";

int tell(const std::string& text, int status) {
    return complain("ctl: wait: " + text, status);
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

class Wait {
public:
    explicit Wait(milliseconds limit) : m_limit(limit), m_end(Clock::now() + limit) {}

    // An empty pattern stands for the application being ready.
    int forAnswer(const std::string& root, const tavsim::Pattern& pattern) const {
        const ReachedDevice reached = reachDevice(root, left(), left());
        if (reached.connection < 0) {
            return tell(reached.problem, kNotReached);
        }
        Client device(reached.connection);
        const bool isReadiness = pattern.empty();
        Answer answer = device.ask(isReadiness ? "state" : "journal --follow", left());
        while (answer.end == Answer::End::Following) {
            if (!answer.lost.empty()) {
                tell(answer.lost + " lines were not taken in time and are lost", 0);
            }
            if (const std::string line = firstMatch(answer.text, pattern); !line.empty()) {
                std::puts(line.c_str());
                return 0;
            }
            answer = left() > milliseconds(0) ? device.more(left()) : Answer();
        }
        switch (answer.end) {
        case Answer::End::Refused:
            return tell(answer.text, kNotReached);
        case Answer::End::Ended:
            return tell("the application ended before that", kHasNotHappened);
        case Answer::End::Gone:
            return tell("the application is gone before that", kHasNotHappened);
        case Answer::End::Late:
            return complainOfTime(isReadiness ? "the application has not handled SDL's events"
                                              : "no such entry");
        case Answer::End::Strange:
            return tell("what answers there is no device", kNotReached);
        default:
            return 0;
        }
    }

    int forEnd(const std::string& root) const {
        // That it runs is enough.
        const ReachedDevice reached =
            reachDevice(root, std::min(left(), kStarting), milliseconds(0));
        if (reached.connection < 0 && !reached.isCrowded) {
            return reached.isNone ? 0 : tell(reached.problem, kNotReached);
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

private:
    using Clock = std::chrono::steady_clock;

    milliseconds left() const {
        const auto time = std::chrono::duration_cast<milliseconds>(m_end - Clock::now());
        return std::max(time, milliseconds(0));
    }

    int complainOfTime(const std::string& what) const {
        const std::string limit = std::to_string(m_limit.count());
        return tell(what + " within " + limit + " ms", kHasNotHappened);
    }

    milliseconds m_limit;
    Clock::time_point m_end;
};

}  // namespace

int waitFor(const ControlRequest& request, std::string_view line) {
    tavsim::Words words(line);
    const std::string first(words.next());
    const bool isEntry = first != kReady && first != kEnded;
    std::string error;
    const std::optional<tavsim::Awaited> awaited =
        isEntry ? tavsim::readAwaited(line, &error) : readLimit(words, &error);
    if (!awaited) {
        return tell(error + (isEntry ? base::suggestion(first, {kReady, kEnded}) : ""),
                    kNotReached);
    }
    const Wait wait(awaited->within ? milliseconds(*awaited->within)
                                    : inMilliseconds(request.timeout));
    return first == kEnded ? wait.forEnd(request.root)
                           : wait.forAnswer(request.root, awaited->pattern);
}

}  // namespace tools

// Waits for an event on a device.
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string>

#include "base/suggestion.h"
#include "simulator/device/claim.h"
#include "simulator/language/explanation.h"
#include "simulator/language/pattern.h"
#include "simulator/language/words.h"
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

// Takes the text's lines in, one after the other.
class Search {
public:
    explicit Search(const tavsim::Awaited& awaited) : m_awaited(awaited) {}

    // The line that fulfils what is awaited; empty when there is none.
    std::string find(std::string_view text);

    // About what came closest so far, to end a message with.
    const std::string& closest() const { return m_closest; }

private:
    const tavsim::Awaited& m_awaited;
    int m_count = 0;
    std::string m_closest;
};

std::string Search::find(std::string_view text) {
    tavsim::EntryLines lines;
    while (!text.empty()) {
        lines.push_back(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(lines.back().size() + 1, text.size()));
        if (!tavsim::matches(lines.back(), m_awaited.pattern)) {
            continue;
        }
        ++m_count;
        if (!m_awaited.count || tavsim::meets(std::to_string(m_count), *m_awaited.count)) {
            return std::string(lines.back());
        }
    }
    const std::string closest = tavsim::closestTo(m_awaited.pattern, lines);
    m_closest = closest.empty() ? m_closest : "; " + closest;
    return {};
}

class Wait {
public:
    explicit Wait(milliseconds limit) : m_limit(limit), m_end(Clock::now() + limit) {}

    // An empty pattern stands for the application being ready.
    int forAnswer(const std::string& root, const tavsim::Awaited& awaited) const {
        const ReachedDevice reached = reachDevice(root, left(), left());
        if (reached.connection < 0) {
            return tell(reached.problem, kNotReached);
        }
        Client device(reached.connection);
        Search search(awaited);
        const bool isReadiness = awaited.pattern.empty();
        Answer answer = device.ask(isReadiness ? "state" : "journal --follow", left());
        while (answer.end == Answer::End::Following) {
            if (!answer.lost.empty()) {
                tell(answer.lost + " lines were not taken in time and are lost", 0);
            }
            if (const std::string line = search.find(answer.text); !line.empty()) {
                std::puts(line.c_str());
                return 0;
            }
            answer = left() > milliseconds(0) ? device.more(left()) : Answer();
        }
        switch (answer.end) {
        case Answer::End::Refused:
            return tell(answer.text, kNotReached);
        case Answer::End::Ended:
            return tell("the application ended before that" + search.closest(), kHasNotHappened);
        case Answer::End::Gone:
            return tell("the application is gone before that", kHasNotHappened);
        case Answer::End::Late:
            return complainOfTime(
                isReadiness ? "the application has not handled SDL's events" : "no such entry",
                search.closest());
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

    int complainOfTime(const std::string& what, const std::string& instead = {}) const {
        const std::string limit = std::to_string(m_limit.count());
        return tell(what + " within " + limit + " ms" + instead, kHasNotHappened);
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
    return first == kEnded ? wait.forEnd(request.root) : wait.forAnswer(request.root, *awaited);
}

}  // namespace tools

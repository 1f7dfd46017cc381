#include "simulator/scenario/check.h"

#include <algorithm>
#include <limits>

#include "base/json/writer.h"
#include "base/suggestion.h"
#include "simulator/bus/services.h"
#include "simulator/language/words.h"

namespace tavsim {
namespace {

constexpr Milliseconds kEndOfClock = std::numeric_limits<std::uint32_t>::max();
constexpr std::string_view kItem = "item ";

// What the steps so far say about the time of the next.
struct Progress {
    Milliseconds earliest = 0;  // when the step before can be done
    const Step* end = nullptr;  // the step that awaits the application's end
};

std::string whyNotAt(const AtTime& turn, const Progress& progress) {
    return turn.time < progress.earliest
               ? "this time has passed: the step before is done at " +
                     std::to_string(progress.earliest) + " ms at the earliest"
               : "";
}

std::string whyNotAfterEnd(const Step& step) {
    const bool waits =
        std::holds_alternative<AtTime>(step.turn) ||
        (std::holds_alternative<AfterTime>(step.turn) && std::get<AfterTime>(step.turn).time > 0);
    const bool needsApplication = std::holds_alternative<CommandLine>(step.action) ||
                                  std::holds_alternative<ExpectNoEntry>(step.action);
    return waits || needsApplication ? "it follows the application's end" : "";
}

std::string whyNot(const Step& step, Progress* progress) {
    if (progress->end != nullptr) {
        return whyNotAfterEnd(step);
    }
    if (const auto* at = std::get_if<AtTime>(&step.turn)) {
        if (std::string problem = whyNotAt(*at, *progress); !problem.empty()) {
            return problem;
        }
        progress->earliest = at->time;
    } else if (const auto* wait = std::get_if<AfterTime>(&step.turn)) {
        progress->earliest += wait->time;
    }
    if (const auto* never = std::get_if<ExpectNoEntry>(&step.action)) {
        progress->earliest += never->time.value_or(0);
    }
    if (std::holds_alternative<ExpectEnd>(step.action)) {
        progress->end = &step;
    }
    return progress->earliest > kEndOfClock ? "it comes after 49 days, when the clock ends" : "";
}

class Known {
public:
    Known(const Scenario& scenario, const Profile& profile);

    // Why nobody knows it; empty for one that is known.
    std::string whyUnknown(std::string_view uri) const;
    std::string whyUnknown(const Step& step) const;
    std::string whyUnknown(const Pattern& pattern) const;

private:
    std::vector<std::string> m_uris = deviceServiceUris();
    std::vector<std::string> m_items;
};

bool isLike(const std::vector<std::string>& names, std::string_view glob) {
    return std::ranges::any_of(names, [glob](const auto& name) { return matchesGlob(name, glob); });
}

Known::Known(const Scenario& scenario, const Profile& profile) {
    for (const auto& [uri, service] : profile.services) {
        m_uris.push_back(uri);
    }
    for (const Step& step : scenario.steps) {
        if (const auto* command = std::get_if<CommandLine>(&step.action)) {
            Words words(command->line);
            if (words.next() == "answer") {
                m_uris.emplace_back(words.next());
            }
        }
    }
    for (const Item& item : profile.items) {
        m_items.push_back(std::string(kItem) + item.id);
    }
}

std::string Known::whyUnknown(std::string_view uri) const {
    return isLike(m_uris, uri) ? ""
                               : "no service " + base::quoted(uri) + base::suggestion(uri, m_uris);
}

std::string Known::whyUnknown(const Pattern& pattern) const {
    for (const MemberPattern& one : pattern) {
        if (one.comparison != Comparison::Like) {
            continue;
        }
        if (std::string problem = one.member == "uri" ? whyUnknown(one.glob) : "";
            !problem.empty()) {
            return problem;
        }
        if (one.member == "what" && one.glob.starts_with(kItem) && !isLike(m_items, one.glob)) {
            return "no " + base::quoted(one.glob) + base::suggestion(one.glob, m_items);
        }
    }
    return {};
}

std::string Known::whyUnknown(const Step& step) const {
    std::string problem;
    if (const auto* when = std::get_if<WhenEntry>(&step.turn)) {
        problem = whyUnknown(when->pattern);
    }
    if (const auto* command = std::get_if<CommandLine>(&step.action); problem.empty() && command) {
        Words words(command->line);
        words.next();
        const std::string uri(words.next());
        return isUri(uri) ? whyUnknown(uri) : "";
    }
    for (const Pattern& pattern : patternsOf(step.action)) {
        problem = problem.empty() ? whyUnknown(pattern) : problem;
    }
    return problem;
}

}  // namespace

std::string whyUnreachable(const Scenario& scenario) {
    Progress progress;
    for (const Step& step : scenario.steps) {
        if (const std::string problem = whyNot(step, &progress); !problem.empty()) {
            return step.place + ": " + problem;
        }
    }
    return {};
}

std::vector<std::string> warningsOf(const Scenario& scenario, const Profile& profile) {
    const Known known(scenario, profile);
    std::vector<std::string> warnings;
    for (const Step& step : scenario.steps) {
        if (const std::string problem = known.whyUnknown(step); !problem.empty()) {
            warnings.push_back(step.place + ": warning: " + problem);
        }
    }
    return warnings;
}

}  // namespace tavsim

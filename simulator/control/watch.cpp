#include "simulator/control/watch.h"

#include <chrono>
#include <utility>
#include <vector>

#include "base/json/writer.h"
#include "simulator/control/control.h"
#include "simulator/control/device_state.h"
#include "simulator/device/journal.h"

namespace tavsim {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBetweenStates(100);

// Lines of JSON.
std::vector<std::string>& told() {
    static auto& instance = *new std::vector<std::string>;
    return instance;
}

void tell(std::string line) {
    if (isControlled()) {  // otherwise nobody can watch
        told().push_back(std::move(line));
    }
}

class Watch {
public:
    News operator()() {
        News news;
        news.lost = m_journal.read(
            [&news](const std::string& entry) { news.lines += R"({"journal":)" + entry + "}\n"; });
        for (; m_nextTold < told().size(); ++m_nextTold) {
            news.lines += told()[m_nextTold] + "\n";
        }
        // When the program ends, there are no new parsers for JSON any more, which the state needs.
        if (isControlled() && SteadyClock::now() - m_stateAt >= kBetweenStates) {
            m_stateAt = SteadyClock::now();
            news.lines += changedState();
        }
        return news;
    }

private:
    // The members always come in the same order.
    std::string changedState() {
        const auto former = std::exchange(m_state, stateMembers());
        base::JsonWriter changed;
        changed.beginObject();
        for (size_t i = 0; i < m_state.size(); ++i) {
            if (former.empty() || m_state[i].second != former[i].second) {
                changed.key(m_state[i].first).raw(m_state[i].second);
            }
        }
        const std::string members = changed.endObject().take();
        return members == "{}" ? "" : R"({"state":)" + members + "}\n";
    }

    JournalReader m_journal;
    size_t m_nextTold = 0;
    std::vector<std::pair<const char*, std::string>> m_state;  // as it was sent
    SteadyClock::time_point m_stateAt;
};

}  // namespace

std::function<News()> watchDevice() {
    return Watch();
}

void tellRecorded(const std::string& line) {
    tell(base::jsonObject("recorded", line));
}

void tellStep(int line, const std::string& text, const char* state, const std::string& reason) {
    base::JsonWriter json;
    json.beginObject().key("step").beginObject();
    json.members("line", line, "text", text, "state", state);
    if (!reason.empty()) {
        json.member("reason", reason);
    }
    tell(json.endObject().endObject().take());
}

void forgetWhatWasTold() {
    told().clear();
}

}  // namespace tavsim

#include "simulator/page/script_page.h"

#include <time.h>

#include <algorithm>
#include <utility>

#include "simulator/page/page_process.h"
#include "simulator/time/queue.h"

namespace tavsim {
namespace {

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;

// The processor time that a script may take before it returns.
constexpr seconds kLimit(2);

constexpr seconds kLongestEnd(1);

constexpr char kTooLong[] = "the script ran for more than 2 seconds without a pause";
constexpr char kClosed[] = "the application closed its connection to the page";

// Between two checks of the processor time of a script that sends nothing.
constexpr milliseconds kShortestWait(10);

bridge::MessageKind kindOf(const base::Message& message) {
    return static_cast<bridge::MessageKind>(message.kind);
}

}  // namespace

bool ScriptPage::start(const std::string& source) {
    const int socket = m_process.start(runPageProcess);
    if (socket < 0) {
        return false;
    }
    m_socket.emplace(socket);
    helper::ItemWriter items;
    items.writeText(m_name);
    items.writeText(source);
    post(now(), bridge::MessageKind::RunScript, items.message());
    return true;
}

void ScriptPage::end() {
    m_waiting.clear();
    m_socket.reset();
    m_process.end();
}

bool ScriptPage::isAlive() const {
    return m_socket && m_process.isOurs();
}

bool ScriptPage::callFunction(const std::string& name, const std::vector<helper::Text>& arguments) {
    post(now(), bridge::MessageKind::CallFunction, bridge::callItems(name, arguments));
    return true;
}

void ScriptPage::post(Milliseconds due, bridge::MessageKind kind, std::string items) {
    queue({due, {static_cast<uint8_t>(kind), std::move(items)}});
}

void ScriptPage::queue(Event event) {
    const Milliseconds due = event.due;
    schedule(due, "page", [self = weak_from_this(), event = std::move(event)]() mutable {
        if (const std::shared_ptr<ScriptPage> page = self.lock()) {
            page->deliver(std::move(event));
        }
    });
}

// A script runs to completion. So events that fall due while one of the application's methods pumps
// wait until the script has ended, and then for the next pump. Otherwise a page and an application
// that cause each other's next event could keep the pump running for ever.
void ScriptPage::deliver(Event event) {
    if (!isAlive()) {
        return;
    }
    if (m_isBusy) {
        m_waiting.push_back(std::move(event));
        return;
    }
    m_isBusy = true;
    run(event.message);
    endTurn();
}

void ScriptPage::endTurn() {
    m_isBusy = false;
    for (Event& waiting : std::exchange(m_waiting, {})) {
        queue(std::move(waiting));
    }
}

std::optional<bridge::MethodReply> ScriptPage::call(const std::string& method,
                                                    const std::vector<std::string>& arguments) {
    if (m_isBusy) {
        return std::nullopt;
    }
    m_isBusy = true;
    HDataWriter unused;
    const bridge::MethodReply reply =
        callMethod(bridge::callItems(method, {arguments.begin(), arguments.end()}), &unused);
    endTurn();
    return reply;
}

void ScriptPage::run(const base::Message& event) {
    const nanoseconds limit = processorTime() + kLimit;
    m_socket->send(event.kind, event.content);
    while (isAlive()) {
        const std::optional<base::Message> message = nextMessage(limit);
        if (!message || kindOf(*message) == bridge::MessageKind::Idle) {
            return;
        }
        handle(*message);
    }
}

void ScriptPage::handle(const base::Message& message) {
    helper::ItemReader items(message.content);
    switch (kindOf(message)) {
    case bridge::MessageKind::MethodList: {
        const int question = items.readInt();
        HDataWriter writer;
        m_methods.list(&writer);
        answer(question, writer);
        break;
    }
    case bridge::MessageKind::MethodCall: {
        const int question = items.readInt();
        HDataWriter writer;
        callMethod(items.rest(), &writer);
        answer(question, writer);
        break;
    }
    case bridge::MessageKind::ConsoleLine: {
        const std::string level = items.readString();
        tellConsole(level, items.readString());
        break;
    }
    case bridge::MessageKind::SetTimer: {
        const int timer = items.readInt();
        setTimer(timer, items.readInt());
        break;
    }
    case bridge::MessageKind::Problem:
        tellProblem(items.readString());
        break;
    case bridge::MessageKind::Broken:
        endWith(items.readString());
        break;
    default:
        break;
    }
}

// The application's function may have ended the page.
void ScriptPage::answer(int question, const HDataWriter& writer) {
    if (isAlive()) {
        helper::ItemWriter items;
        items.writeInt(question);
        m_socket->send(static_cast<uint8_t>(bridge::MessageKind::Answer),
                       items.message() + std::string(bridge::itemsOf(writer)));
    }
}

void ScriptPage::setTimer(int timer, int delay) {
    helper::ItemWriter items;
    items.writeInt(timer);
    post(after(now(), delay), bridge::MessageKind::TimerDue, items.message());
}

std::optional<base::Message> ScriptPage::nextMessage(nanoseconds limit) {
    while (true) {
        const nanoseconds left = limit - processorTime();
        if (left <= nanoseconds(0)) {
            endWith(kTooLong);
            return std::nullopt;
        }
        const auto wait = std::max(duration_cast<milliseconds>(left), kShortestWait);
        std::optional<base::Message> message = m_socket->receive(wait);
        if (message) {
            return message;
        }
        if (m_socket->isGone()) {
            endWith(m_socket->isOurs() ? "the page's process ended" + m_process.end(kLongestEnd)
                                       : kClosed);
            return std::nullopt;
        }
    }
}

nanoseconds ScriptPage::processorTime() const {
    clockid_t clock;
    timespec time = {};
    if (clock_getcpuclockid(m_process.number(), &clock) != 0 || clock_gettime(clock, &time) != 0) {
        return nanoseconds(0);  // it has ended, and the next read reports that
    }
    return seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

}  // namespace tavsim

// A page that is a script: its process, and its pending events.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/message_socket.h"
#include "bridge/calls.h"
#include "bridge/message.h"
#include "helper/items.h"
#include "simulator/page/page.h"
#include "simulator/process/child_process.h"
#include "simulator/time/clock.h"

namespace tavsim {

// When the script does not return, or its process dies, the page ends. Owned by a shared pointer.
class ScriptPage : public Page, public std::enable_shared_from_this<ScriptPage> {
public:
    using Page::Page;
    ~ScriptPage() override { ScriptPage::end(); }

    // False, with errno, when the process cannot be started. The script starts with the pump.
    bool start(const std::string& source);
    void end() override;
    bool isAlive() const override;

    std::optional<bridge::MethodReply> call(const std::string& method,
                                            const std::vector<std::string>& arguments) override;
    bool callFunction(const std::string& name, const std::vector<helper::Text>& arguments) override;

private:
    // Queues an event for the pump. If the page ends before it is due, nothing happens.
    void post(Milliseconds due, bridge::MessageKind kind, std::string items);

    struct Event {
        Milliseconds due;
        base::Message message;
    };

    void queue(Event event);
    void deliver(Event event);
    void run(const base::Message& event);
    void handle(const base::Message& message);
    void answer(int question, const HDataWriter& writer);
    void endTurn();
    void setTimer(int timer, int delay);

    // Waits for the script, up to its limit of processor time. When that is over, ends the page and
    // returns nothing.
    std::optional<base::Message> nextMessage(std::chrono::nanoseconds limit);

    std::chrono::nanoseconds processorTime() const;

    std::optional<base::MessageSocket> m_socket;
    ChildProcess m_process;
    bool m_isBusy = false;
    std::vector<Event> m_waiting;
};

}  // namespace tavsim

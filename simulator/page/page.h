// The running page: the process of its script, and its pending events.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/message_socket.h"
#include "bridge/message.h"
#include "bridge/methods.h"
#include "helper/items.h"
#include "simulator/process/child_process.h"
#include "simulator/time/clock.h"

namespace tavsim {

// When a script does not return, or its process dies, the page ends with one line on standard
// error. Owned by a shared pointer.
class Page : public std::enable_shared_from_this<Page> {
public:
    explicit Page(std::string name) : m_name(std::move(name)) {}
    ~Page() { end(); }
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    // False, with errno, when the process cannot be started.
    bool start();
    void end();

    // False in a fork of the application too, which must leave the page alone.
    bool isAlive() const;

    void setMethods(const bridge::NativeMethods& methods) { m_methods = methods; }
    std::vector<std::string> methods() const { return bridge::namesOf(m_methods); }

    // Calls a native method as the script does. Nothing happens while the script runs.
    std::optional<bridge::MethodReply> call(const std::string& method,
                                            const std::vector<std::string>& arguments);

    // Queues an event for the pump. If the page ends before it is due, nothing happens.
    void post(Milliseconds due, bridge::MessageKind kind, const helper::ItemWriter& items);

private:
    struct Event {
        Milliseconds due;
        base::Message message;
    };

    void queue(Event event);
    void deliver(Event event);
    void serve(const base::Message& event);
    void handle(const base::Message& message);
    void answer(int question, const HDataWriter& writer);
    bridge::MethodReply callMethod(std::string_view call, HDataWriter* answer);
    void tellProblem(const std::string& problem);
    void endTurn();
    void setTimer(int timer, int delay);

    // Waits for the script, up to its limit of processor time. When that is over, ends the page and
    // returns nothing.
    std::optional<base::Message> nextMessage(std::chrono::nanoseconds limit);

    std::chrono::nanoseconds processorTime() const;
    void endWith(const std::string& reason);

    const std::string m_name;
    bridge::NativeMethods m_methods;
    std::optional<base::MessageSocket> m_socket;
    ChildProcess m_process;
    bool m_isBusy = false;
    std::vector<Event> m_waiting;
};

}  // namespace tavsim

// The running page: a script or a document.
#pragma once

#include <poll.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bridge/calls.h"
#include "helper/items.h"

namespace tavsim {

// When it ends before the device, standard error says why in one line.
class Page {
public:
    explicit Page(std::string name) : m_name(std::move(name)) {}
    virtual ~Page() = default;
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    virtual void end() = 0;

    // False in a fork of the application too, which must leave the page alone.
    virtual bool isAlive() const = 0;

    virtual void setMethods(const bridge::NativeMethods& methods) { m_methods = methods; }
    std::vector<std::string> methods() const { return bridge::namesOf(m_methods); }

    // Calls a native method as the page does. Nothing happens while a script runs.
    virtual std::optional<bridge::MethodReply> call(const std::string& method,
                                                    const std::vector<std::string>& arguments) = 0;

    // Calls a function of the page, later. False when the page does not take the call.
    virtual bool callFunction(const std::string& name,
                              const std::vector<helper::Text>& arguments) = 0;

    // For a page that speaks unprompted: answers it; only sends; the socket and what to poll it
    // for.
    virtual void serve() {}
    virtual void send() {}
    virtual pollfd toPoll() const { return {-1, 0, 0}; }

protected:
    // The call is a method's name and arguments, as items.
    bridge::MethodReply callMethod(std::string_view call, HDataWriter* answer);

    // What the page does, in the journal and on the standard streams.
    static void tellCall(std::string_view call, const bridge::MethodReply& reply);
    static void tellConsole(const std::string& level, const std::string& text);
    static void tellProblem(const std::string& problem);
    void endWith(const std::string& reason);

    const std::string m_name;
    bridge::NativeMethods m_methods;
};

}  // namespace tavsim

// The application's end of the connection with the page in the user's browser.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/message_socket.h"
#include "bridge/calls.h"
#include "bridge/message.h"
#include "bridge/page_input.h"
#include "helper/items.h"
#include "screen/changes.h"

namespace bridge {

// It never waits. The other end is not trusted: when it breaks the protocol, it is gone. A fork of
// the application does nothing with it.
class BrowserPage : public std::enable_shared_from_this<BrowserPage> {
public:
    // What a device does with what it hears. Each may end the page.
    struct Events {
        // A native method was called: the call as for callMethod(), and what came of it.
        std::function<void(std::string_view call, const MethodReply& reply)> onCall;
        std::function<void(const std::string& level, const std::string& text)> onConsole;
        std::function<void(const std::string& text)> onProblem;
        std::function<void(const std::string& reason)> onGone;  // once; not after end()
    };

    // Null, with errno, when nobody of this user listens at the path.
    static std::shared_ptr<BrowserPage> connect(const std::string& path, Events events);

    BrowserPage(int connectedSocket, Events events);

    // Until it has methods, no question is read.
    void setMethods(const NativeMethods& methods) { m_methods = methods; }

    // Closes the connection. May be called from a native method and from the events.
    void end() { m_socket.reset(); }
    bool isGone() const;

    // Calls a function of the page. False when the page is gone, or takes nothing any more, or the
    // call is too long.
    bool callFunction(const std::string& name, const std::vector<helper::Text>& arguments);

    // What to poll: the socket, negative when the page is gone, and the events that are of use now.
    int socket() const { return isGone() ? -1 : m_socket->socket(); }
    short pollEvents() const;

    // Handles what has arrived, and sends what the socket takes. On the application's thread, while
    // it handles events; also from within a native method that this function has called.
    void serve();

    // Sends the frame that the page wants, if there is something new to see. serve() does so too; a
    // device that calls that only when something has arrived calls this whenever events are
    // handled.
    void sendFrame();

    // Only sends, for while the application waits without handling events.
    void send();

private:
    bool isReading() const;
    bool handle(const base::Message& message);
    bool handleView(MessageKind kind, helper::ItemReader* items);
    void answer(MessageKind question, int number, std::string_view call);
    void queue(MessageKind kind, std::string_view content);
    void noticeEnd();
    void endWith(const std::string& reason);

    const pid_t m_owner;
    const Events m_events;
    NativeMethods m_methods;
    std::optional<base::MessageSocket> m_socket;
    int m_openQuestions = 0;
    bool m_isFrameWanted = false;
    screen::ScreenChanges m_changes;
    PageInput m_input;
};

}  // namespace bridge

// What the page asks of the application.
#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <string>

#include "bridge/message.h"
#include "plugin.h"
#include "tools/web/server.h"

namespace page {

// Hands the page's questions to the application, and each answer to the request that waits for it.
class Calls {
public:
    explicit Calls(Plugin& plugin);
    ~Calls();
    Calls(const Calls&) = delete;
    Calls& operator=(const Calls&) = delete;

    // The content is what stands behind the question's number. The request is answered when the
    // application has answered, or has not for too long.
    void ask(bridge::MessageKind question, const std::string& content, const web::Request& request);

    // The application has come.
    void start();

    // An answer has come. False where it is malformed.
    bool take(const std::string& answer);

    // Gives up those that are not with the application yet.
    void refuseWaiting(const std::string& reason);

    // Gives up all. The application has gone, and answers no more.
    void refuseAll(const std::string& reason);

private:
    struct Call;

    void send();
    void expire(int number);

    Plugin& m_plugin;
    std::deque<std::unique_ptr<Call>> m_waiting;
    size_t m_waitingBytes = 0;
    std::map<int, std::unique_ptr<Call>> m_asked;  // by number; not answered by the application yet
    int m_lastNumber = 0;
};

}  // namespace page

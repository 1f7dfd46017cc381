// A web server for the pages of one origin.
#pragma once

#include <libsoup/soup.h>

#include <functional>
#include <string>

#include "tools/web/listener.h"

namespace web {

// A request whose host, origin and token are the server's own.
struct Request {
    SoupServerMessage* message;
    std::string path;  // behind the token, with the slash before it
    bool isSocket;     // for a WebSocket

    // The header's value; empty where there is none.
    std::string header(const char* name) const;
    std::string method() const { return soup_server_message_get_method(message); }

    void answer(unsigned status, const char* type, const std::string& content) const;

    // With the file of this name in the folder, if it is there, and is not hidden.
    void answerWithFile(const std::string& folder, const std::string& name) const;
};

inline constexpr char kHtml[] = "text/html; charset=utf-8";
inline constexpr char kJson[] = "application/json";

// For the header Content-Type, by the file's extension.
const char* contentType(const std::string& file);

// Listens on this machine only, and answers only who knows the token and comes from one of this
// machine's own names.
class Server {
public:
    struct Handlers {
        // When the headers are there: the HTTP status of what is refused, otherwise 0.
        std::function<unsigned(const Request&)> whyNot;
        // When the request is there.
        std::function<void(const Request&)> serve;
        std::function<void(const Request&, SoupWebsocketConnection*)> connect;
    };

    // The policy is the value of the header Content-Security-Policy. WebSockets have one path.
    Server(std::string policy, std::string socketPath, Handlers handlers);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    // Port 0 stands for any. False, with the reason, where it cannot be listened on.
    bool start(int port, std::string* error);

    // With the token.
    std::string link() const;

    // The path of the main page, which begins and ends with a slash.
    std::string root() const { return "/" + m_token + "/"; }

private:
    static void onHeaders(SoupServer* server, SoupServerMessage* message, const char* path,
                          GHashTable* query, gpointer self) noexcept;
    static void onRequest(SoupServer* server, SoupServerMessage* message, const char* path,
                          GHashTable* query, gpointer self) noexcept;
    static void onSocket(SoupServer* server, SoupServerMessage* message, const char* path,
                         SoupWebsocketConnection* socket, gpointer self) noexcept;

    Request requestOf(SoupServerMessage* message, const std::string& path) const;
    unsigned whyNot(SoupServerMessage* message, const std::string& path) const;

    const std::string m_token;
    const std::string m_policy;
    const std::string m_socketPath;
    const Handlers m_handlers;
    SoupServer* m_server;
    Listener m_listener;
};

}  // namespace web

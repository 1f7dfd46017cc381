#include "tools/web/server.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/file.h"
#include "tools/web/security.h"

namespace web {
namespace {

constexpr size_t kLargestFile = 1 << 20;

std::string headerOf(SoupServerMessage* message, const char* name) {
    SoupMessageHeaders* const headers = soup_server_message_get_request_headers(message);
    const char* const value = soup_message_headers_get_list(headers, name);
    return value != nullptr ? value : "";
}

}  // namespace

std::string Request::header(const char* name) const {
    return headerOf(message, name);
}

void Request::answer(unsigned status, const char* type, const std::string& content) const {
    soup_server_message_set_status(message, status, nullptr);
    soup_server_message_set_response(message, type, SOUP_MEMORY_COPY, content.data(),
                                     content.size());
}

void Request::answerWithFile(const std::string& folder, const std::string& name) const {
    std::string error;
    const bool isName = name.find('/') == std::string::npos && !name.starts_with('.');
    const std::optional<std::string> content =
        isName ? base::readFile(folder + "/" + name, kLargestFile, &error) : std::nullopt;
    if (content) {
        answer(SOUP_STATUS_OK, contentType(name), *content);
    } else {
        soup_server_message_set_status(message, SOUP_STATUS_NOT_FOUND, nullptr);
    }
}

const char* contentType(const std::string& file) {
    static constexpr std::pair<const char*, const char*> kTypes[] = {
        {".html", kHtml},
        {".htm", kHtml},
        {".css", "text/css; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".mjs", "text/javascript; charset=utf-8"},
        {".json", kJson},
        {".txt", "text/plain; charset=utf-8"},
        {".md", "text/plain; charset=utf-8"},
        {".svg", "image/svg+xml"},
        {".png", "image/png"},
        {".jpg", "image/jpeg"},
        {".jpeg", "image/jpeg"},
        {".gif", "image/gif"},
        {".webp", "image/webp"},
        {".ico", "image/x-icon"},
        {".woff", "font/woff"},
        {".woff2", "font/woff2"},
        {".ttf", "font/ttf"},
        {".mp3", "audio/mpeg"},
        {".ogg", "audio/ogg"},
        {".wav", "audio/wav"},
        {".mp4", "video/mp4"},
        {".webm", "video/webm"},
        {".wasm", "application/wasm"},
        {".xml", "text/xml; charset=utf-8"},
        {".pdf", "application/pdf"},
        {".ts", "text/plain; charset=utf-8"},
        {".avif", "image/avif"},
        {".opus", "audio/ogg"},
        {".otf", "font/otf"}};
    for (const auto& [extension, type] : kTypes) {
        if (file.ends_with(extension)) {
            return type;
        }
    }
    return "application/octet-stream";
}

Server::Server(std::string policy, std::string socketPath, Handlers handlers)
    : m_token(newToken()),
      m_policy(std::move(policy)),
      m_socketPath(std::move(socketPath)),
      m_handlers(std::move(handlers)),
      m_server(soup_server_new(nullptr, nullptr)),
      m_listener(m_server) {
    // Compression would cost most of the pictures.
    soup_server_remove_websocket_extension(m_server, SOUP_TYPE_WEBSOCKET_EXTENSION_DEFLATE);
    soup_server_add_early_handler(m_server, nullptr, onHeaders, this, nullptr);
    soup_server_add_handler(m_server, nullptr, onRequest, this, nullptr);
    soup_server_add_websocket_handler(m_server, nullptr, nullptr, nullptr, onSocket, this, nullptr);
}

Server::~Server() {
    soup_server_disconnect(m_server);
    g_object_unref(m_server);
}

bool Server::start(int port, std::string* error) {
    if (m_token.empty()) {
        *error = "the system has no random numbers";
        return false;
    }
    std::string problem;
    if (!m_listener.listen(static_cast<guint16>(port), &problem)) {
        *error = "port " + std::to_string(port) + ": " + problem;
        return false;
    }
    return true;
}

std::string Server::link() const {
    return "http://127.0.0.1:" + std::to_string(m_listener.port()) + root();
}

// All requests come by here first, also those that ask for a WebSocket.
void Server::onHeaders(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*,
                       gpointer self) noexcept {
    auto* const server = static_cast<Server*>(self);
    SoupMessageHeaders* const headers = soup_server_message_get_response_headers(message);
    soup_message_headers_append(headers, "Content-Security-Policy", server->m_policy.c_str());
    soup_message_headers_append(headers, "X-Content-Type-Options", "nosniff");
    soup_message_headers_append(headers, "Referrer-Policy", "no-referrer");
    soup_message_headers_append(headers, "Cross-Origin-Resource-Policy", "same-origin");
    soup_message_headers_append(headers, "Cache-Control", "no-store");
    soup_message_body_set_accumulate(soup_server_message_get_request_body(message), FALSE);
    const std::string method = soup_server_message_get_method(message);
    if (const unsigned status = server->whyNot(message, path); status != 0) {
        soup_server_message_set_status(message, status, nullptr);
    } else if (method == SOUP_METHOD_POST || !headerOf(message, "Upgrade").empty()) {
        server->m_listener.keep(soup_server_message_get_remote_address(message));
    }
}

// The HTTP status of what is refused; otherwise 0.
unsigned Server::whyNot(SoupServerMessage* message, const std::string& path) const {
    const std::string host = headerOf(message, "Host");
    const std::string origin = headerOf(message, "Origin");
    const bool isSocket = path.ends_with(m_socketPath) || !headerOf(message, "Upgrade").empty();
    const bool isOwnOrigin = origin == "http://" + host || (origin.empty() && !isSocket);
    if (!isLoopback(host) || !isOwnOrigin) {
        return SOUP_STATUS_FORBIDDEN;
    }
    const size_t slash = std::min(path.find('/', 1), path.size());
    if (slash == 0 || !isSameSecret(path.substr(1, slash - 1), m_token) ||
        (isSocket && path.substr(slash) != m_socketPath)) {
        return SOUP_STATUS_NOT_FOUND;
    }
    return m_handlers.whyNot({message, path.substr(slash), isSocket});
}

Request Server::requestOf(SoupServerMessage* message, const std::string& path) const {
    return {message, path.substr(1 + m_token.size()), !headerOf(message, "Upgrade").empty()};
}

void Server::onRequest(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*,
                       gpointer self) noexcept {
    const auto* const server = static_cast<const Server*>(self);
    const Request request = server->requestOf(message, path);
    if (!request.isSocket) {
        server->m_handlers.serve(request);
    }
}

void Server::onSocket(SoupServer*, SoupServerMessage* message, const char* path,
                      SoupWebsocketConnection* socket, gpointer self) noexcept {
    auto* const server = static_cast<Server*>(self);
    server->m_handlers.connect(server->requestOf(message, path), socket);
}

}  // namespace web

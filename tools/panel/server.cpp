#include "server.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "base/file.h"
#include "base/json/writer.h"
#include "security.h"
#include "simulator/device/profile.h"

namespace panel {
namespace {

constexpr size_t kMostBrowsers = 8;
constexpr size_t kLargestFile = 1 << 20;
constexpr guint kTimeToTell = 700;  // milliseconds
constexpr char kSocket[] = "socket";
constexpr char kIndex[] = "index.html";

// Beside the profiles.
std::string pageFolder() {
    return std::filesystem::path(tavsim::profileFolder()).replace_filename("panel");
}

const char* contentType(const std::string& name) {
    static constexpr std::pair<const char*, const char*> kTypes[] = {
        {".html", "text/html; charset=utf-8"},
        {".css", "text/css; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".svg", "image/svg+xml"},
        {".png", "image/png"}};
    for (const auto& [extension, type] : kTypes) {
        if (name.ends_with(extension)) {
            return type;
        }
    }
    return nullptr;
}

std::string header(SoupServerMessage* message, const char* name) {
    SoupMessageHeaders* const headers = soup_server_message_get_request_headers(message);
    const char* const value = soup_message_headers_get_list(headers, name);
    return value != nullptr ? value : "";
}

std::string settings(const Options& options) {
    base::JsonWriter json;
    json.beginObject().key("settings").beginObject().member("version", TAV_VERSION);
    json.member("tiles", options.tiles.empty() ? nullptr : options.tiles.c_str());
    json.members("canPlay", !options.command.empty(), "header", options.header);
    return json.endObject().endObject().take();
}

}  // namespace

Server::Server(const Options& options)
    : m_options(options),
      m_token(newToken()),
      m_policy(contentPolicy(originOfTiles(options.tiles).value_or(""))),
      m_server(soup_server_new(nullptr, nullptr)),
      m_listener(m_server),
      m_player(options.command),
      m_devices(options.run,
                [this] {
                    for (const auto& browser : m_browsers) {
                        browser->send(m_devices.message());
                    }
                }),
      m_common{options, m_devices, m_player} {
    // Compression would cost most of the pictures.
    soup_server_remove_websocket_extension(m_server, SOUP_TYPE_WEBSOCKET_EXTENSION_DEFLATE);
    soup_server_add_early_handler(m_server, nullptr, onHeaders, this, nullptr);
    soup_server_add_handler(m_server, nullptr, onRequest, this, nullptr);
    soup_server_add_websocket_handler(m_server, nullptr, nullptr, nullptr, onSocket, this, nullptr);
}

Server::~Server() {
    m_browsers.clear();
    m_gone.clear();
    soup_server_disconnect(m_server);
    g_object_unref(m_server);
}

bool Server::start(std::string* error) {
    if (m_token.empty()) {
        *error = "the system has no random numbers";
        return false;
    }
    *error = base::whyNoFile(pageFolder() + "/" + kIndex);
    if (!error->empty()) {
        return false;
    }
    std::string problem;
    if (!m_listener.listen(static_cast<guint16>(m_options.port), &problem)) {
        *error = "port " + std::to_string(m_options.port) + ": " + problem;
        return false;
    }
    return true;
}

std::string Server::link() const {
    return "http://127.0.0.1:" + std::to_string(m_listener.port()) + "/" + m_token + "/";
}

void Server::end(const std::string& how, std::function<void()> onTold) {
    m_onTold = std::move(onTold);
    for (const auto& browser : m_browsers) {
        browser->send(base::jsonObject("ended", how));
        browser->close(SOUP_WEBSOCKET_CLOSE_GOING_AWAY, nullptr);
    }
    m_lastChance.after(m_browsers.empty() ? 0 : kTimeToTell, [this] { m_onTold(); });
}

// All requests come by here first, also those that ask for a WebSocket.
void Server::onHeaders(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*,
                       gpointer self) noexcept {
    const auto* const server = static_cast<const Server*>(self);
    SoupMessageHeaders* const headers = soup_server_message_get_response_headers(message);
    soup_message_headers_append(headers, "Content-Security-Policy", server->m_policy.c_str());
    soup_message_headers_append(headers, "X-Content-Type-Options", "nosniff");
    soup_message_headers_append(headers, "Referrer-Policy", "no-referrer");
    soup_message_headers_append(headers, "Cache-Control", "no-store");
    soup_message_body_set_accumulate(soup_server_message_get_request_body(message), FALSE);
    if (const unsigned status = server->whyNot(message, path); status != 0) {
        soup_server_message_set_status(message, status, nullptr);
    }
}

// The HTTP status of what is refused; otherwise 0.
unsigned Server::whyNot(SoupServerMessage* message, const std::string& path) const {
    const std::string host = header(message, "Host");
    const std::string origin = header(message, "Origin");
    const std::string ending = "/" + std::string(kSocket);
    const bool isSocket = path.ends_with(ending) || !header(message, "Upgrade").empty();
    const bool isOwnOrigin = origin == "http://" + host || (origin.empty() && !isSocket);
    if (!isLoopback(host) || !isOwnOrigin) {
        return SOUP_STATUS_FORBIDDEN;
    }
    const size_t slash = std::min(path.find('/', 1), path.size());
    if (slash == 0 || !isSameSecret(path.substr(1, slash - 1), m_token) ||
        (isSocket && path.substr(slash) != ending)) {
        return SOUP_STATUS_NOT_FOUND;
    }
    const std::string method = soup_server_message_get_method(message);
    if (method != SOUP_METHOD_GET && (method != SOUP_METHOD_HEAD || isSocket)) {
        return SOUP_STATUS_METHOD_NOT_ALLOWED;
    }
    return isSocket && m_browsers.size() >= kMostBrowsers ? SOUP_STATUS_SERVICE_UNAVAILABLE : 0;
}

void Server::onRequest(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*,
                       gpointer self) noexcept {
    const auto* const server = static_cast<const Server*>(self);
    if (header(message, "Upgrade").empty()) {
        server->serve(message, std::string(path).substr(1 + server->m_token.size()));
    }
}

// The name begins with a slash.
void Server::serve(SoupServerMessage* message, const std::string& name) const {
    const std::string file = name == "/" ? kIndex : name.substr(std::min<size_t>(1, name.size()));
    const char* const type = contentType(file);
    std::string error;
    const bool isName = type != nullptr && file.find('/') == std::string::npos && file[0] != '.';
    const std::optional<std::string> content =
        isName ? base::readFile(pageFolder() + "/" + file, kLargestFile, &error) : std::nullopt;
    soup_server_message_set_status(message, content ? SOUP_STATUS_OK : SOUP_STATUS_NOT_FOUND,
                                   nullptr);
    if (content) {
        soup_server_message_set_response(message, type, SOUP_MEMORY_COPY, content->data(),
                                         content->size());
    }
}

void Server::onSocket(SoupServer*, SoupServerMessage*, const char*, SoupWebsocketConnection* socket,
                      gpointer self) noexcept {
    auto* const server = static_cast<Server*>(self);
    server->m_listener.keep(soup_websocket_connection_get_io_stream(socket));
    Browser& browser = *server->m_browsers.emplace_back(std::make_unique<Browser>(
        socket, server->m_common, [server](Browser* gone) { server->remove(gone); }));
    browser.send(settings(server->m_options));
    browser.send(server->m_devices.message());
}

// It may be the one that calls this.
void Server::remove(Browser* browser) {
    const auto found = std::find_if(m_browsers.begin(), m_browsers.end(),
                                    [browser](const auto& each) { return each.get() == browser; });
    m_gone.splice(m_gone.end(), m_browsers, found);
    m_removal.after(0, [this] {
        m_gone.clear();
        if (m_onTold && m_browsers.empty()) {
            m_onTold();
        }
    });
}

}  // namespace panel

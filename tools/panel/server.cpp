#include "server.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "base/file.h"
#include "base/json/writer.h"
#include "security.h"
#include "simulator/device/profile.h"

namespace panel {
namespace {

constexpr size_t kMostBrowsers = 8;
constexpr guint kTimeToTell = 700;  // milliseconds
constexpr char kIndex[] = "index.html";

// Beside the profiles.
std::string pageFolder() {
    return std::filesystem::path(tavsim::profileFolder()).replace_filename("panel");
}

void serve(const web::Request& request) {
    const std::string& path = request.path;
    const std::string name = path == "/" ? kIndex : path.substr(std::min<size_t>(1, path.size()));
    request.answerWithFile(pageFolder(), name);
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
      m_server(contentPolicy(originOfTiles(options.tiles).value_or("")), "/socket",
               {[this](const web::Request& request) { return whyNot(request); }, serve,
                [this](const web::Request&, SoupWebsocketConnection* connection) {
                    connect(connection);
                }}),
      m_player(options.command),
      m_devices(options.run,
                [this] {
                    for (const auto& browser : m_browsers) {
                        browser->send(m_devices.message());
                    }
                }),
      m_common{options, m_devices, m_player} {
}

Server::~Server() {
    m_browsers.clear();
    m_gone.clear();
}

bool Server::start(std::string* error) {
    *error = base::whyNoFile(pageFolder() + "/" + kIndex);
    return error->empty() && m_server.start(m_options.port, error);
}

void Server::end(const std::string& how, std::function<void()> onTold) {
    m_onTold = std::move(onTold);
    for (const auto& browser : m_browsers) {
        browser->send(base::jsonObject("ended", how));
        browser->close();
    }
    m_lastChance.after(m_browsers.empty() ? 0 : kTimeToTell, [this] { m_onTold(); });
}

// The HTTP status of what is refused; otherwise 0.
unsigned Server::whyNot(const web::Request& request) const {
    const std::string method = request.method();
    if (method != SOUP_METHOD_GET && (method != SOUP_METHOD_HEAD || request.isSocket)) {
        return SOUP_STATUS_METHOD_NOT_ALLOWED;
    }
    const bool isFull = m_browsers.size() >= kMostBrowsers;
    return request.isSocket && isFull ? SOUP_STATUS_SERVICE_UNAVAILABLE : 0;
}

void Server::connect(SoupWebsocketConnection* connection) {
    Browser& browser = *m_browsers.emplace_back(
        std::make_unique<Browser>(connection, m_common, [this](Browser* gone) { remove(gone); }));
    browser.send(settings(m_options));
    browser.send(m_devices.message());
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

#include "browser.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

#include "base/file.h"
#include "base/json/reader.h"
#include "base/json/writer.h"
#include "security.h"

namespace json = base::json;

namespace panel {
namespace {

constexpr guint64 kLongestMessage = 32 << 20;  // a recorded track, with JSON's escapes
constexpr size_t kLongestLine = 64 << 10;
constexpr int kMostMessages = 1000;  // a second
constexpr guint kBetweenPings = 5;   // seconds
constexpr int kMostFiles = 1000;     // of one name
constexpr size_t kLongestName = 64;

// For the device's folder, from a name that may be anything; empty where it is of no recorded
// track.
std::string nameOfTrack(const std::string& given) {
    std::string extension = std::filesystem::path(given).extension();
    std::transform(extension.begin(), extension.end(), extension.begin(), g_ascii_tolower);
    if (extension != ".gpx" && extension != ".nmea" && extension != ".txt") {
        return {};
    }
    std::string name = std::filesystem::path(given).stem().string().substr(0, kLongestName);
    for (char& character : name) {
        character = g_ascii_isalnum(character) || character == '-' ? character : '_';
    }
    return (name.empty() ? "track" : name) + extension;
}

// The path of the new file; empty where it cannot be written.
std::string store(const std::string& folder, const std::string& name, const std::string& content) {
    const std::filesystem::path path(name);
    for (int count = 1; count <= kMostFiles; ++count) {
        const std::string number = count == 1 ? "" : "-" + std::to_string(count);
        std::string file = folder + "/" + path.stem().string() + number + path.extension().string();
        std::error_code problem;
        if (!std::filesystem::exists(std::filesystem::symlink_status(file, problem))) {
            return base::createFile(file, content) ? file : std::string();
        }
    }
    return {};
}

}  // namespace

struct Browser::Request {
    std::optional<std::string> open;
    std::optional<std::string> ask;
    std::optional<std::string> track;
    std::optional<std::string> play;
    std::optional<bool> frames;
    bool isShown = false;
    std::string content;
    double factor = 1;
    int id = 0;
};

Browser::Browser(SoupWebsocketConnection* socket, const Common& common,
                 std::function<void(Browser*)> onGone)
    : m_socket(SOUP_WEBSOCKET_CONNECTION(g_object_ref(socket))),
      m_common(common),
      m_onGone(std::move(onGone)) {
    soup_websocket_connection_set_max_incoming_payload_size(m_socket, kLongestMessage);
    soup_websocket_connection_set_keepalive_interval(m_socket, kBetweenPings);
    g_signal_connect(m_socket, "message", G_CALLBACK(onMessage), this);
    g_signal_connect(m_socket, "closed", G_CALLBACK(onClosed), this);
}

Browser::~Browser() {
    m_common.player.stop(this);
    g_signal_handlers_disconnect_by_data(m_socket, this);
    g_object_unref(m_socket);
}

void Browser::send(const std::string& text) {
    if (!isOpen()) {
        return;
    }
    g_autofree char* valid = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
    soup_websocket_connection_send_text(m_socket, valid);
}

void Browser::close(gushort code, const char* reason) {
    if (isOpen()) {
        soup_websocket_connection_close(m_socket, code, reason);
    }
}

void Browser::onMessage(SoupWebsocketConnection*, gint type, GBytes* message,
                        gpointer self) noexcept {
    auto* const browser = static_cast<Browser*>(self);
    if (browser->isTooFast()) {
        browser->close(SOUP_WEBSOCKET_CLOSE_POLICY_VIOLATION, "too many messages");
        return;
    }
    if (type != SOUP_WEBSOCKET_DATA_TEXT) {
        browser->refuse("a message is text");
        return;
    }
    gsize size = 0;
    const auto* const text = static_cast<const char*>(g_bytes_get_data(message, &size));
    browser->take(std::string(text, size));
}

void Browser::onClosed(SoupWebsocketConnection*, gpointer self) noexcept {
    auto* const browser = static_cast<Browser*>(self);
    browser->m_onGone(browser);
}

bool Browser::isTooFast() {
    const Clock::time_point now = Clock::now();
    if (now - m_second > std::chrono::seconds(1)) {
        m_second = now;
        m_messages = 0;
    }
    return ++m_messages > kMostMessages;
}

void Browser::take(const std::string& message) {
    Request request;
    std::string error;
    if (!json::read(message, "message",
                    json::fields({{"open", json::text(&request.open)},
                                  {"ask", json::text(&request.ask)},
                                  {"track", json::text(&request.track)},
                                  {"content", json::text(&request.content)},
                                  {"factor", json::number(&request.factor)},
                                  {"play", json::text(&request.play)},
                                  {"frames",
                                   [&request](const json::Value& value) {
                                       const json::Reader flag =
                                           json::flag(&request.frames.emplace());
                                       flag(value);
                                   }},
                                  {"shown", json::flag(&request.isShown)},
                                  {"id", json::integer(&request.id)}}),
                    &error)) {
        refuse(error);
        return;
    }
    if (request.open) {
        open(*request.open);
    } else if (!m_watch) {
        refuse("no device is open");
    } else if (request.ask) {
        ask(*request.ask, request.id);
    } else if (request.track) {
        track(request);
    } else if (request.play) {
        play(request);
    } else if (request.isShown) {
        m_frames->shown();
    } else if (request.frames) {
        *request.frames ? m_frames->start() : m_frames->stop();
    }
}

void Browser::open(const std::string& root) {
    if (!m_common.devices.has(root)) {
        refuse("no device is running in " + root);
        return;
    }
    m_root = root;
    m_questions = std::make_unique<Questions>(root);
    m_frames = std::make_unique<Frames>(root, [this](const auto& frame) { sendPicture(frame); });
    m_watch = std::make_unique<Watch>(
        root, !m_common.options.run.empty(),
        Watch::Events{[this] { send(base::jsonObject("opened", m_root)); },
                      [this](std::string lines) {
                          lines.pop_back();
                          std::replace(lines.begin(), lines.end(), '\n', ',');
                          send("{\"watch\":[" + lines + "]}");
                      },
                      [this](const std::string& count) { send("{\"lost\":" + count + "}"); },
                      [this](const std::string& how) { send(base::jsonObject("ended", how)); },
                      [this] { return isReady(); }});
}

void Browser::ask(const std::string& line, int number) {
    if (line.size() > kLongestLine || line.find('\n') != std::string::npos) {
        answer(number, false, "a command is one line of at most 64 KiB");
        return;
    }
    if (const std::string problem = whyNoCommand(line, m_root); !problem.empty()) {
        answer(number, false, problem);
        return;
    }
    m_questions->ask(line, [this, number](bool isDone, const std::string& text) {
        answer(number, isDone, text);
    });
}

void Browser::track(const Request& request) {
    const std::string name = nameOfTrack(*request.track);
    if (name.empty()) {
        answer(request.id, false, "a recorded track is a file .gpx, .nmea or .txt");
        return;
    }
    const std::string file = store(m_root, name, request.content);
    if (file.empty()) {
        answer(request.id, false, m_root + ": the track cannot be written there");
        return;
    }
    const std::string line =
        "track " + file + " " + base::JsonWriter().value(request.factor).take();
    const int number = request.id;
    m_questions->ask(line, [this, number, file](bool isDone, const std::string& text) {
        if (!isDone) {
            unlink(file.c_str());
        }
        answer(number, isDone, text);
    });
}

void Browser::play(const Request& request) {
    const int number = request.id;
    if (const std::string problem = whyNoScenario(*request.play, m_root); !problem.empty()) {
        answer(number, false, problem);
        return;
    }
    const std::string problem = m_common.player.play(
        *request.play, m_root, this, [this, number](int status, const std::string& output) {
            send(base::jsonObject("id", number, "status", status, "output", output));
        });
    if (!problem.empty()) {
        answer(number, false, problem);
    }
}

void Browser::refuse(const std::string& why) {
    send(base::jsonObject("refused", why));
}

void Browser::answer(int number, bool isDone, const std::string& text) {
    send(base::jsonObject("id", number, isDone ? "output" : "error", text));
}

void Browser::sendPicture(const std::string& picture) {
    if (isOpen()) {
        soup_websocket_connection_send_binary(m_socket, picture.data(), picture.size());
    }
}

// What the kernel does not take of a message, the WebSocket keeps.
bool Browser::isReady() const {
    GIOStream* const stream = soup_websocket_connection_get_io_stream(m_socket);
    GOutputStream* const output = g_io_stream_get_output_stream(stream);
    return g_pollable_output_stream_is_writable(G_POLLABLE_OUTPUT_STREAM(output)) != 0;
}

bool Browser::isOpen() const {
    return soup_websocket_connection_get_state(m_socket) == SOUP_WEBSOCKET_STATE_OPEN;
}

}  // namespace panel

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
constexpr int kMostFiles = 1000;  // of one name
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

Browser::Browser(SoupWebsocketConnection* connection, const Common& common,
                 std::function<void(Browser*)> onGone)
    : m_socket(connection, kLongestMessage,
               {[this](const std::optional<std::string>& text) {
                    text ? take(*text) : refuse("a message is text");
                },
                [this, onGone = std::move(onGone)] { onGone(this); }}),
      m_common(common) {
}

Browser::~Browser() {
    m_common.player.stop(this);
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
                                  {"frames", json::flag(&request.frames)},
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
        m_frames->frames().shown();
    } else if (request.frames) {
        *request.frames ? m_frames->frames().start() : m_frames->frames().stop();
    }
}

void Browser::open(const std::string& root) {
    if (!m_common.devices.has(root)) {
        refuse("no device is running in " + root);
        return;
    }
    m_root = root;
    m_questions = std::make_unique<Questions>(root);
    m_frames = std::make_unique<DeviceFrames>(
        root, [this](const std::string& frame) { m_socket.sendBinary(frame); });
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
                      [this] { return m_socket.isReady(); }});
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

}  // namespace panel

#include "document.h"

#include <optional>
#include <utility>

#include "base/json/reader.h"
#include "base/json/writer.h"
#include "complain.h"
#include "helper/items.h"

using bridge::MessageKind;
namespace json = base::json;

namespace page {
namespace {

constexpr guint64 kLongestMessage = 1 << 20;
constexpr size_t kMostQueued = size_t{64} << 20;
constexpr guint kUntilReady = 20;  // milliseconds, whether a slow browser takes more

constexpr guint kBetweenPings = 5000;  // milliseconds
constexpr std::chrono::seconds kLongestSilence(15);

constexpr char kSilent[] = "the page's script has run for 15 seconds without a pause";
constexpr char kTooFast[] = "the page has sent too many messages in a second, and is closed";
constexpr char kSlow[] = "the page does not take the application's calls, which have to wait";
constexpr char kTakesNothing[] = "the application takes nothing, so what the page tells it is lost";
constexpr char kMalformed[] = "the page has sent what is no message, and is closed";

// The JSON of a call. Nothing where its items are malformed.
std::optional<std::string> callJson(const std::string& content) {
    helper::ItemReader items(content);
    base::JsonWriter call;
    call.beginObject().member("call", items.readString()).key("arguments").beginArray();
    for (int left = items.readInt(); left > 0 && items.isSuccessful(); --left) {
        const helper::Text argument = items.readText();
        argument ? call.value(*argument) : call.raw("null");
    }
    call.endArray().endObject();
    return items.isSuccessful() ? std::optional(call.take()) : std::nullopt;
}

// What the document can say.
struct Saying {
    std::optional<std::string> console, problem, touch, key, typed;
    std::optional<bool> frames;
    std::string text;
    bool isShown = false;
    bool isPong = false;
    bool isPressed = false;
    int x = 0;
    int y = 0;
};

json::Reader saying(Saying* said) {
    return json::fields(
        {{"console",
          json::word(&said->console, {{"log", "log"}, {"warn", "warn"}, {"error", "error"}})},
         {"text", json::text(&said->text)},
         {"problem", json::text(&said->problem)},
         {"frames", json::flag(&said->frames)},
         {"shown", json::flag(&said->isShown)},
         {"pong", json::flag(&said->isPong)},
         {"touch", json::word(&said->touch, {{"down", "down"}, {"move", "move"}, {"up", "up"}})},
         {"x", json::integer(&said->x)},
         {"y", json::integer(&said->y)},
         {"key", json::text(&said->key)},
         {"pressed", json::flag(&said->isPressed)},
         {"type", json::text(&said->typed)}});
}

}  // namespace

Document::Document(int number, Plugin& plugin, std::function<void()> onConnection)
    : m_number(number),
      m_plugin(plugin),
      m_onConnection(std::move(onConnection)),
      m_frames({[this] { m_origin.ask(); }, [this] { m_origin.stop(); }},
               [this](const std::string& picture) { m_socket->sendBinary(picture); }),
      m_origin(plugin, [this](const std::string& frame) { m_frames.hand(frame); }) {
}

void Document::connect(SoupWebsocketConnection* connection) {
    const auto onMessage = [this](const std::optional<std::string>& text) {
        take(text.value_or(""));
    };
    const auto onClosed = [this] {
        if (m_socket->wasTooFast()) {
            complainOnce(kTooFast);
        }
        m_pings.stop();
        m_frames.stop();
        forgetCalls();
        send();
        m_onConnection();
    };
    m_socket = std::make_unique<web::Socket>(connection, kLongestMessage,
                                             web::Socket::Events{onMessage, onClosed});
    hear();
    m_pings.every(kBetweenPings, [this] { ping(); });
    send();
    m_onConnection();
}

// Before the document has opened its WebSocket, its calls wait for that. Once that is closed,
// nobody is there to be called.
bool Document::call(const std::string& message) {
    std::optional<std::string> call = callJson(message);
    if (call && (!hasSocket() || m_socket->isOpen())) {
        m_size += call->size();
        m_calls.push_back(std::move(*call));
        send();
    }
    return call.has_value();
}

void Document::end(const std::string& why) {
    m_hasEnded = true;
    forgetCalls();
    m_frames.stop();
    if (hasSocket()) {
        m_socket->sendText(base::jsonObject("end", why));
        m_socket->close(SOUP_WEBSOCKET_CLOSE_GOING_AWAY, nullptr);
    }
}

void Document::take(const std::string& text) {
    Saying said;
    std::string problem;
    if (m_hasEnded) {
        return;
    }
    hear();
    if (!json::read(text, "page", saying(&said), &problem)) {
        complainOnce(kMalformed);
        m_socket->close(SOUP_WEBSOCKET_CLOSE_POLICY_VIOLATION, nullptr);
        return;
    }
    helper::ItemWriter items;
    if (said.console) {
        items.writeText(*said.console);
        items.writeText(said.text);
        tell(MessageKind::ConsoleLine, items);
    } else if (said.problem) {
        items.writeText(*said.problem);
        tell(MessageKind::Problem, items);
    } else if (said.touch) {
        items.writeText(*said.touch);
        items.writeInt(said.x);
        items.writeInt(said.y);
        tell(MessageKind::Touch, items);
    } else if (said.key) {
        items.writeBool(said.isPressed);
        items.writeText(*said.key);
        tell(MessageKind::Key, items);
    } else if (said.typed) {
        items.writeText(*said.typed);
        tell(MessageKind::Typed, items);
    } else if (said.isShown) {
        m_frames.shown();
    } else if (said.frames) {
        *said.frames ? m_frames.start() : m_frames.stop();
    }
}

void Document::tell(MessageKind kind, const helper::ItemWriter& items) {
    if (!m_plugin.send(kind, items.message())) {
        complainOnce(kTakesNothing);
    }
}

// The browser answers a ping of the WebSocket itself, even while the script is in an endless loop.
void Document::ping() {
    if (Clock::now() - m_heard > kLongestSilence) {
        complainOnce(kSilent);
    }
    m_socket->sendText(base::jsonObject("ping", true));
}

void Document::forgetCalls() {
    m_calls.clear();
    m_size = 0;
}

void Document::send() {
    while (!m_calls.empty() && isConnected() && m_socket->isReady()) {
        m_socket->sendText(m_calls.front());
        m_size -= m_calls.front().size();
        m_calls.pop_front();
    }
    if (m_calls.empty() || !isConnected()) {
        m_retry.stop();
    } else if (!m_retry.isRunning()) {
        m_retry.every(kUntilReady, [this] { send(); });
    }
    if (!m_hasEnded) {
        m_plugin.hold(m_size > kMostQueued);
    }
    if (m_size > kMostQueued) {
        complainOnce(kSlow);
    }
}

}  // namespace page

#include "calls.h"

#include <algorithm>
#include <utility>

#include "base/json/writer.h"
#include "complain.h"
#include "helper/items.h"
#include "tools/web/source.h"

using bridge::MessageKind;

namespace page {
namespace {

constexpr size_t kMostWaiting = 256;
constexpr size_t kMostWaitingBytes = size_t{64} << 20;
constexpr guint kLongestWait = 10'000;  // milliseconds, for the application and for its answer

constexpr char kTooMany[] = "too many calls are waiting for the application";
constexpr char kNobodyCame[] = "no application has become the plug-in for 10 seconds";
constexpr char kNoAnswer[] = "the application has not answered for 10 seconds";
constexpr char kLeft[] = "the application has gone";
constexpr char kTakesNoCall[] = "the application takes no more calls, or the call is too long";
constexpr char kNotRead[] = "The application could not read the call";

void writeText(base::JsonWriter* json, const helper::Text& text) {
    text ? json->value(*text) : json->raw("null");
}

std::string namesJson(helper::ItemReader* items) {
    base::JsonWriter json;
    json.beginObject().key("methods").beginArray();
    for (int left = items->readInt(); left > 0 && items->isSuccessful(); --left) {
        json.value(items->readString());
    }
    return json.endArray().endObject().take();
}

std::string resultJson(helper::ItemReader* items) {
    const bool isException = items->readBool();
    const helper::Text text = items->readText();
    if (!items->isSuccessful()) {
        return base::jsonObject("exception", kNotRead);
    }
    base::JsonWriter json;
    json.beginObject().key(isException ? "exception" : "reply");
    writeText(&json, text);
    return json.endObject().take();
}

}  // namespace

// The answer to a request that has to wait. When the page has gone meanwhile, giving it does
// nothing.
class Reply {
public:
    explicit Reply(const web::Request& request) : m_request(request) {
        g_object_ref(m_request.message);
        // Without a status it would be taken for a request for a WebSocket.
        soup_server_message_set_status(m_request.message, SOUP_STATUS_OK, nullptr);
        soup_server_message_pause(m_request.message);
        g_signal_connect(m_request.message, "finished", G_CALLBACK(onFinished), this);
    }
    ~Reply() { forget(); }
    Reply(const Reply&) = delete;
    Reply& operator=(const Reply&) = delete;

    // Once.
    void give(unsigned status, const std::string& json) {
        if (m_request.message != nullptr) {
            m_request.answer(status, web::kJson, json);
            soup_server_message_unpause(m_request.message);
            forget();
        }
    }

private:
    static void onFinished(SoupServerMessage*, gpointer self) noexcept {
        static_cast<Reply*>(self)->forget();
    }

    void forget() {
        if (auto* const message = std::exchange(m_request.message, nullptr); message != nullptr) {
            g_signal_handlers_disconnect_by_data(message, this);
            g_object_unref(message);
        }
    }

    web::Request m_request;
};

struct Calls::Call {
    Call(int givenNumber, MessageKind kind, std::string givenContent, const web::Request& request)
        : number(givenNumber), question(kind), content(std::move(givenContent)), reply(request) {}

    void refuse(const std::string& reason) {
        limit.stop();
        reply.give(SOUP_STATUS_SERVICE_UNAVAILABLE, base::jsonObject("error", reason));
    }

    const int number;
    const MessageKind question;
    std::string content;
    Reply reply;
    web::Source limit;
};

Calls::Calls(Plugin& plugin) : m_plugin(plugin) {
}

Calls::~Calls() = default;

void Calls::ask(MessageKind question, const std::string& content, const web::Request& request) {
    const int number = m_lastNumber = m_lastNumber % INT32_MAX + 1;
    auto call = std::make_unique<Call>(number, question, content, request);
    if (m_waiting.size() == kMostWaiting || m_waitingBytes + content.size() > kMostWaitingBytes) {
        call->refuse(kTooMany);
        return;
    }
    m_waitingBytes += content.size();
    call->limit.after(kLongestWait, [this, number] { expire(number); });
    m_waiting.push_back(std::move(call));
    send();
}

// What was asked of an application that has gone will not be answered.
void Calls::start() {
    for (const auto& [number, call] : std::exchange(m_asked, {})) {
        call->refuse(kLeft);
    }
    send();
}

bool Calls::take(const std::string& answer) {
    helper::ItemReader items(answer);
    const auto found = m_asked.find(items.readInt());
    if (found == m_asked.end()) {
        return false;
    }
    const std::unique_ptr<Call> call = std::move(found->second);
    m_asked.erase(found);
    call->reply.give(SOUP_STATUS_OK, call->question == MessageKind::MethodList
                                         ? namesJson(&items)
                                         : resultJson(&items));
    send();
    return true;
}

void Calls::refuseWaiting(const std::string& reason) {
    m_waitingBytes = 0;
    for (const auto& call : std::exchange(m_waiting, {})) {
        call->refuse(reason);
    }
}

void Calls::refuseAll(const std::string& reason) {
    refuseWaiting(reason);
    for (const auto& [number, call] : std::exchange(m_asked, {})) {
        call->refuse(reason);
    }
}

void Calls::send() {
    while (m_plugin.isThere() && !m_waiting.empty() &&
           m_asked.size() < size_t{bridge::kMostOpenQuestions}) {
        std::unique_ptr<Call> call = std::move(m_waiting.front());
        m_waiting.pop_front();
        m_waitingBytes -= call->content.size();
        helper::ItemWriter items;
        items.writeInt(call->number);
        if (!m_plugin.send(call->question, items.message() + std::exchange(call->content, {}))) {
            complainOnce(kTakesNoCall);
            call->refuse(kTakesNoCall);
            continue;
        }
        call->limit.after(kLongestWait, [this, number = call->number] { expire(number); });
        m_asked.emplace(call->number, std::move(call));
    }
}

// A call that is with the application still counts there, until it is answered.
void Calls::expire(int number) {
    const std::string reason = m_plugin.isThere() ? kNoAnswer : kNobodyCame;
    complainOnce(reason);
    if (const auto asked = m_asked.find(number); asked != m_asked.end()) {
        asked->second->refuse(reason);
        return;
    }
    const auto waiting =
        std::find_if(m_waiting.begin(), m_waiting.end(),
                     [number](const auto& call) { return call->number == number; });
    if (waiting != m_waiting.end()) {
        const std::unique_ptr<Call> call = std::move(*waiting);
        m_waiting.erase(waiting);
        m_waitingBytes -= call->content.size();
        call->refuse(reason);
    }
}

}  // namespace page

#include "page_server.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "access.h"
#include "base/application_folder.h"
#include "base/file.h"
#include "base/json/reader.h"
#include "base/json/writer.h"
#include "files.h"
#include "helper/items.h"
#include "tools/web/security.h"

using bridge::MessageKind;
namespace json = base::json;

namespace page {
namespace {

constexpr size_t kMostDocuments = 8;
constexpr goffset kLongestBody = 16 << 20;
constexpr guint kTimeToTell = 700;    // milliseconds
constexpr guint kUntilKnown = 1'000;  // milliseconds, how an application has ended that has gone

constexpr std::string_view kOwnPath = "/.tav/";
constexpr char kSocket[] = "/.tav/socket";
constexpr char kCall[] = "/.tav/call";
constexpr char kMethods[] = "/.tav/methods";

constexpr char kTaken[] = "The page was opened anew, and the newer one has the plug-in.";
constexpr char kGone[] = "The application has closed its connection to the page.";

bool isCall(const web::Request& request) {
    return request.path == kCall || request.path == kMethods;
}

std::string bodyOf(const web::Request& request) {
    SoupMessageBody* const body = soup_server_message_get_request_body(request.message);
    g_autoptr(GBytes) bytes = soup_message_body_flatten(body);
    gsize size = 0;
    const auto* const data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
    return {data, size};
}

// A call as the application takes it. Nothing, with the reason, where the body is none.
std::optional<std::string> callItems(const std::string& body, std::string* error) {
    using Text = std::optional<std::string>;
    const auto textOrNull = [](Text* target) {
        return [target](const json::Value& value) {
            if (!value.element().is_null()) {
                const json::Reader text = json::text(target);
                text(value);
            }
        };
    };
    Text method;
    std::vector<Text> arguments;
    if (!json::read(body, "call",
                    json::fields({{"method", json::text(&method)},
                                  {"arguments", json::list(&arguments, textOrNull)}}),
                    error)) {
        return std::nullopt;
    }
    helper::ItemWriter items;
    items.writeText(method.value_or(""));
    items.writeInt(static_cast<int32_t>(arguments.size()));
    for (const Text& argument : arguments) {
        items.writeText(argument);
    }
    return items.message();
}

}  // namespace

PageServer::PageServer(const ServerOptions& options, ServerEvents events)
    : m_options(options),
      m_events(std::move(events)),
      m_cookie("tav=" + web::newToken()),
      m_server(contentPolicy(options.hosts), kSocket,
               {[this](const web::Request& request) { return whyNot(request); },
                [this](const web::Request& request) { serve(request); },
                [this](const web::Request& request, SoupWebsocketConnection* connection) {
                    connect(request, connection);
                }}),
      m_plugin({[this] { onApplication(); },
                [this](const base::Message& message) { hear(message); },
                [this] { onApplicationGone(); }}),
      m_calls(m_plugin) {
    m_plugin.hold(true);  // until there is a document
}

PageServer::~PageServer() = default;

std::string PageServer::link() const {
    const bool isBelow = m_options.index.find('/') != std::string::npos;
    return m_server.link() + (isBelow ? m_options.index : "");
}

bool PageServer::start(std::string* error) {
    *error = base::whyNoFile(m_options.folder + "/" + m_options.index);
    return error->empty() && m_plugin.listen(m_options.socket, error) &&
           m_server.start(m_options.port, error);
}

void PageServer::end(const std::string& how, std::function<void()> onTold) {
    m_onTold = std::move(onTold);
    endWith(how);
    m_lastChance.after(m_documents.empty() ? 0 : kTimeToTell, [this] { m_onTold(); });
}

// The HTTP status of what is refused; otherwise 0.
unsigned PageServer::whyNot(const web::Request& request) const {
    const std::string method = request.method();
    const bool isPost = method == SOUP_METHOD_POST;
    if (!isOfOwnSite(request)) {
        return SOUP_STATUS_FORBIDDEN;
    }
    if (!request.header("Sec-Purpose").empty()) {
        return SOUP_STATUS_SERVICE_UNAVAILABLE;  // not shown yet, and perhaps never
    }
    if (isPost != isCall(request) || (!isPost && method != SOUP_METHOD_GET &&
                                      (method != SOUP_METHOD_HEAD || request.isSocket))) {
        return SOUP_STATUS_METHOD_NOT_ALLOWED;
    }
    if (!isPost && !request.isSocket) {
        return 0;
    }
    if (request.header("Origin").empty() || !hasCookie(request, m_cookie)) {
        return SOUP_STATUS_FORBIDDEN;
    }
    if (request.isSocket) {
        return m_documents.size() < kMostDocuments ? 0 : SOUP_STATUS_SERVICE_UNAVAILABLE;
    }
    SoupMessageHeaders* const headers = soup_server_message_get_request_headers(request.message);
    if (soup_message_headers_get_encoding(headers) != SOUP_ENCODING_CONTENT_LENGTH ||
        soup_message_headers_get_content_length(headers) > kLongestBody) {
        return SOUP_STATUS_REQUEST_ENTITY_TOO_LARGE;
    }
    soup_message_body_set_accumulate(soup_server_message_get_request_body(request.message), TRUE);
    return 0;
}

void PageServer::serve(const web::Request& request) {
    if (isCall(request)) {
        serveCall(request);
    } else if (request.path.starts_with(kOwnPath)) {
        // The scripts that each page gets.
        request.answerWithFile(base::besideExecutable(TAV_SCRIPTS),
                               request.path.substr(kOwnPath.size()));
    } else {
        serveFile(request);
    }
}

void PageServer::serveFile(const web::Request& request) {
    const std::string path = request.path == "/" ? m_options.index : request.path;
    const std::optional<std::string> content = readBelow(m_options.folder, path);
    if (!content) {
        soup_server_message_set_status(request.message, SOUP_STATUS_NOT_FOUND, nullptr);
    } else if (web::contentType(path) == web::kHtml && isNavigation(request)) {
        serveDocument(request, *content);
    } else {
        request.answer(SOUP_STATUS_OK, web::contentType(path), *content);
    }
}

void PageServer::serveDocument(const web::Request& request, const std::string& content) {
    const std::string script =
        m_server.root() + ".tav/component.js?page=" + std::to_string(beginDocument());
    const std::string cookie =
        m_cookie + "; Path=" + m_server.root() + "; HttpOnly; SameSite=Strict";
    soup_message_headers_append(soup_server_message_get_response_headers(request.message),
                                "Set-Cookie", cookie.c_str());
    request.answer(SOUP_STATUS_OK, web::kHtml,
                   withElement(content, "<script src=\"" + script + "\"></script>"));
}

void PageServer::serveCall(const web::Request& request) {
    std::string error = m_end;
    const bool isNewest = newest() != nullptr && newest()->number() == documentOf(request);
    if (error.empty() && !isNewest) {
        error = kTaken;
    }
    if (!error.empty()) {
        request.answer(SOUP_STATUS_GONE, web::kJson, base::jsonObject("error", error));
        return;
    }
    newest()->hear();
    if (request.path == kMethods) {
        m_calls.ask(MessageKind::MethodList, {}, request);
    } else if (const auto items = callItems(bodyOf(request), &error)) {
        m_calls.ask(MessageKind::MethodCall, *items, request);
    } else {
        request.answer(SOUP_STATUS_BAD_REQUEST, web::kJson, base::jsonObject("error", error));
    }
}

// The newest document has the plug-in from now on.
int PageServer::beginDocument() {
    Document* const old = newest();
    m_documents.push_back(newDocument(++m_lastNumber));
    m_calls.refuseWaiting(kTaken);
    if (old != nullptr) {
        old->end(kTaken);
        onConnection();
    }
    m_plugin.hold(false);
    return m_lastNumber;
}

std::unique_ptr<Document> PageServer::newDocument(int number) {
    return std::make_unique<Document>(number, m_plugin, [this] { onConnection(); });
}

void PageServer::connect(const web::Request& request, SoupWebsocketConnection* connection) {
    const int number = documentOf(request);
    Document* document = newest();
    const bool isNewest =
        document != nullptr && document->number() == number && !document->hasSocket();
    if (!isNewest) {
        m_documents.push_front(newDocument(number));
        document = m_documents.front().get();
    }
    document->connect(connection);
    if (!m_end.empty() || !isNewest) {
        document->end(m_end.empty() ? kTaken : m_end);
    }
}

// A document has opened or closed its WebSocket, or is no longer the newest. It may be the one that
// calls this.
void PageServer::onConnection() {
    m_events.onPages(newest() != nullptr && newest()->isConnected() ? 1 : 0);
    m_removal.after(0, [this] {
        m_documents.remove_if([this](const auto& document) {
            return document.get() != newest() && document->isGone();
        });
        const bool isTold = std::all_of(m_documents.begin(), m_documents.end(),
                                        [](const auto& document) { return document->isGone(); });
        if (m_onTold && isTold) {
            m_onTold();
        }
    });
}

void PageServer::onApplication() {
    m_lastWords.stop();
    m_end.clear();
    m_calls.start();
    m_events.onApplication();
}

// How it has ended is known better to who has started it.
void PageServer::onApplicationGone() {
    m_lastWords.after(kUntilKnown, [this] { endWith(kGone); });
}

void PageServer::hear(const base::Message& message) {
    bool isUnderstood = false;
    switch (static_cast<MessageKind>(message.kind)) {
    case MessageKind::Answer:
        isUnderstood = m_calls.take(message.content);
        break;
    case MessageKind::CallFunction:
        isUnderstood = newest()->call(message.content);
        break;
    case MessageKind::Frame:
        isUnderstood = true;
        newest()->show(message.content);
        break;
    default:
        break;
    }
    if (!isUnderstood) {
        m_plugin.refuse();
    }
}

void PageServer::endWith(const std::string& how) {
    m_lastWords.stop();
    m_end = how;
    m_calls.refuseAll(how);
    for (const auto& document : m_documents) {
        document->end(how);
    }
}

}  // namespace page

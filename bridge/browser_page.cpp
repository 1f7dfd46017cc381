#include "bridge/browser_page.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "base/socket_address.h"

namespace bridge {
namespace {

// A page that does not take so much evidently takes nothing.
constexpr size_t kMostQueued = size_t{16} << 20;

// A flood of messages must not keep the application from running, even when the native methods that
// it calls handle events and so take further messages.
constexpr int kMostAtOnce = 64;
constexpr int kMostWithinMethod = 1;

constexpr char kTooLong[] = "The application's reply is longer than 32 MiB";

bool isLevel(std::string_view text) {
    return text == "log" || text == "warn" || text == "error";
}

}  // namespace

std::shared_ptr<BrowserPage> BrowserPage::connect(const std::string& path, Events events) {
    const int connected = base::connectTo(path);
    if (connected < 0) {
        return nullptr;
    }
    if (!base::isOfThisUser(connected)) {
        close(connected);
        errno = EACCES;
        return nullptr;
    }
    return std::make_shared<BrowserPage>(connected, std::move(events));
}

BrowserPage::BrowserPage(int connectedSocket, Events events)
    : m_owner(getpid()), m_events(std::move(events)) {
    m_socket.emplace(connectedSocket, kLongestMessage);
}

bool BrowserPage::isGone() const {
    return !m_socket || m_socket->isGone() || getpid() != m_owner;
}

bool BrowserPage::callFunction(const std::string& name,
                               const std::vector<helper::Text>& arguments) {
    const std::string items = callItems(name, arguments);
    if (isGone() || m_socket->queued() > kMostQueued || items.size() > kLongestMessage) {
        return false;
    }
    queue(MessageKind::CallFunction, items);
    return !isGone();
}

short BrowserPage::pollEvents() const {
    const bool isSending = !isGone() && m_socket->queued() > 0;
    return static_cast<short>((isReading() ? POLLIN : 0) | (isSending ? POLLOUT : 0));
}

void BrowserPage::serve() {
    const std::shared_ptr<BrowserPage> self = shared_from_this();  // a method may end the page
    send();
    int left = m_openQuestions == 0 ? kMostAtOnce : kMostWithinMethod;
    for (; left > 0 && isReading(); --left) {
        const std::optional<base::Message> message = m_socket->receiveNow();
        if (!message) {
            break;
        }
        if (!handle(*message)) {
            endWith("its server has sent a malformed message");
        }
    }
    sendFrame();
    noticeEnd();
}

void BrowserPage::send() {
    if (!isGone()) {
        m_socket->sendNow();
        noticeEnd();
    }
}

// As long as a page takes no answers, its next questions wait.
bool BrowserPage::isReading() const {
    return !isGone() && m_methods.list != nullptr && m_openQuestions < kMostOpenQuestions &&
           m_socket->queued() <= kMostQueued;
}

// False when the message is malformed.
bool BrowserPage::handle(const base::Message& message) {
    const auto kind = static_cast<MessageKind>(message.kind);
    helper::ItemReader items(message.content);
    switch (kind) {
    case MessageKind::MethodList:
    case MessageKind::MethodCall: {
        const int number = items.readInt();
        if (items.isSuccessful()) {
            answer(kind, number, items.rest());
        }
        break;
    }
    case MessageKind::ConsoleLine: {
        const std::string level = items.readString();
        const std::string text = items.readString();
        if (!isLevel(level)) {
            return false;
        }
        if (items.isSuccessful()) {
            m_events.onConsole(level, text);
        }
        break;
    }
    case MessageKind::Problem: {
        const std::string text = items.readString();
        if (items.isSuccessful()) {
            m_events.onProblem(text);
        }
        break;
    }
    default:
        return handleView(kind, &items);
    }
    return items.isSuccessful();
}

// The same for what has to do with the application's picture in the page.
bool BrowserPage::handleView(MessageKind kind, helper::ItemReader* items) {
    switch (kind) {
    case MessageKind::FrameWanted: {
        const bool isWhole = items->readBool();
        if (isWhole) {
            m_input.release();  // what the page that looked before holds
            m_changes.forget();
        }
        m_isFrameWanted = true;
        break;
    }
    case MessageKind::Touch: {
        const std::string action = items->readString();
        const int x = items->readInt();
        const int y = items->readInt();
        return items->isSuccessful() && m_input.touch(action, {x, y});
    }
    case MessageKind::Key: {
        const bool isPressed = items->readBool();
        m_input.key(isPressed, items->readString());
        break;
    }
    case MessageKind::Typed:
        m_input.type(items->readString());
        break;
    default:
        return false;
    }
    return items->isSuccessful();
}

void BrowserPage::sendFrame() {
    if (m_isFrameWanted && !isGone()) {
        std::string nothingToSee;
        const std::optional<std::string> frame = m_changes.next(&nothingToSee);
        m_isFrameWanted = !frame;
        if (frame && frame->size() <= kLongestMessage) {
            queue(MessageKind::Frame, *frame);
        }
    }
    m_changes.forgetWhenUnasked();
}

void BrowserPage::answer(MessageKind question, int number, std::string_view call) {
    HDataWriter writer;
    MethodReply reply;
    ++m_openQuestions;
    if (question == MessageKind::MethodList) {
        m_methods.list(&writer);
    } else {
        reply = callMethod(m_methods, call, &writer);
    }
    --m_openQuestions;
    helper::ItemWriter items;
    items.writeInt(number);
    std::string content = items.message();
    if (content.size() + writer.size() <= kLongestMessage) {
        content += itemsOf(writer);
    } else {
        reply = {true, kTooLong};
        items.writeBool(reply.isException);
        items.writeText(reply.text);
        content = items.message();
    }
    if (question == MessageKind::MethodCall && !isGone()) {
        m_events.onCall(call, reply);
    }
    queue(MessageKind::Answer, content);
}

void BrowserPage::queue(MessageKind kind, std::string_view content) {
    if (!isGone()) {
        m_socket->queue(static_cast<uint8_t>(kind), content);
        send();
    }
}

void BrowserPage::noticeEnd() {
    if (m_socket && m_socket->isGone()) {
        endWith(m_socket->isOurs() ? "its server has closed the connection"
                                   : "the application has closed its connection to the page");
    }
}

void BrowserPage::endWith(const std::string& reason) {
    end();
    m_input.release();
    m_events.onGone(reason);
}

}  // namespace bridge

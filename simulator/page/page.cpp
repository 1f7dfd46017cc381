#include "simulator/page/page.h"

#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

#include "helper/items.h"
#include "platform/napp.h"
#include "simulator/device/journal.h"
#include "simulator/device/running.h"
#include "simulator/host/host.h"
#include "simulator/page/page_channel.h"
#include "simulator/page/page_process.h"
#include "simulator/time/clock.h"
#include "simulator/time/queue.h"

namespace tavsim {

namespace {

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;

// Processor time that a script may take before it lets go.
constexpr seconds kLimit(2);

constexpr char kTooLong[] = "stopped: the script ran for more than 2 seconds without a pause";

constexpr pid_t kNoProcess = -1;

// Between two looks at the processor time of a script that sends nothing.
constexpr milliseconds kShortestWait(10);

void printLine(bool toStandardError, const std::string& line) {
    std::fflush(stdout);
    std::fprintf(toStandardError ? stderr : stdout, "%s\n", line.c_str());
}

// The running page: its process, and the events on their way to it.
class Page : public std::enable_shared_from_this<Page> {
public:
    explicit Page(std::string name) : m_name(std::move(name)) {}
    ~Page() { end(); }
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    bool start();
    void end();
    bool isAlive() const { return m_channel != nullptr; }

    // Queues an event for the pump. Should the page end before it is due, nothing happens.
    void post(Milliseconds due, PageMessageKind kind, const helper::ItemWriter& items);

private:
    enum class Wait { Message, TooLong };

    // Delivers the event and serves the page until it is idle. While it is busy, which is when one
    // of the application's methods pumps, the event waits: a script runs to completion.
    void deliver(const PageMessage& event);
    void serve(const PageMessage& event);
    void handle(const PageMessage& message);
    void answerMethodList();
    void answerMethodCall(const std::string& call);
    void setTimer(int timer, int delay);
    void endWith(const std::string& reason);
    std::string reap();  // how the process ended
    nanoseconds processorTime() const;
    Wait waitForMessage(nanoseconds limit) const;

    const std::string m_name;
    std::unique_ptr<PageChannel> m_channel;
    pid_t m_process = kNoProcess;
    pid_t m_owner = kNoProcess;  // a fork of the application must leave the page alone
    bool m_isBusy = false;
    std::deque<PageMessage> m_waiting;
};

// What the host knows of the plug-in.
struct Bridge {
    std::string pageFile;
    NApp_MethodListCallback methodList = nullptr;
    NApp_MethodCallback methodCall = nullptr;
    std::shared_ptr<Page> page;
};

Bridge& bridge() {
    // Never destroyed: the device ends the page later than static objects are destroyed.
    static Bridge& instance = *new Bridge;
    return instance;
}

std::string_view messageOf(const HDataWriter& writer) {
    return {static_cast<const char*>(writer.bytes()), writer.size()};
}

bool Page::start() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        return false;
    }
    m_owner = getpid();
    m_process = fork();
    if (m_process == 0) {
        runPageProcess(ends[1], m_owner);
    }
    close(ends[1]);
    m_channel = std::make_unique<PageChannel>(ends[0]);
    if (m_process < 0) {
        end();
        return false;
    }
    return true;
}

void Page::end() {
    m_waiting.clear();
    m_channel.reset();
    if (m_process > 0 && getpid() == m_owner) {
        kill(m_process, SIGKILL);
        reap();
    }
    m_process = kNoProcess;
}

std::string Page::reap() {
    int status = 0;
    while (waitpid(m_process, &status, 0) < 0 && errno == EINTR) {}
    m_process = kNoProcess;
    return WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                               : "status " + std::to_string(WEXITSTATUS(status));
}

void Page::endWith(const std::string& reason) {
    printLine(true, m_name + ": " + reason);
    end();
}

nanoseconds Page::processorTime() const {
    clockid_t clock;
    timespec time = {};
    if (clock_getcpuclockid(m_process, &clock) != 0 || clock_gettime(clock, &time) != 0) {
        return nanoseconds(0);  // it has ended, which reading from it will show
    }
    return seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

Page::Wait Page::waitForMessage(nanoseconds limit) const {
    pollfd incoming = {m_channel->socket(), POLLIN, 0};
    while (true) {
        const nanoseconds left = limit - processorTime();
        if (left <= nanoseconds(0)) {
            return Wait::TooLong;
        }
        const auto wait = std::max(duration_cast<milliseconds>(left), kShortestWait);
        if (poll(&incoming, 1, static_cast<int>(wait.count())) > 0) {
            return Wait::Message;
        }
    }
}

void Page::post(Milliseconds due, PageMessageKind kind, const helper::ItemWriter& items) {
    schedule(due, [self = weak_from_this(), event = PageMessage{kind, items.message()}] {
        if (const std::shared_ptr<Page> page = self.lock()) {
            page->deliver(event);
        }
    });
}

void Page::deliver(const PageMessage& event) {
    if (!isAlive()) {
        return;
    }
    m_waiting.push_back(event);
    if (std::exchange(m_isBusy, true)) {
        return;
    }
    while (!m_waiting.empty()) {
        const PageMessage next = std::move(m_waiting.front());
        m_waiting.pop_front();
        serve(next);
    }
    m_isBusy = false;
}

void Page::serve(const PageMessage& event) {
    const nanoseconds limit = processorTime() + kLimit;
    m_channel->send(event.kind, event.items);
    while (isAlive()) {
        if (waitForMessage(limit) == Wait::TooLong) {
            endWith(kTooLong);
            return;
        }
        const std::optional<PageMessage> message = m_channel->receive();
        if (!message) {
            endWith("stopped: the page's process ended with " + reap());
            return;
        }
        if (message->kind == PageMessageKind::Idle) {
            return;
        }
        handle(*message);
    }
}

void Page::handle(const PageMessage& message) {
    helper::ItemReader items(message.items);
    switch (message.kind) {
    case PageMessageKind::MethodList:
        answerMethodList();
        break;
    case PageMessageKind::MethodCall:
        answerMethodCall(message.items);
        break;
    case PageMessageKind::ConsoleLine: {
        const bool toStandardError = items.readBool();
        printLine(toStandardError, "[page] " + items.readString());
        break;
    }
    case PageMessageKind::SetTimer: {
        const int timer = items.readInt();
        setTimer(timer, items.readInt());
        break;
    }
    case PageMessageKind::Problem:
        printLine(true, items.readString());
        break;
    default:
        break;
    }
}

void Page::answerMethodList() {
    HDataWriter writer;
    bridge().methodList(&writer);
    if (isAlive()) {
        m_channel->send(PageMessageKind::Answer, messageOf(writer));
    }
}

void Page::answerMethodCall(const std::string& call) {
    HDataReader reader(call.data(), call.size());
    HDataWriter writer;
    const bool wasRead = bridge().methodCall(&reader, &writer);
    if (isAlive()) {
        m_channel->send(PageMessageKind::Answer, wasRead ? messageOf(writer) : std::string_view());
    }
}

void Page::setTimer(int timer, int delay) {
    helper::ItemWriter items;
    items.writeInt(timer);
    post(after(now(), delay), PageMessageKind::TimerDue, items);
}

bool readFile(const std::string& path, std::string* content) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "re"), std::fclose);
    if (file == nullptr) {
        return false;
    }
    char block[4096];
    while (const size_t size = std::fread(block, 1, sizeof block, file.get())) {
        content->append(block, size);
    }
    return std::ferror(file.get()) == 0;
}

// False when there is no process to be had for the page. A script that cannot be read leaves the
// host without a page, which is no reason to refuse the plug-in.
bool openPage(const std::string& pageFile) {
    const std::string name = std::filesystem::path(pageFile).filename();
    std::string source;
    if (!readFile(pageFile, &source)) {
        printLine(true, name + ": cannot be read: " + std::strerror(errno));
        return true;
    }
    const auto page = std::make_shared<Page>(name);
    if (!page->start()) {
        printLine(true, name + ": cannot be run: " + std::strerror(errno));
        return false;
    }
    bridge().page = page;
    helper::ItemWriter items;
    items.writeText(name);
    items.writeText(source);
    page->post(now(), PageMessageKind::RunScript, items);
    return true;
}

bool isConnected() {
    return bridge().methodCall != nullptr;
}

bool connect(NApp_MethodListCallback methodList, NApp_MethodCallback methodCall) {
    const bool accepts = hostAccepts("bridge") && running().plugin;
    if (!accepts || methodList == nullptr || methodCall == nullptr) {
        return false;
    }
    const bool needsPage = !isConnected() && !bridge().pageFile.empty();
    if (needsPage && !openPage(bridge().pageFile)) {
        return false;
    }
    bridge().methodList = methodList;
    bridge().methodCall = methodCall;
    return true;
}

bool isCallable(const char* function, const char* const* arguments, int argumentCount) {
    const bool hasArguments = argumentCount == 0 || (argumentCount > 0 && arguments != nullptr);
    return function != nullptr && hasArguments;
}

helper::Text textOrNull(const char* text) {
    return text != nullptr ? helper::Text(text) : std::nullopt;
}

bool callPage(const char* function, const char* const* arguments, int argumentCount) {
    if (!hostAccepts("bridge") || !isConnected() ||
        !isCallable(function, arguments, argumentCount)) {
        return false;
    }
    if (bridge().pageFile.empty()) {
        return true;
    }
    if (bridge().page == nullptr || !bridge().page->isAlive()) {
        return false;
    }
    helper::ItemWriter items;
    items.writeText(function);
    items.writeInt(argumentCount);
    for (int index = 0; index < argumentCount; ++index) {
        items.writeText(textOrNull(arguments[index]));
    }
    bridge().page->post(now(), PageMessageKind::CallFunction, items);
    return true;
}

}  // namespace

void startPage(const std::string& pageFile) {
    stopPage();
    bridge().pageFile = pageFile;
}

void stopPage() {
    if (bridge().page != nullptr) {
        bridge().page->end();
    }
    bridge() = {};
}

}  // namespace tavsim

bool NApp_RegisterKiteHandlers(NApp_MethodListCallback methodList, NApp_MethodCallback methodCall) {
    const bool accepts = tavsim::connect(methodList, methodCall);
    tavsim::JournalEntry("host", __func__).outcome(tavsim::acceptance(accepts));
    return accepts;
}

bool NApp_JSCall(const char* functionName, const char* const* arguments, int argumentCount) {
    const bool accepts = tavsim::callPage(functionName, arguments, argumentCount);
    tavsim::JournalEntry entry("host", __func__);
    entry.member("function", functionName);
    if (accepts) {
        entry.texts("arguments", arguments, argumentCount);
    }
    entry.outcome(tavsim::acceptance(accepts));
    return accepts;
}

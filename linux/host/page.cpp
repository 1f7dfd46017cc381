#include "linux/host/page.h"

#include <glib-unix.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "base/environment.h"
#include "base/print_line.h"
#include "bridge/browser_page.h"
#include "bridge/calls.h"
#include "linux/bus/pump.h"
#include "linux/host/in_front.h"
#include "platform/napp.h"
#include "platform/sdl_nimbo.h"

namespace tavlinux {
namespace {

constexpr char kVariable[] = "TAV_PAGE_SOCKET";  // set by tav-page for the plug-in of its page

// The connection with the page, and what polls it.
struct Plugin {
    std::shared_ptr<bridge::BrowserPage> page;
    GSource* source = nullptr;
    short events = 0;  // that the source waits for
};

Plugin& plugin() {
    static Plugin& instance = *new Plugin;  // never destroyed, as the application may end anywhere
    return instance;
}

std::string socketPath() {
    return base::environment(kVariable);
}

void stopPolling() {
    if (GSource* const source = std::exchange(plugin().source, nullptr)) {
        g_source_destroy(source);
        g_source_unref(source);
    }
}

void serve();

// The socket is not polled again before it is served, or whoever waits for a service would be
// woken up again and again.
gboolean onReady(gint, GIOCondition, gpointer) {
    stopPolling();
    deliver(serve);
    return G_SOURCE_REMOVE;
}

void pollSocket() {
    const short events = plugin().page->pollEvents();
    if (plugin().source != nullptr && plugin().events == events) {
        return;
    }
    stopPolling();
    if (events != 0) {
        plugin().events = events;
        plugin().source =
            g_unix_fd_source_new(plugin().page->socket(), static_cast<GIOCondition>(events));
        g_source_set_callback(plugin().source, G_SOURCE_FUNC(onReady), nullptr, nullptr);
        g_source_attach(plugin().source, context());
    }
}

// A native method may handle events, and so serve the page's next questions.
void serve() {
    pollSocket();
    plugin().page->serve();
    pollSocket();
}

void tell(std::string_view level, const std::string& text) {
    base::printLine(level == "log" ? stdout : stderr, "[page] " + text);
}

// False, after printing why, when tav-page is not there.
bool connect() {
    plugin().page = bridge::BrowserPage::connect(
        socketPath(), {[](std::string_view, const bridge::MethodReply&) {}, tell,
                       [](const std::string& text) { tell("error", text); },
                       [](const std::string& reason) {
                           base::printLine(stderr, "tav: the page has ended: " + reason);
                       }});
    if (plugin().page == nullptr) {
        base::printLine(stderr, "tav: " + socketPath() + ": " + std::strerror(errno) + "; " +
                                    kVariable +
                                    " names it, but no page is served there. Start the program "
                                    "with tav-page.");
    }
    return plugin().page != nullptr;
}

bool isPlugin() {
    return isInFront() && !socketPath().empty();
}

bool isConnected() {
    return plugin().page != nullptr && !plugin().page->isGone();
}

}  // namespace

void showPicture() {
    if (isConnected()) {
        plugin().page->sendFrame();
        pollSocket();
    }
}

unsigned sendToPage(unsigned milliseconds) {
    if (!isApplicationThread() || !isConnected()) {
        return milliseconds;
    }
    using std::chrono::steady_clock;
    const auto end = steady_clock::now() + std::chrono::milliseconds(milliseconds);
    const auto left = [end] {
        const auto time = std::chrono::ceil<std::chrono::milliseconds>(end - steady_clock::now());
        return std::max<int64_t>(time.count(), 0);
    };
    pollfd socket = {plugin().page->socket(), POLLOUT, 0};
    while ((plugin().page->pollEvents() & POLLOUT) != 0 &&
           poll(&socket, 1, static_cast<int>(std::min<int64_t>(left(), INT_MAX))) > 0) {
        plugin().page->send();
    }
    return static_cast<unsigned>(left());
}

}  // namespace tavlinux

SDL_bool SDL_NimboHookIsComponent() {
    return tavlinux::isPlugin() ? SDL_TRUE : SDL_FALSE;
}

bool NApp_RegisterKiteHandlers(NApp_MethodListCallback methodList, NApp_MethodCallback methodCall) {
    if (!tavlinux::isPlugin() || !tavlinux::isApplicationThread() || methodList == nullptr ||
        methodCall == nullptr || (!tavlinux::isConnected() && !tavlinux::connect())) {
        return false;
    }
    tavlinux::plugin().page->setMethods({methodList, methodCall});
    tavlinux::pollSocket();
    return true;
}

bool NApp_JSCall(const char* functionName, const char* const* arguments, int argumentCount) {
    if (!tavlinux::isApplicationThread() || !tavlinux::isConnected() ||
        !bridge::isCallable(functionName, arguments, argumentCount)) {
        return false;
    }
    const bool accepts = tavlinux::plugin().page->callFunction(
        functionName, bridge::textsOf(arguments, argumentCount));
    tavlinux::pollSocket();
    return accepts;
}

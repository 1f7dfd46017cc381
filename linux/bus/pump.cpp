#include "linux/bus/pump.h"

#include <pthread.h>

#include <deque>
#include <utility>

namespace tavlinux {
namespace {

constexpr int kMostRounds = 64;  // a flood of messages must not keep the application from running

const pthread_t g_applicationThread = pthread_self();  // it has loaded the library
bool g_isStarted = false;
bool g_isFork = false;
bool g_isServed = false;  // waitForDelivery() has just iterated the context

std::deque<std::function<void()>>& queue() {
    static auto& deliveries = *new std::deque<std::function<void()>>;
    return deliveries;
}

gboolean setFlag(gpointer flag) {
    *static_cast<bool*>(flag) = true;
    return G_SOURCE_REMOVE;
}

}  // namespace

GMainContext* context() {
    static GMainContext* own = [] {
        g_isStarted = true;
        // A child process has no threads of GIO, so nothing would ever arrive there.
        pthread_atfork(nullptr, nullptr, [] { g_isFork = true; });
        return g_main_context_new();
    }();
    return own;
}

bool isStarted() {
    return g_isStarted;
}

bool isApplicationThread() {
    return !g_isFork && pthread_equal(pthread_self(), g_applicationThread) != 0;
}

void deliver(std::function<void()> delivery) {
    context();
    queue().push_back(std::move(delivery));
}

void pump() {
    const int rounds = std::exchange(g_isServed, false) ? 0 : kMostRounds;
    for (int i = 0; i < rounds && g_main_context_iteration(context(), FALSE) != FALSE; ++i) {}
    for (size_t count = queue().size(); count > 0 && !queue().empty(); --count) {
        const std::function<void()> delivery = std::move(queue().front());
        queue().pop_front();
        delivery();
    }
}

void waitForDelivery(int milliseconds) {
    serveUntil([] { return !queue().empty(); }, milliseconds);
    g_isServed = true;
}

bool serveUntil(const std::function<bool()>& isSo, int milliseconds) {
    if (!isApplicationThread()) {
        return isSo();
    }
    bool late = false;
    GSource* timer = g_timeout_source_new(static_cast<guint>(milliseconds));
    g_source_set_callback(timer, setFlag, &late, nullptr);
    g_source_attach(timer, context());
    while (!isSo() && !late) {
        g_main_context_iteration(context(), TRUE);
    }
    g_source_destroy(timer);
    g_source_unref(timer);
    return isSo();
}

}  // namespace tavlinux

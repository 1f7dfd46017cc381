// The pump: replies and signals are delivered while the application polls, waits for or pumps SDL
// events.
#pragma once

#include <gio/gio.h>

#include <functional>

namespace tavlinux {

// The longest time that any function waits for a service.
inline constexpr int kLongestWaitMs = 500;

// The private main context for all of GIO. Only the functions below iterate it.
GMainContext* context();

// Operations that GIO starts while such an object exists complete in the context.
class OnContext {
public:
    OnContext() { g_main_context_push_thread_default(context()); }
    ~OnContext() { g_main_context_pop_thread_default(context()); }
    OnContext(const OnContext&) = delete;
    OnContext& operator=(const OnContext&) = delete;
};

// Whether the context has been used.
bool isStarted();

// Whether the calling thread is the application's, which is the one that loaded the library. False
// in a child process that was forked after the context was made, as GIO's threads are not in it.
bool isApplicationThread();

// Queues a function that calls the library or the application.
void deliver(std::function<void()> delivery);

// Iterates the context without waiting, then delivers what is queued by then. A delivery may call
// pump. What a delivery queues waits for the next call. On the application's thread only.
void pump();

// Iterates the context until something is queued, for that many milliseconds at most.
void waitForDelivery(int milliseconds);

// Iterates the context until the condition holds, and delivers nothing. Returns whether it holds:
// false after the time-out. On other threads than the application's, it does not wait.
bool serveUntil(const std::function<bool()>& isSo, int milliseconds = kLongestWaitMs);

}  // namespace tavlinux

// When this system delivers: while the application polls, waits for or pumps SDL events.
#ifndef TAV_LINUX_BUS_PUMP_H
#define TAV_LINUX_BUS_PUMP_H

#include <gio/gio.h>

#include <functional>

namespace tavlinux {

// The private context in which everything of GIO runs; nothing but the functions below serves it.
GMainContext* context();

// What GIO starts while one of these lives reports to the context.
class OnContext {
public:
    OnContext() { g_main_context_push_thread_default(context()); }
    ~OnContext() { g_main_context_pop_thread_default(context()); }
    OnContext(const OnContext&) = delete;
    OnContext& operator=(const OnContext&) = delete;
};

// Whether the context has been used.
bool isStarted();

// Whether the calling thread is the application's, which loaded the library, and this is no fork
// that was made after the context: GIO's threads are not in it.
bool isApplicationThread();

// Queues what is to call the library or the application.
void deliver(std::function<void()> delivery);

// Serves the context without waiting, then delivers what is queued by then. A delivery may pump
// itself, and what it queues waits for the next time. On the application's thread only.
void pump();

// Serves the context until there is something to deliver, for some milliseconds at the most.
void waitForDelivery(int milliseconds);

// Serves the context until something is so, and delivers nothing. False when that took too long, or
// on another thread than the application's.
bool serveUntil(const std::function<bool()>& isSo, int milliseconds);

}  // namespace tavlinux

#endif

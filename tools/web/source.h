// What the main loop calls.
#pragma once

#include <glib-unix.h>
#include <glib.h>

#include <functional>
#include <utility>

namespace web {

// Calls a function from the main loop, again and again, until it is stopped or destroyed. Both are
// possible from the function itself. The process ends where the function throws.
class Source {
public:
    using Function = std::function<void()>;

    Source() = default;
    ~Source() { stop(); }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    bool isRunning() const { return m_id != 0; }

    void stop() {
        if (const guint id = std::exchange(m_id, 0); id != 0) {
            g_source_remove(id);
        }
    }

    void every(guint milliseconds, Function function) {
        stop();
        m_id = g_timeout_add_full(G_PRIORITY_DEFAULT, milliseconds, call,
                                  new Function(std::move(function)), destroy);
    }

    // Once.
    void after(guint milliseconds, Function function) {
        every(milliseconds, [this, function = std::move(function)] {
            stop();
            function();
        });
    }

    void onReady(int descriptor, GIOCondition condition, Function function) {
        stop();
        m_id = g_unix_fd_add_full(G_PRIORITY_DEFAULT, descriptor, condition, callForDescriptor,
                                  new Function(std::move(function)), destroy);
    }

    void onSignal(int number, Function function) {
        stop();
        m_id = g_unix_signal_add_full(G_PRIORITY_DEFAULT, number, call,
                                      new Function(std::move(function)), destroy);
    }

private:
    static gboolean call(gpointer function) noexcept {
        (*static_cast<Function*>(function))();
        return G_SOURCE_CONTINUE;
    }

    static gboolean callForDescriptor(gint, GIOCondition, gpointer function) noexcept {
        return call(function);
    }

    static void destroy(gpointer function) noexcept { delete static_cast<Function*>(function); }

    guint m_id = 0;
};

}  // namespace web

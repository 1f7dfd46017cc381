// The life of a server process.
#pragma once

#include <glib.h>

#include <functional>
#include <string>

#include "tools/web/source.h"

namespace web {

class MainLoop {
public:
    // Tells the browser how everything has ended, and then calls the function.
    using Teller = std::function<void(const std::string& how, std::function<void()> onTold)>;

    explicit MainLoop(Teller tell);
    ~MainLoop() { g_main_loop_unref(m_loop); }
    MainLoop(const MainLoop&) = delete;
    MainLoop& operator=(const MainLoop&) = delete;

    // Ends it, too, when the `tavsim run` that has started this process says on standard input how
    // its program has ended, or dies.
    void endWithRun();

    // Prints the link, and runs until an interrupt, which the browser is told in these words.
    void run(const std::string& link, const std::string& interrupted);

private:
    void readInput();
    void end(const std::string& how);

    const Teller m_tell;
    GMainLoop* m_loop;
    Source m_input;
    Source m_interrupt;
    Source m_termination;
    std::string m_sentence;
};

}  // namespace web

#include "tools/web/main_loop.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <utility>

namespace web {
namespace {

constexpr char kKilled[] = "tavsim was killed, and its program with it.";
constexpr size_t kLongestSentence = 4096;

}  // namespace

MainLoop::MainLoop(Teller tell) : m_tell(std::move(tell)), m_loop(g_main_loop_new(nullptr, FALSE)) {
}

void MainLoop::endWithRun() {
    m_input.onReady(STDIN_FILENO, G_IO_IN, [this] { readInput(); });
}

void MainLoop::run(const std::string& link, const std::string& interrupted) {
    m_interrupt.onSignal(SIGINT, [this, interrupted] { end(interrupted); });
    m_termination.onSignal(SIGTERM, [this, interrupted] { end(interrupted); });
    std::printf("%s\n", link.c_str());
    std::fflush(stdout);
    g_main_loop_run(m_loop);
}

// The run closes its end of the pipe in any case.
void MainLoop::readInput() {
    char bytes[kLongestSentence];
    const ssize_t count = read(STDIN_FILENO, bytes, sizeof bytes);
    m_sentence.append(bytes, count > 0 ? static_cast<size_t>(count) : 0);
    const size_t length = m_sentence.find('\n');
    if (length != std::string::npos || count <= 0) {
        end(length != std::string::npos ? m_sentence.substr(0, length) : kKilled);
    }
}

void MainLoop::end(const std::string& how) {
    m_input.stop();
    m_tell(how, [this] { g_main_loop_quit(m_loop); });
}

}  // namespace web

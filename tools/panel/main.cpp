// The device in a browser: what `tavsim panel` and `tavsim run --panel` start.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "browser.h"
#include "security.h"
#include "server.h"
#include "simulator/device/edge.h"

namespace panel {
namespace {

constexpr char kKilled[] = "tavsim was killed, and its program with it.";
constexpr char kInterrupted[] = "The panel was ended.";
constexpr size_t kLongestSentence = 4096;

int complain(const std::string& text) {
    std::fprintf(stderr, "tavsim: panel: %s\n", text.c_str());
    return tavsim::kBadSetup;
}

class Panel {
public:
    explicit Panel(const Options& options)
        : m_options(options), m_loop(g_main_loop_new(nullptr, FALSE)), m_server(options) {}
    ~Panel() { g_main_loop_unref(m_loop); }
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    int run() {
        std::string error;
        if (!m_server.start(&error)) {
            return complain(error);
        }
        if (!m_options.run.empty()) {
            m_input.onReady(STDIN_FILENO, G_IO_IN, [this] { readInput(); });
        }
        m_interrupt.onSignal(SIGINT, [this] { end(kInterrupted); });
        m_termination.onSignal(SIGTERM, [this] { end(kInterrupted); });
        std::printf("%s\n", m_server.link().c_str());
        std::fflush(stdout);
        g_main_loop_run(m_loop);
        return 0;
    }

private:
    // The run says how its program has ended, and closes its end of the pipe in any case.
    void readInput() {
        char bytes[kLongestSentence];
        const ssize_t count = read(STDIN_FILENO, bytes, sizeof bytes);
        m_sentence.append(bytes, count > 0 ? static_cast<size_t>(count) : 0);
        const size_t length = m_sentence.find('\n');
        if (length != std::string::npos || count <= 0) {
            end(length != std::string::npos ? m_sentence.substr(0, length) : kKilled);
        }
    }

    void end(const std::string& how) {
        m_input.stop();
        m_server.end(how, [this] { g_main_loop_quit(m_loop); });
    }

    const Options& m_options;
    GMainLoop* m_loop;
    Server m_server;
    web::Source m_input;
    web::Source m_interrupt;
    web::Source m_termination;
    std::string m_sentence;
};

}  // namespace
}  // namespace panel

int main(int argc, char** argv) try {
    panel::Options options;
    CLI::App app("Shows simulated devices in a browser");
    app.name("tavsim-panel");
    app.add_option("--port", options.port, "Port to listen on; any when not given")
        ->check(CLI::Range(0, 65535));
    app.add_option("--tiles", options.tiles, "Address of a tile server, with {x}, {y} and {z}");
    std::vector<std::string> run;
    app.add_option(
        "run", run,
        "What `tavsim run` hands over: the root folder of its device, the header of its\n"
        "recording, and the words to run its program again");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : tavsim::kBadSetup;
    }
    if (run.size() > 1) {
        options.run = run[0];
        options.header = run[1];
        options.command.assign(run.begin() + 2, run.end());
    }
    if (!options.tiles.empty() && !panel::originOfTiles(options.tiles)) {
        return panel::complain("--tiles: an address such as https://tiles.example/{z}/{x}/{y}.png");
    }
    return panel::Panel(options).run();
} catch (const std::exception& error) {
    return panel::complain(error.what());
}

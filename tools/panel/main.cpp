// The device in a browser: what `tavsim panel` and `tavsim run --panel` start.
#include <CLI/CLI.hpp>
#include <exception>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "browser.h"
#include "security.h"
#include "server.h"
#include "tools/process/exit_status.h"
#include "tools/web/main_loop.h"

namespace panel {
namespace {

constexpr char kInterrupted[] = "The panel was ended.";

int run(const Options& options) {
    Server server(options);
    std::string error;
    if (!server.start(&error)) {
        return tools::complain("panel: " + error);
    }
    web::MainLoop loop([&server](const std::string& how, std::function<void()> onTold) {
        server.end(how, std::move(onTold));
    });
    if (!options.run.empty()) {
        loop.endWithRun();
    }
    loop.run(server.link(), kInterrupted);
    return 0;
}

}  // namespace
}  // namespace panel

int main(int argc, char** argv) try {
    panel::Options options;
    CLI::App app("Shows simulated devices in a browser");
    app.name("tavsim-panel");
    app.set_version_flag("--version", std::string("tavsim-panel ") + TAV_VERSION);
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
        return app.exit(error) == 0 ? 0 : tools::kBadSetup;
    }
    if (run.size() > 1) {
        options.run = run[0];
        options.header = run[1];
        options.command.assign(run.begin() + 2, run.end());
    }
    if (!options.tiles.empty() && !panel::originOfTiles(options.tiles)) {
        return tools::complain(
            "panel: --tiles: an address such as https://tiles.example/{z}/{x}/{y}.png");
    }
    return panel::run(options);
} catch (const std::exception& error) {
    return tools::complain(std::string("panel: ") + error.what());
}

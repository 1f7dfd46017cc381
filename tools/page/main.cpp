// A plug-in's page in the user's browser: `tav-page FOLDER`, and what `tavsim run --page` starts.
#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/file.h"
#include "complain.h"
#include "launcher.h"
#include "page_server.h"
#include "tools/web/main_loop.h"

namespace fs = std::filesystem;

namespace page {
namespace {

constexpr char kInterrupted[] = "The page's server was ended.";
constexpr int kLastPort = 65535;
constexpr int kLongestLinger = 24 * 3600;  // seconds

int launch(LaunchOptions options) {
    std::string error;
    options.folder = fs::absolute(options.folder).lexically_normal();
    std::optional<Application> application = readApplication(options.folder, &error);
    if (!application) {
        return complain(error);
    }
    options.application = std::move(*application);
    return Launcher(std::move(options)).run();
}

// The page of a plug-in that `tavsim run` starts.
int serve(const std::string& index, const std::string& socket, int port) {
    const fs::path path = fs::absolute(index).lexically_normal();
    ServerOptions options{path.parent_path(), path.filename(), {}, socket, port};
    std::string error = base::whyNoFile(path);
    if (!error.empty() || !readHosts(options.folder, &options.hosts, &error)) {
        return complain(error);
    }
    PageServer server(options, {[] {}, [](size_t) {}});
    if (!server.start(&error)) {
        return complain(error);
    }
    web::MainLoop loop([&server](const std::string& how, std::function<void()> onTold) {
        server.end(how, std::move(onTold));
    });
    loop.endWithRun();
    loop.run(server.link(), kInterrupted);
    return 0;
}

}  // namespace
}  // namespace page

int main(int argc, char** argv) try {
    page::LaunchOptions options;
    options.browser = "xdg-open";
    CLI::App app("Shows a plug-in's page in a browser: tav-page [OPTIONS] FOLDER [-- ARGUMENTS]");
    app.name("tav-page");
    app.set_version_flag("--version", std::string("tav-page ") + TAV_VERSION);
    app.add_option("--browser", options.browser,
                   "Command that opens the page; {} in it stands for the link")
        ->capture_default_str();
    app.add_option("--port", options.port, "Port to listen on; any when not given")
        ->check(CLI::Range(0, page::kLastPort));
    app.add_option("--linger", options.linger,
                   "Seconds without a page after which the program is ended")
        ->check(CLI::Range(1, page::kLongestLinger))
        ->capture_default_str();
    std::string socket;
    app.add_option("--socket", socket,
                   "What `tavsim run` gives: where its program connects; FOLDER is the page's file")
        ->excludes("--browser")
        ->excludes("--linger");
    app.add_option("FOLDER", options.folder, "With the page, the program and their appinfo.json")
        ->required();
    app.add_option("ARGUMENTS", options.arguments, "Of the program");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return error.get_exit_code() == 0
                   ? app.exit(error)
                   : page::complain(error.what() + std::string("; see tav-page --help"));
    }
    return socket.empty() ? page::launch(std::move(options))
                          : page::serve(options.folder, socket, options.port);
} catch (const std::exception& error) {
    return page::complain(error.what());
}

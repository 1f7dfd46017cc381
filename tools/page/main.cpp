// A plug-in's page in the user's browser: `tav-page FOLDER`, and what `tavsim run --page` starts.
#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "complain.h"
#include "launcher.h"

namespace fs = std::filesystem;

namespace page {
namespace {

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
        ->check(CLI::Range(0, page::kLongestLinger))
        ->capture_default_str();
    app.add_option("FOLDER", options.folder, "With the page, the program and their appinfo.json")
        ->required();
    app.add_option("ARGUMENTS", options.arguments, "Of the program");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : tools::kBadSetup;
    }
    return page::launch(std::move(options));
} catch (const std::exception& error) {
    return page::complain(error.what());
}

// The command line of the simulated device.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>

#include "ctl.h"
#include "run.h"
#include "simulator/control/commands.h"
#include "simulator/device/profile.h"

namespace fs = std::filesystem;

namespace {

constexpr int kBadUsage = 2;
constexpr double kLongestTimeout = 7 * 24 * 3600;  // seconds

int complain(const std::string& text) {
    std::fprintf(stderr, "tavsim: %s\n", text.c_str());
    return kBadUsage;
}

int listDevices() {
    std::vector<fs::path> files;
    std::error_code problem;
    for (fs::directory_iterator at(tavsim::profileFolder(), problem), end; !problem && at != end;
         at.increment(problem)) {
        files.push_back(at->path());
    }
    if (problem) {
        return complain(tavsim::profileFolder() + ": " + problem.message());
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        std::string error;
        const std::optional<tavsim::Profile> profile = tavsim::readProfile(file, &error);
        std::printf("%-12s %s\n", file.stem().c_str(),
                    profile ? profile->title.c_str() : error.c_str());
    }
    return 0;
}

// The problem with a number of seconds; empty when there is none.
std::string isDuration(const std::string& text) {
    double seconds = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, seconds);
    const bool isValid =
        read.ec == std::errc() && read.ptr == end && seconds > 0 && seconds <= kLongestTimeout;
    return isValid ? std::string() : "must be a number of seconds above 0";
}

CLI::App* addRun(CLI::App& app, tools::RunRequest* request) {
    CLI::App* run = app.add_subcommand(
        "run",
        "Run a program on a simulated device: tavsim run [OPTIONS] [--] PROGRAM [ARGUMENTS]");
    run->add_option("--device", request->device,
                    "A device of `tavsim devices`, or the file of a profile")
        ->capture_default_str();
    run->add_option("--root", request->root,
                    "Folder of the device's files; a fresh one each time when not given");
    run->add_option("--page", request->page,
                    "Run the program as a plug-in of the page with this script");
    run->add_flag("--plugin", request->plugin,
                  "Run the program as a plug-in whose host never calls");
    run->add_flag("--virtual-time", request->virtualTime,
                  "Let SDL_Delay cost nothing and SDL_GetTicks follow it");
    run->add_option("--journal", request->journal,
                    "Write what the program does to the device into this file");
    run->add_option("--timeout", request->timeout,
                    "End the program when it still runs after so many seconds")
        ->check(isDuration);
    // Everything from the program's name on is the program's own.
    run->prefix_command();
    return run;
}

CLI::App* addControl(CLI::App& app, tools::ControlRequest* request) {
    CLI::App* ctl = app.add_subcommand(
        "ctl", "Steer a running device: tavsim ctl [OPTIONS] COMMAND [ARGUMENTS]");
    ctl->add_option("--root", request->root,
                    "Root folder of the device; the only running one when not given")
        ->envname("TAVSIM_ROOT");
    ctl->add_option("--timeout", request->timeout, "Seconds that the application has to answer")
        ->check(CLI::Range(0.0, kLongestTimeout))
        ->capture_default_str();
    ctl->prefix_command();
    ctl->footer("Commands:\n" + tavsim::commandsHelp());
    return ctl;
}

}  // namespace

int main(int argc, char** argv) try {
    CLI::App app("Runs programs on a simulated device");
    app.name("tavsim");
    app.require_subcommand(1);
    tools::RunRequest request;
    CLI::App* run = addRun(app, &request);
    tools::ControlRequest command;
    CLI::App* ctl = addControl(app, &command);
    CLI::App* devices = app.add_subcommand("devices", "List the devices that come with it");
    // What stands behind "--" is a program or one of its arguments, whatever it looks like.
    char** const end = argv + argc;
    char** const dashes = std::find(argv, end, std::string_view("--"));
    try {
        app.parse(static_cast<int>(dashes - argv), argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kBadUsage;
    }
    if (devices->parsed()) {
        return listDevices();
    }
    std::vector<std::string> words = (ctl->parsed() ? ctl : run)->remaining();
    if (run->parsed() && !words.empty() && words[0][0] == '-') {
        return complain("run: unknown option " + words[0] +
                        " (`tavsim run --help` lists the options)");
    }
    if (dashes != end) {
        // In front of the program "--" is ours; behind its name it is one of its arguments.
        words.insert(words.end(), words.empty() ? dashes + 1 : dashes, end);
    }
    if (ctl->parsed()) {
        command.command = words;
        return tools::control(command);
    }
    if (words.empty()) {
        return complain("run: no program given");
    }
    request.command = words;
    return tools::run(request);
} catch (const std::exception& error) {
    std::fprintf(stderr, "tavsim: %s\n", error.what());
    return kBadUsage;
}

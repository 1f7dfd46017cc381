// The command line of the simulated device.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "base/json/writer.h"
#include "base/number.h"
#include "base/suggestion.h"
#include "journal.h"
#include "run.h"
#include "run_servers.h"
#include "simulator/control/commands.h"
#include "simulator/device/profile.h"
#include "tools/control/ctl.h"
#include "tools/new/new.h"
#include "tools/process/exit_status.h"
#include "tools/test/test.h"

namespace {

using tools::complain;

constexpr int kMostJobs = 256;
constexpr int kLastPort = 65535;
constexpr char kReal[] = "--real";
constexpr double kLongestTimeout = 7 * 24 * 3600;  // seconds
constexpr char kDurations[] = "must be a number of seconds above 0 and at most 604800";

int listDevices(bool asJson) {
    base::JsonWriter json;
    json.beginArray();
    const std::vector<std::string> names = tavsim::profileNames();
    for (const std::string& name : names) {
        const std::string file = tavsim::profilePath(name);
        std::string error;
        const std::optional<tavsim::Profile> profile = tavsim::readProfile(file, &error);
        json.beginObject().members("name", name, "file", file);
        profile ? json.member("title", profile->title) : json.member("error", error);
        json.endObject();
        if (!asJson) {
            std::printf("%-12s %s\n", name.c_str(),
                        profile ? profile->title.c_str() : error.c_str());
        }
    }
    if (asJson) {
        std::puts(json.endArray().text().c_str());
        return 0;
    }
    return names.empty() ? complain(tavsim::profileFolder() + ": no device profiles there") : 0;
}

// What is wrong with a number of seconds; empty when nothing is.
std::string isDuration(const std::string& text) {
    const double seconds = base::numberIn<double>(text).value_or(0);
    return seconds > 0 && seconds <= kLongestTimeout ? std::string() : kDurations;
}

void addPanelOptions(CLI::App* app, tools::PanelOptions* options) {
    app->add_option("--tiles", options->tiles,
                    "Address of a tile server for the panel's map, with {x}, {y} and {z}");
    app->add_option("--port", options->port, "Port of the panel; any when not given")
        ->check(CLI::Range(0, kLastPort));
}

void addRun(CLI::App& app, tools::RunRequest* request) {
    CLI::App* run = app.add_subcommand(
        "run",
        "Run a program on a simulated device: tavsim run [OPTIONS] [--] PROGRAM [ARGUMENTS]");
    run->add_option("--device", request->device,
                    std::string("A device of `tavsim devices`, or the file of a profile; ") +
                        tavsim::kDefaultDevice + " when not given");
    run->add_option("--root", request->root,
                    "Folder of the device's files; a fresh one each time when not given");
    run->add_option("--page", request->page,
                    "Run the program as a plug-in of this page: a script, or an HTML file for the\n"
                    "browser, at the address that is printed");
    run->add_flag("--plugin", request->plugin,
                  "Run the program as a plug-in whose host never calls");
    run->add_flag("--virtual-time", request->virtualTime,
                  "Let SDL_Delay cost nothing and SDL_GetTicks follow it");
    run->add_option("--journal", request->journal,
                    "Write what the program does to the device into this file");
    run->add_option("--scenario", request->scenario,
                    "Play this scenario, and find out whether all is as it expects");
    run->add_option("--row", request->row, "Play the scenario with this row of its table");
    run->add_flag("--update-pictures", request->updatePictures,
                  "Store anew the pictures of the scenario that differ");
    run->add_option("--differences", request->differences,
                    "Folder for pictures of differences; beside the stored ones when not given");
    run->add_option("--record", request->record,
                    "Write what happens to the device from outside into this file, as a scenario");
    run->add_option("--timeout", request->timeout,
                    "End the program when it still runs after so many seconds")
        ->check(isDuration);
    run->add_flag("--panel", request->panel,
                  "Show the device in a browser, at the address that is printed");
    addPanelOptions(run, &request->panelOptions);
    run->add_flag(kReal, request->real,
                  "Run the program on this machine's own services, however it was linked");
    // Everything from the program's name on belongs to the program.
    run->prefix_command();
}

// Options that describe the device mean nothing without one.
bool isOnlyReal(const CLI::App& run) {
    const std::vector<const CLI::Option*> options = run.get_options();
    return std::all_of(options.begin(), options.end(), [](const CLI::Option* option) {
        return option->check_name(kReal) || option->count() == 0;
    });
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

std::string unknownOption(const CLI::App& app, const std::string& word) {
    const std::string given = word.substr(0, word.find('='));
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return "no option \"" + given + "\"" + base::suggestion(given, names);
}

// What is wrong with the first word; empty when it is a command or an option.
std::string whyNoCommand(const CLI::App& app, const std::string& word) {
    if (word[0] == '-') {
        return app.get_option_no_throw(word) == nullptr ? unknownOption(app, word) : "";
    }
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    const bool isKnown = std::find(names.begin(), names.end(), word) != names.end();
    return isKnown ? "" : "no command \"" + word + "\"" + base::suggestion(word, names);
}

CLI::App* addTest(CLI::App& app, tools::TestRequest* request) {
    CLI::App* test = app.add_subcommand(
        "test", "Run scenarios as tests: tavsim test [OPTIONS] FOLDER|FILE|PROGRAM...");
    test->add_option("--jobs", request->jobs,
                     "How many run at once; as many as there are processors when not given")
        ->check(CLI::Range(1, kMostJobs));
    test->add_option("--device", request->device, "The device of all, in place of their own");
    test->add_option("--program", request->program, "The program of all, in place of their own");
    test->add_option("--junit", request->junit, "Write a report as JUnit's XML into this file");
    test->add_option("--filter", request->filter,
                     "Only scenarios with this in their names; * stands for any characters");
    test->add_flag("--failed", request->failed, "Only those that failed when they last ran");
    test->add_flag("--verbose", request->verbose,
                   "Show each that passes too, and the five slowest");
    test->add_flag("--update-pictures", request->updatePictures,
                   "Store anew the pictures that differ, and tell by how much they did");
    test->add_option("paths", request->paths,
                     "Scenarios, folders with *.scenario, and programs that bring theirs along");
    test->allow_extras();
    return test;
}

CLI::App* addJournal(CLI::App& app, bool* withNumbers) {
    CLI::App* journal = app.add_subcommand(
        "journal", "Show the entries of a journal: tavsim journal [--number] FILE [PATTERN]");
    journal->add_flag("--number", *withNumbers,
                      "Print in front of each entry which it is, from 0 on");
    journal->prefix_command();
    return journal;
}

CLI::App* addNew(CLI::App& app, tools::NewRequest* request) {
    CLI::App* create = app.add_subcommand(
        "new", "Make the smallest complete project of an application: tavsim new FOLDER");
    create->add_option("--name", request->name, "The program's name; the folder's when not given");
    create->add_option("--id", request->id,
                       "The application's name on the buses; org.example.NAME when not given");
    create->add_option("folder", request->folder, "A new folder, or an empty one");
    create->allow_extras();
    return create;
}

}  // namespace

int main(int argc, char** argv) try {
    CLI::App app("Runs programs on a simulated device");
    app.name("tavsim");
    app.set_version_flag("--version", std::string("tavsim ") + TAV_VERSION);
    app.require_subcommand(1);
    tools::RunRequest request;
    addRun(app, &request);
    tools::ControlRequest command;
    CLI::App* ctl = addControl(app, &command);
    tools::TestRequest tests;
    const CLI::App* test = addTest(app, &tests);
    bool withNumbers = false;
    const CLI::App* journal = addJournal(app, &withNumbers);
    tools::NewRequest newProject;
    const CLI::App* create = addNew(app, &newProject);
    CLI::App* panel = app.add_subcommand("panel", "Show all running devices in a browser");
    tools::PanelOptions panelOptions;
    addPanelOptions(panel, &panelOptions);
    panel->prefix_command();
    CLI::App* devices = app.add_subcommand("devices", "List the devices that come with it");
    bool asJson = false;
    devices->add_flag("--json", asJson, "List them as JSON");
    devices->prefix_command();
    // The words after "--" are a program and its arguments, whatever they look like.
    char** const end = argv + argc;
    char** const dashes = std::find(argv, end, std::string_view("--"));
    if (const std::string problem = dashes > argv + 1 ? whyNoCommand(app, argv[1]) : "";
        !problem.empty()) {
        return complain(problem);
    }
    try {
        app.parse(static_cast<int>(dashes - argv), argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : tools::kBadSetup;
    }
    const CLI::App& used = *app.get_subcommands().front();
    std::vector<std::string> words = used.remaining();
    if (!words.empty() && words[0][0] == '-') {
        return complain(used.get_name() + ": " + unknownOption(used, words[0]));
    }
    if (dashes != end) {
        // A "--" before the program's name is ours; after it, it is an argument of the program.
        words.insert(words.end(), words.empty() ? dashes + 1 : dashes, end);
    }
    if ((&used == devices || &used == panel || &used == create) && !words.empty()) {
        return complain(used.get_name() + ": takes no \"" + words[0] + "\"");
    }
    if (&used == devices) {
        return listDevices(asJson);
    }
    if (&used == create) {
        return tools::makeProject(newProject);
    }
    if (&used == panel) {
        return tools::runPanel(panelOptions);
    }
    if (&used == test) {
        tests.paths.insert(tests.paths.end(), words.begin(), words.end());
        return tools::test(tests);
    }
    if (&used == journal) {
        return tools::showJournal(words, withNumbers);
    }
    if (&used == ctl) {
        command.command = words;
        return tools::control(command);
    }
    if (request.real && !isOnlyReal(used)) {
        return complain("run: --real stands alone: there is no simulated device");
    }
    if (!request.panel && (used.count("--tiles") + used.count("--port")) > 0) {
        return complain("run: --tiles and --port are options of --panel");
    }
    request.command = words;
    return tools::run(std::move(request));
} catch (const std::exception& error) {
    return complain(error.what());
}

#include "simulator/control/commands.h"

#include <algorithm>
#include <filesystem>

#include "base/json/writer.h"
#include "base/suggestion.h"
#include "simulator/control/command_functions.h"
#include "simulator/control/usage.h"
#include "simulator/time/clock.h"

namespace tavsim {
namespace {

struct Command {
    std::string_view name;       // one word or two
    std::string_view arguments;  // as the usage shows them
    std::string_view help;
    CommandOutcome (*carryOut)(Words words);  // null where no device is needed
    bool shows = false;                       // all it does is to put something out
};

constexpr Command kCommands[] = {
    {"list", "[--json]", "Show the running devices: root folder, profile and program.", nullptr},
    {"wait", "ready|ended|MEMBER=GLOB... [within TIME]",
     "Wait until the application handles its events, or has ended, or the journal has an entry\n"
     "      with these members. 0 when that is so, 1 when it is not in its time.",
     nullptr},
    {"compass", "INT DOUBLE DOUBLE", "Deliver a compass reading.", compass},
    {"compass follow", "on|off", "Let the compass point where the device is heading, or not.",
     compassFollow},
    {"location",
     "LATITUDE LONGITUDE ALTITUDE HORIZONTAL_ACCURACY VERTICAL_ACCURACY HEADING VELOCITY",
     "Put the device there.", location},
    {"location error", "CODE", "Send an error of the location service.", locationError},
    {"location lost", "[CODE]", "Let the device not know its position from now on.", locationLost},
    {"location found", "", "Let it know its position again.", locationFound},
    {"walk", "SPEED [every TIME|every METRESm] LAT,LON...",
     "Walk from one place to the next at so many metres a second, with a fix every second, every\n"
     "      so often or every so many metres. With one place, from where the device is.",
     walk},
    {"track", "FILE [FACTOR]",
     "Move as a GPX file or an NMEA 0183 log has recorded, or at so many times that speed.", track},
    {"reply", "URI TEXT", "Send a reply to every open call and subscription of the service.",
     reply},
    {"answer", "URI TEXT",
     "Let the service answer this from now on, and its subscriptions at once.", answer},
    {"silence", "URI", "Let the service answer nothing from now on; calls stay open.", silence},
    {"refuse", "NAME|URI [for TIME] [request N]",
     "Refuse from now on, for a time, or only the N-th request from now: keyboard, minimize,\n"
     "      touch, compass, bridge, orientation, gestures, banners, pauseUi or screenTimeout, or\n"
     "      requests to a service.",
     refuse},
    {"allow", "NAME|URI", "Take refuse, answer and silence back.", allow},
    {"fail", "KIND:N[+]",
     "Let the N-th allocation, dispatch, host request or read from now fail; with + all behind it\n"
     "      too. The kinds are allocation, dispatch, host and read.",
     fail},
    {"set property", "KEY VALUE", "Set a system property.", setProperty},
    {"set appinfo", "KEY VALUE", "Set a value of the application's information.", setAppinfo},
    {"set preference", "KEY JSON", "Store one of the user's preferences.", setPreference},
    {"plugin", "on|off", "Let the application be a plug-in, or not.", plugin},
    {"state", "[--json]", "Show what the application has made of the device.", state, true},
    {"journal", "[--follow]",
     "Show what it has done, and with --follow also what it does from now on.", journal, true},
    {"key", "down|up|tap NAME", "Press a key, release it, or both; named as SDL_GetKeyName() does.",
     pressKey},
    {"text", "TEXT", "Type the text, key by key.", typeText},
    {"touch", "down|move|up X Y", "Touch the screen, move the finger, or take it away.", touch},
    {"tap", "X Y", "Touch the screen for a moment.", tap},
    {"drag", "X Y X Y [TIME]", "Drag a finger from one point to the other, within that time.",
     drag},
    {"window", "minimize|restore", "Put the application's window away, or show it again.", window},
    {"screenshot", "FILE", "Store the application's surface as a PNG.", screenshot},
    {"picture", "FILE [TOLERANCE]",
     "Compare the application's surface with a PNG; a channel may differ by so much, of 255.",
     picture},
    {"quit", "", "Send the application SDL's quit event.", quit},
};

std::string usageOf(const Command& command) {
    return std::string(command.name) + (command.arguments.empty() ? "" : " ") +
           std::string(command.arguments);
}

// Without a command of that name: those with the same first word, the one that was meant, or all.
std::string unknownCommand(std::string_view word, std::vector<std::string> names) {
    const std::string family = std::string(word) + " ";
    std::string relatives;
    std::string all;
    for (const Command& command : kCommands) {
        if (command.name.starts_with(family)) {
            relatives += (relatives.empty() ? "usage: " : ", or ") + usageOf(command);
        }
        all += (all.empty() ? "" : ", ") + std::string(command.name);
        names.emplace_back(command.name.substr(0, command.name.find(' ')));
    }
    if (!relatives.empty()) {
        return relatives;
    }
    const std::string meant = base::suggestion(word, names);
    return "no command " + base::quoted(word) + (meant.empty() ? "; there are " + all : meant);
}

const Command* findCommand(std::string_view name) {
    const auto* found = std::find_if(std::begin(kCommands), std::end(kCommands),
                                     [name](const Command& one) { return one.name == name; });
    return found != std::end(kCommands) ? found : nullptr;
}

// A command line, taken apart; without a command where there is none of that name.
struct Line {
    std::string first;
    const Command* command;
    Words words;
};

Line readLine(const std::string& line) {
    Words behindFirst(line);
    const std::string first(behindFirst.next());
    Words behindSecond = behindFirst;
    const Command* two = findCommand(first + " " + std::string(behindSecond.next()));
    return two != nullptr ? Line{first, two, behindSecond}
                          : Line{first, findCommand(first), behindFirst};
}

std::filesystem::path& folderOfFiles() {
    static auto& instance = *new std::filesystem::path;
    return instance;
}

// Others read the line elsewhere.
std::string withAbsoluteFile(const Command& command, Words words) {
    std::string line(command.name);
    if (command.arguments.starts_with("FILE") && !words.isEmpty()) {
        std::error_code problem;
        line += " " + std::filesystem::absolute(pathOf(words.next()), problem).string();
    }
    return line + (words.isEmpty() ? "" : " ") + std::string(words.rest());
}

CommandObserver g_observer = nullptr;

}  // namespace

void observeCommands(CommandObserver observer) {
    g_observer = observer;
}

std::string pathOf(std::string_view file) {
    return folderOfFiles() / file;
}

CommandResult carryOut(const std::string& line, const std::string& folder) {
    const auto [first, command, words] = readLine(line);
    if (command == nullptr) {
        return failed(unknownCommand(first, {}));
    }
    if (command->carryOut == nullptr) {
        return failed(first + " is a command of `tavsim ctl` alone");
    }
    folderOfFiles() = folder;
    const std::string shown = withAbsoluteFile(*command, words);
    const Milliseconds time = now();
    const CommandOutcome outcome = command->carryOut(words);
    if (!outcome) {
        return failed("usage: " + usageOf(*command));
    }
    if (g_observer != nullptr && outcome->error.empty() && !command->shows) {
        g_observer(shown, time);
    }
    return *outcome;
}

std::string whyMalformed(const std::string& line, const std::vector<std::string>& otherNames) {
    const auto [first, command, words] = readLine(line);
    if (command == nullptr) {
        return unknownCommand(first, otherNames);
    }
    if (command->carryOut == nullptr || command->shows) {
        return first + " only shows something; use `tavsim ctl " + first + "`";
    }
    return fitsUsage(command->arguments, words) ? "" : "usage: " + usageOf(*command);
}

std::string commandsHelp() {
    std::string text;
    for (const Command& command : kCommands) {
        text += "  " + usageOf(command) + "\n      " + std::string(command.help) + "\n";
    }
    return text;
}

}  // namespace tavsim

#include "simulator/control/commands.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "base/json/writer.h"
#include "base/suggestion.h"
#include "simulator/control/command.h"
#include "simulator/language/usage.h"

namespace tavsim {
namespace {

// Those of `tavsim ctl` itself.
constexpr Command kLocalCommands[] = {
    {"list", "[--json]", "Show the running devices: root folder, profile and program."},
    {"wait", "ready|ended|MEMBER=GLOB... [within TIME]",
     "Wait until the application handles its events, or has ended, or the journal has an entry\n"
     "      with these members. 0 when that is so, 1 when it is not in its time."},
};

const std::vector<Command>& commands() {
    static const auto& all = *new const std::vector<Command>([] {
        std::vector<Command> joined(std::begin(kLocalCommands), std::end(kLocalCommands));
        for (const auto& rows : {kWorldCommands, kServiceCommands, kDeviceCommands, kTimeCommands,
                                 kInputCommands, kScreenCommands, kPageCommands}) {
            joined.insert(joined.end(), rows.begin(), rows.end());
        }
        return joined;
    }());
    return all;
}

std::string usageOf(const Command& command) {
    return std::string(command.name) + (command.usage.empty() ? "" : " ") +
           std::string(command.usage);
}

// Without a command of that name: those with the same first word, the one that was meant, or all.
std::string unknownCommand(std::string_view word, std::vector<std::string> names) {
    const std::string family = std::string(word) + " ";
    std::string relatives;
    std::string all;
    for (const Command& command : commands()) {
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
    const auto found = std::ranges::find(commands(), name, &Command::name);
    return found != commands().end() ? &*found : nullptr;
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

// Empty for words that fit the command's usage.
std::string whyNoFit(const Command& command, Words words,
                     const std::optional<std::string>& folder = {}) {
    std::string problem;
    if (fitsUsage(command.usage, words, &problem, folder)) {
        return {};
    }
    return problem.empty() ? "usage: " + usageOf(command)
                           : std::string(command.name) + ": " + problem;
}

std::filesystem::path& folderOfFiles() {
    static auto& instance = *new std::filesystem::path;
    return instance;
}

// Others read the line elsewhere.
std::string withAbsoluteFile(const Command& command, Words words) {
    std::string line(command.name);
    if (beginsWithFile(command.usage) && !words.isEmpty()) {
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
    if (const std::string problem = whyNoFit(*command, words); !problem.empty()) {
        return failed(problem);
    }
    folderOfFiles() = folder;
    const std::string shown = withAbsoluteFile(*command, words);
    const Milliseconds time = now();
    CommandResult result = command->carryOut(words);
    if (g_observer != nullptr && result.error.empty() && !command->isNoStep) {
        g_observer(shown, time);
    }
    return result;
}

std::string whyMalformed(const std::string& line) {
    const auto [first, command, words] = readLine(line);
    return command == nullptr ? unknownCommand(first, {}) : whyNoFit(*command, words);
}

std::string whyNoStep(const std::string& line, const std::string& folder,
                      const std::vector<std::string>& otherNames) {
    const auto [first, command, words] = readLine(line);
    if (command == nullptr) {
        return unknownCommand(first, otherNames);
    }
    if (command->carryOut == nullptr || command->isNoStep) {
        return first + " is no step of a scenario; use `tavsim ctl " + first + "`";
    }
    return whyNoFit(*command, words, folder);
}

std::string fileNamedIn(const std::string& line) {
    const auto [first, command, words] = readLine(line);
    double number = 0;
    const bool hasFile = command != nullptr && beginsWithFile(command->usage);
    return hasFile ? std::string(words.restBeforeNumber(&number)) : std::string();
}

bool looksAtScreen(const std::string& line) {
    const Command* command = readLine(line).command;
    return command != nullptr && std::ranges::find(kScreenCommands, command->name,
                                                   &Command::name) != kScreenCommands.end();
}

std::string commandsHelp() {
    std::string text;
    for (const Command& command : commands()) {
        text += "  " + usageOf(command) + "\n      " + std::string(command.help) + "\n";
    }
    return text;
}

}  // namespace tavsim

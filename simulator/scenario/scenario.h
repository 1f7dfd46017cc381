// A scenario: what happens to a device and what is expected of its application, step by step.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "simulator/language/pattern.h"
#include "simulator/time/clock.h"

namespace tavsim {

// The command that ends a scenario, and with it the application.
inline constexpr char kQuit[] = "quit";

// When a step's turn comes, once the step before is done.
struct AtTime {
    Milliseconds time;  // since the program's start
};
struct AfterTime {
    Milliseconds time;  // since the step before was done
};
struct WhenEntry {
    Pattern pattern;
    Milliseconds within;
};
using Turn = std::variant<AtTime, AfterTime, WhenEntry>;

// The actions of steps. All except the first are expectations.
struct CommandLine {
    std::string line;
    std::string folder;  // where relative paths start
};
struct BlockLine {
    std::string place;  // FILE:LINE
    std::string text;
};
struct ExpectEntries {
    std::vector<Pattern> patterns;  // of entries that come in any order
    Milliseconds within;
    std::vector<BlockLine> lines;  // of a block, one for each pattern
};
struct ExpectCount {
    Pattern pattern;
    MemberPattern count;  // of such entries since the start
    Milliseconds within;
};
struct ExpectNoEntry {
    Pattern pattern;
    std::optional<Milliseconds> time;  // nothing: until the end
};
struct ExpectState {
    std::string name;
    std::string glob;
};
struct ExpectEnd {
    Milliseconds within;
};
using Action =
    std::variant<CommandLine, ExpectEntries, ExpectCount, ExpectNoEntry, ExpectState, ExpectEnd>;

// The patterns of the entries that the action is about.
inline std::span<const Pattern> patternsOf(const Action& action) {
    if (const auto* entries = std::get_if<ExpectEntries>(&action)) {
        return entries->patterns;
    }
    if (const auto* number = std::get_if<ExpectCount>(&action)) {
        return {&number->pattern, 1};
    }
    const auto* never = std::get_if<ExpectNoEntry>(&action);
    return never != nullptr ? std::span(&never->pattern, 1) : std::span<const Pattern>();
}

struct Step {
    std::string place;  // FILE:LINE
    std::string text;   // the line as it is written
    Turn turn;
    Action action;
};

struct ExpectedOutput {
    std::string place;
    std::string text;
    std::string glob;
};

struct ExpectedStatus {
    std::string place;
    int status;
};

struct Scenario {
    std::optional<std::string> device;  // a profile's name or file
    std::vector<std::string> program;   // with its arguments; empty: not named
    std::optional<std::string> page;
    std::optional<double> limit;  // seconds of real time for the whole run
    std::vector<Step> steps;
    std::vector<ExpectedOutput> output;
    std::optional<ExpectedStatus> status;
    // Those of the table when one of them must be chosen. Then everything else is empty.
    std::vector<std::string> rows;
};

inline constexpr double kDefaultLimit = 60;

}  // namespace tavsim

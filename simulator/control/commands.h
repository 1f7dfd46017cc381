// The commands that steer a running device.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/visibility.h"
#include "simulator/time/clock.h"

namespace tavsim {

// What a client that follows is sent.
struct News {
    std::string lines;      // each with its line feed
    std::int64_t lost = 0;  // so many before them were not kept for it
};

struct CommandResult {
    std::string error;                  // one line; empty: it was carried out
    std::string output;                 // lines, each with its line feed
    std::function<News()> follow = {};  // gives what has come since; null: this was all
    bool isFrame = false;               // what has changed on the screen is the answer
    Milliseconds lasts = 0;             // how long what it has begun goes on by itself
    bool isEarly = false;               // the error may soon be gone
};

// Carries one command line out. One that is unknown or malformed changes nothing. The folder is
// where relative files that it names are looked for from; empty: the current one.
TAV_PLATFORM_API CommandResult carryOut(const std::string& line, const std::string& folder = {});

// Called with each line that was carried out and can be a step of a scenario, and with the time
// when that began. The files that it names are absolute. Null: nobody is called.
using CommandObserver = void (*)(const std::string& line, Milliseconds time);
void observeCommands(CommandObserver observer);

// Why the line would be refused on any device, as far as that can be told without one: there is no
// such command, or its words are not as its usage says. Empty when it may be carried out.
TAV_PLATFORM_API std::string whyMalformed(const std::string& line);

// The same for a step of a scenario. A command that only shows something, or that pauses or speeds
// up the time, is none. Files that the step reads must be there already. The other names are
// suggested too where one of them was meant.
std::string whyNoStep(const std::string& line, const std::string& folder,
                      const std::vector<std::string>& otherNames);

// The file that the line names, as it stands there; empty where it names none.
TAV_PLATFORM_API std::string fileNamedIn(const std::string& line);

// How the command `picture` compares.
struct PictureOptions {
    bool update = false;      // stores what differs
    std::string differences;  // folder for pictures of differences; empty: beside the stored ones
};
void setPictureOptions(PictureOptions given);

// Stands between the name of a stored picture and what differed.
inline constexpr char kWrittenAnew[] = ": written anew, ";

// Whether the line is a command that looks at what the application shows.
bool looksAtScreen(const std::string& line);

// What the device is and what the application has made of it, by name and value.
std::vector<std::pair<std::string, std::string>> stateValues();

// All commands for a user to choose from: a line with each one's usage, and one that says what it
// does.
TAV_PLATFORM_API std::string commandsHelp();

}  // namespace tavsim

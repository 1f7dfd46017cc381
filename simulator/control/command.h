// What a command is, once and for all: its row says what it takes and what it does.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "simulator/control/commands.h"
#include "simulator/language/words.h"

namespace tavsim {

struct Command {
    std::string_view name;   // one word or two
    std::string_view usage;  // of the words behind it; see fitsUsage()
    std::string_view help;
    // Is given words that fit the usage. Nothing has happened when an error comes back. Null where
    // no device is needed.
    CommandResult (*carryOut)(Words words) = nullptr;
    bool isNoStep = false;  // of a scenario: it shows something, or steers only this run
};

// The rows of each file of commands.
extern const std::span<const Command> kWorldCommands;
extern const std::span<const Command> kServiceCommands;
extern const std::span<const Command> kDeviceCommands;
extern const std::span<const Command> kTimeCommands;
extern const std::span<const Command> kInputCommands;
extern const std::span<const Command> kScreenCommands;
extern const std::span<const Command> kPageCommands;

inline CommandResult failed(const std::string& error) {
    return {error, {}};
}

// The path of a file that the command names, for use while it is carried out.
std::string pathOf(std::string_view file);

// Queues a reply to every open call of the URI, as if the service had sent it now.
CommandResult replyToAll(const std::string& uri, const std::string& text);

}  // namespace tavsim

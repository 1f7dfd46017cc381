// What the rows of the table of commands do.
#ifndef TAV_SIMULATOR_CONTROL_COMMAND_FUNCTIONS_H
#define TAV_SIMULATOR_CONTROL_COMMAND_FUNCTIONS_H

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "simulator/control/commands.h"
#include "simulator/control/words.h"

namespace tavsim {

// Each takes the words behind the command's name. Nothing comes back, and nothing has happened,
// when they are not what its usage says.
using CommandOutcome = std::optional<CommandResult>;

inline CommandResult failed(const std::string& error) {
    return {error, {}, false};
}

// The path of a file that the command names, for use while it is carried out.
std::string pathOf(std::string_view file);

// Queues a reply to every open call of the URI, as if the service had sent it now.
CommandResult replyToAll(const std::string& uri, const std::string& text);

// What the device perceives.
CommandOutcome compass(Words words);
CommandOutcome compassFollow(Words words);
CommandOutcome location(Words words);
CommandOutcome locationError(Words words);
CommandOutcome locationLost(Words words);
CommandOutcome locationFound(Words words);
CommandOutcome walk(Words words);
CommandOutcome track(Words words);

// What its services and its host answer.
CommandOutcome reply(Words words);
CommandOutcome answer(Words words);
CommandOutcome silence(Words words);
CommandOutcome refuse(Words words);
CommandOutcome allow(Words words);
CommandOutcome fail(Words words);

// What it is.
CommandOutcome setProperty(Words words);
CommandOutcome setAppinfo(Words words);
CommandOutcome setPreference(Words words);
CommandOutcome plugin(Words words);

// What the application has made of it.
CommandOutcome state(Words words);
CommandOutcome journal(Words words);

// What the application shows.
CommandOutcome screenshot(Words words);
CommandOutcome picture(Words words);

// What its user does.
CommandOutcome pressKey(Words words);
CommandOutcome typeText(Words words);
CommandOutcome touch(Words words);
CommandOutcome tap(Words words);
CommandOutcome drag(Words words);
CommandOutcome window(Words words);
CommandOutcome quit(Words words);

// What the device is and what the application has made of it, by name and value.
std::vector<std::pair<std::string, std::string>> stateValues();

}  // namespace tavsim

#endif

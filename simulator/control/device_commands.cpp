// Commands for what the device is, and what the application has made of it.
#include <simdjson.h>

#include "base/json/writer.h"
#include "simulator/bus/bus.h"
#include "simulator/control/command.h"
#include "simulator/control/device_state.h"
#include "simulator/device/journal.h"
#include "simulator/device/root.h"
#include "simulator/device/running.h"

namespace tavsim {
namespace {

std::string batteryReplyWith(std::string_view percent) {
    simdjson::dom::parser parser;
    base::JsonWriter json;
    json.beginObject();
    for (const auto& [name, value] : parser.parse(batteryReply()).get_object()) {
        json.key(name).raw(name == kPercent ? percent : simdjson::minify(value));
    }
    return json.endObject().take();
}

CommandResult setIn(std::map<std::string, std::string>& values, Words words) {
    const std::string key(words.next());
    values[key] = words.rest();
    return {};
}

CommandResult setProperty(Words words) {
    return setIn(profile().properties, words);
}

CommandResult setAppinfo(Words words) {
    return setIn(profile().appinfo, words);
}

CommandResult setPreference(Words words) {
    const std::string key(words.next());
    const bool isStored = storePreference(key, std::string(words.rest()));
    return isStored ? CommandResult() : failed("set preference: the database cannot be written");
}

CommandResult plugin(Words words) {
    profile().plugin = words.next() == "on";
    return {};
}

CommandResult battery(Words words) {
    if (!batteryPercent()) {
        return failed("battery: the device has no " + std::string(kBatteryUri) +
                      " that answers with a \"percent\"");
    }
    answerFromNowOn(kBatteryUri, batteryReplyWith(words.next()));
    return {};
}

CommandResult state(Words words) {
    if (!words.isEmpty()) {
        base::JsonWriter json;
        json.beginObject();
        for (const auto& [name, value] : stateMembers()) {
            json.key(name).raw(value);
        }
        return {{}, json.endObject().take() + "\n", false};
    }
    std::string lines;
    for (const auto& [name, value] : stateValues()) {
        // Texts of the application can hold anything, and stay on their line.
        lines += base::escapedJson(name) + ": " + base::escapedJson(value) + "\n";
    }
    return {{}, lines, false};
}

// [--follow] [PATTERN]
CommandResult journal(Words words) {
    CommandResult result;
    Words behind = words;
    if (behind.next() == "--follow") {
        result.follow = true;
        words = behind;
    }
    std::string error;
    result.followed = readPattern(words.rest(), &error).value_or(Pattern());
    for (const std::string& line : journalLines()) {
        if (result.followed.empty() || matches(line, result.followed)) {
            result.output += line + "\n";
        }
    }
    return result;
}

constexpr Command kDeviceCommands[] = {
    {"set property", "PROPERTY VALUE", "Set a system property.", setProperty},
    {"set appinfo", "KEY VALUE", "Set a value of the application's information.", setAppinfo},
    {"set preference", "PREFERENCE JSON", "Store one of the user's preferences.", setPreference},
    {"plugin", "on|off", "Let the application be a plug-in, or not.", plugin},
    {"battery", "PERCENT", "Let the battery be charged so far.", battery},
    {"state", "[--json]", "Show what the application has made of the device.", state, true},
    {"journal", "[--follow] [PATTERN]",
     "Show what it has done, and with --follow also what it does from now on; with a pattern only\n"
     "      the entries that match it.",
     journal, true},
};

}  // namespace

std::span<const Command> deviceCommands() {
    return kDeviceCommands;
}

}  // namespace tavsim

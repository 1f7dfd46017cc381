// Commands for what the device is, and what the application has made of it.
#include <simdjson.h>

#include <functional>

#include "base/json/text.h"
#include "base/json/writer.h"
#include "simulator/bus/bus.h"
#include "simulator/control/command.h"
#include "simulator/control/device_state.h"
#include "simulator/control/watch.h"
#include "simulator/device/journal.h"
#include "simulator/device/root.h"
#include "simulator/device/running.h"
#include "simulator/language/pattern.h"

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
        return {{}, json.endObject().take() + "\n"};
    }
    std::string lines;
    for (const auto& [name, value] : stateValues()) {
        // Texts of the application can hold anything, and stay on their line.
        lines += base::escapedJson(name) + ": " + base::escapedJson(value) + "\n";
    }
    return {{}, lines};
}

News entriesLike(const Pattern& pattern, JournalReader* journal) {
    News news;
    news.lost = journal->read([&](const std::string& line) {
        news.lines += pattern.empty() || matches(line, pattern) ? line + "\n" : "";
    });
    return news;
}

// [--follow] [PATTERN]
CommandResult journal(Words words) {
    Words behind = words;
    const bool follows = behind.next() == "--follow";
    std::string error;
    const Pattern pattern =
        readPattern((follows ? behind : words).rest(), &error).value_or(Pattern());
    JournalReader reader;
    CommandResult result{{}, entriesLike(pattern, &reader).lines};
    if (follows) {
        base::prepareLastingParsers();  // the last lines come when the program ends
        result.follow = [pattern, reader]() mutable { return entriesLike(pattern, &reader); };
    }
    return result;
}

CommandResult watchAll(Words) {
    const std::function<News()> follow = watchDevice();
    return {{}, follow().lines, follow};
}

constexpr Command kDeviceRows[] = {
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
    {"watch", "",
     "Show everything from now on as lines of JSON: the journal, what changes in the state, the\n"
     "      recording and the steps of the scenario.",
     watchAll, true},
};

}  // namespace

constinit const std::span<const Command> kDeviceCommands = kDeviceRows;

}  // namespace tavsim

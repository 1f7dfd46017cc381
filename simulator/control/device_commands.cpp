// Commands for what the device is, and what the application has made of it.
#include "base/json/writer.h"
#include "simulator/bus/bus.h"
#include "simulator/bus/payload.h"
#include "simulator/bus/profile_services.h"
#include "simulator/control/command.h"
#include "simulator/device/journal.h"
#include "simulator/device/refusals.h"
#include "simulator/device/root.h"
#include "simulator/device/running.h"
#include "simulator/device/state.h"

namespace tavsim {
namespace {

constexpr char kBatteryUri[] = "vire://com.vire.battery/status";
constexpr std::string_view kPercent = "percent";

std::string batteryReply() {
    const Service* service = profileService(kBatteryUri);
    const bool answers = service != nullptr && !service->replies.empty();
    return answers ? service->replies.front().value_or("") : "";
}

// As JSON; nothing where the device has no battery service that tells it.
std::optional<std::string> batteryPercent() {
    const Payload reply(batteryReply());
    const std::optional<simdjson::dom::element> percent = reply.member(kPercent);
    return percent ? std::optional(simdjson::minify(*percent)) : std::nullopt;
}

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

std::string stateAsJson() {
    const std::optional<std::string>& machine = profile().machine;
    base::JsonWriter json;
    json.beginObject().member("machine", machine ? machine->c_str() : nullptr);
    json.member("plugin", profile().plugin).member("openCalls", openBusCalls({}).size());
    json.key("battery").raw(batteryPercent().value_or("null"));
    json.key("refused").beginArray();
    for (const std::string& request : refusedRequests()) {
        json.value(request);
    }
    json.endArray().key("state").beginObject();
    for (const auto& [name, value] : deviceState()) {
        json.member(name, value);
    }
    return json.endObject().endObject().take() + "\n";
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
        return {{}, stateAsJson(), false};
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

std::vector<std::pair<std::string, std::string>> stateValues() {
    std::vector<std::pair<std::string, std::string>> values = {
        {"machine", profile().machine.value_or("none")},
        {"plugin", profile().plugin ? "on" : "off"},
        {"open calls", std::to_string(openBusCalls({}).size())}};
    if (const std::optional<std::string> percent = batteryPercent()) {
        values.emplace_back("battery", *percent);
    }
    for (const std::string& request : refusedRequests()) {
        values.emplace_back("refused", request);
    }
    values.insert(values.end(), deviceState().begin(), deviceState().end());
    return values;
}

}  // namespace tavsim

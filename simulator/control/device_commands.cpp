// Commands for what the device is, and what the application has made of it.
#include <simdjson.h>

#include "base/json/writer.h"
#include "simulator/bus/bus.h"
#include "simulator/control/command_functions.h"
#include "simulator/device/journal.h"
#include "simulator/device/refusals.h"
#include "simulator/device/root.h"
#include "simulator/device/running.h"
#include "simulator/device/state.h"

namespace tavsim {
namespace {

CommandOutcome setIn(std::map<std::string, std::string>& values, Words words) {
    const std::string key(words.next());
    if (key.empty()) {
        return std::nullopt;
    }
    values[key] = words.rest();
    return CommandResult();
}

bool isJson(std::string_view text) {
    simdjson::dom::parser parser;
    return parser.parse(text.data(), text.size()).error() == simdjson::SUCCESS;
}

std::string stateAsJson() {
    const std::optional<std::string>& machine = profile().machine;
    base::JsonWriter json;
    json.beginObject().member("machine", machine ? machine->c_str() : nullptr);
    json.member("plugin", profile().plugin).member("openCalls", openBusCalls({}).size());
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

}  // namespace

CommandOutcome setProperty(Words words) {
    return setIn(profile().properties, words);
}

CommandOutcome setAppinfo(Words words) {
    return setIn(profile().appinfo, words);
}

CommandOutcome setPreference(Words words) {
    const std::string key(words.next());
    const std::string value(words.rest());
    if (key.empty() || value.empty()) {
        return std::nullopt;
    }
    if (!isJson(value)) {
        return failed("set preference: the value must be JSON");
    }
    if (!storePreference(key, value)) {
        return failed("set preference: the database cannot be written");
    }
    return CommandResult();
}

CommandOutcome plugin(Words words) {
    const std::string_view value = words.next();
    if ((value != "on" && value != "off") || !words.isEmpty()) {
        return std::nullopt;
    }
    profile().plugin = value == "on";
    return CommandResult();
}

std::vector<std::pair<std::string, std::string>> stateValues() {
    std::vector<std::pair<std::string, std::string>> values = {
        {"machine", profile().machine.value_or("none")},
        {"plugin", profile().plugin ? "on" : "off"},
        {"open calls", std::to_string(openBusCalls({}).size())}};
    for (const std::string& request : refusedRequests()) {
        values.emplace_back("refused", request);
    }
    values.insert(values.end(), deviceState().begin(), deviceState().end());
    return values;
}

CommandOutcome state(Words words) {
    const std::string_view form = words.next();
    if ((!form.empty() && form != "--json") || !words.isEmpty()) {
        return std::nullopt;
    }
    if (!form.empty()) {
        return CommandResult{{}, stateAsJson(), false};
    }
    std::string lines;
    for (const auto& [name, value] : stateValues()) {
        // Texts of the application can hold anything, and stay on their line.
        lines += base::escapedJson(name) + ": " + base::escapedJson(value) + "\n";
    }
    return CommandResult{{}, lines, false};
}

CommandOutcome journal(Words words) {
    const bool follow = !words.isEmpty();
    if (follow && (words.next() != "--follow" || !words.isEmpty())) {
        return std::nullopt;
    }
    std::string lines;
    for (const std::string& line : journalLines()) {
        lines += line + "\n";
    }
    return CommandResult{{}, lines, follow};
}

}  // namespace tavsim

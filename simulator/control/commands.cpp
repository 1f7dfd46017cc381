#include "simulator/control/commands.h"

#include <simdjson.h>

#include <charconv>
#include <cmath>
#include <map>
#include <vector>

#include "SDL.h"
#include "simulator/bus/bus.h"
#include "simulator/bus/services.h"
#include "simulator/device/clock.h"
#include "simulator/device/journal.h"
#include "simulator/device/queue.h"
#include "simulator/device/root.h"
#include "simulator/device/running.h"
#include "simulator/device/state.h"
#include "simulator/host/compass.h"

namespace tavsim {
namespace {

// The blank-separated words of a command line; the last one asked for can be all that is left.
class Words {
public:
    explicit Words(const std::string& line) : m_rest(line) { skipBlanks(); }

    bool isEmpty() const { return m_rest.empty(); }

    std::string next() {
        const size_t end = std::min(m_rest.find(' '), m_rest.size());
        std::string word(m_rest.substr(0, end));
        m_rest.remove_prefix(end);
        skipBlanks();
        return word;
    }

    std::string rest() {
        std::string all(m_rest);
        m_rest = {};
        return all;
    }

    template <typename Number>
    bool nextNumber(Number* number) {
        const std::string word = next();
        const char* end = word.data() + word.size();
        const auto [at, problem] = std::from_chars(word.data(), end, *number);
        return problem == std::errc() && at == end && !word.empty();
    }

private:
    void skipBlanks() {
        m_rest.remove_prefix(std::min(m_rest.find_first_not_of(' '), m_rest.size()));
    }

    std::string_view m_rest;
};

CommandResult failed(const std::string& error) {
    return {error, {}, false};
}

bool isJson(const std::string& text) {
    simdjson::dom::parser parser;
    return parser.parse(text).error() == simdjson::SUCCESS;
}

// Queues a reply to every open call of the URI, as if the service had sent it now.
CommandResult replyToAll(const std::string& uri, const std::string& reply) {
    const std::vector<int> tokens = openBusCalls(uri);
    if (tokens.empty()) {
        return failed("no open call or subscription of " + uri);
    }
    for (const int token : tokens) {
        schedule(now(), [token, reply] { deliverReply(token, reply); });
    }
    return {{}, "replied to " + std::to_string(tokens.size()) + "\n", false};
}

CommandResult compass(Words words) {
    CompassReading reading;
    const bool isReading = words.nextNumber(&reading.intValue) &&
                           words.nextNumber(&reading.doubleValue1) &&
                           words.nextNumber(&reading.doubleValue2) && words.isEmpty();
    if (!isReading) {
        return failed("compass: needs a whole number and two numbers");
    }
    if (!deliverCompassReading(reading)) {
        return failed("compass: the application has not called TAV_Init");
    }
    return {};
}

CommandResult location(Words words) {
    if (words.isEmpty()) {
        return failed("location: needs seven numbers, or error and a number");
    }
    Words asError = words;
    if (asError.next() == "error") {
        int code = 0;
        if (!asError.nextNumber(&code) || !asError.isEmpty()) {
            return failed("location error: needs a whole number");
        }
        return replyToAll(kLocationUri, locationErrorReply(code));
    }
    Fix fix;
    for (double* value : {&fix.latitude, &fix.longitude, &fix.altitude, &fix.horizAccuracy,
                          &fix.vertAccuracy, &fix.heading, &fix.velocity}) {
        if (!words.nextNumber(value) || !std::isfinite(*value)) {
            return failed(
                "location: needs latitude, longitude, altitude, horizontal and vertical accuracy, "
                "heading and velocity");
        }
    }
    return words.isEmpty() ? replyToAll(kLocationUri, fixReply(fix))
                           : failed("location: more than seven numbers");
}

CommandResult reply(Words words) {
    const std::string uri = words.next();
    const std::string text = words.rest();
    if (uri.empty() || text.empty()) {
        return failed("reply: needs a URI and a text");
    }
    return replyToAll(uri, text);
}

CommandResult refuse(Words words) {
    const std::string request = words.next();
    if (!canBeRefused(request) || !words.isEmpty()) {
        return failed("refuse: needs the name of a request, or a URI");
    }
    profile().refused.insert(request);
    return {};
}

CommandResult allow(Words words) {
    const std::string request = words.next();
    if (!canBeRefused(request) || !words.isEmpty()) {
        return failed("allow: needs the name of a request, or a URI");
    }
    profile().refused.erase(request);
    const auto service = profile().services.find(request);
    if (service != profile().services.end()) {
        service->second.refuse = false;
    }
    return {};
}

CommandResult set(Words words) {
    const std::string what = words.next();
    const std::string key = words.next();
    const std::string value = words.rest();
    if (key.empty()) {
        return failed("set: needs property, appinfo or preference, a key and a value");
    }
    if (what == "property") {
        profile().properties[key] = value;
    } else if (what == "appinfo") {
        profile().appinfo[key] = value;
    } else if (what != "preference") {
        return failed("set: " + what + " is not property, appinfo or preference");
    } else if (!isJson(value)) {
        return failed("set preference: the value must be JSON");
    } else if (!storePreference(key, value)) {
        return failed("set preference: the database cannot be written");
    }
    return {};
}

CommandResult plugin(Words words) {
    const std::string value = words.next();
    if ((value != "on" && value != "off") || !words.isEmpty()) {
        return failed("plugin: needs on or off");
    }
    profile().plugin = value == "on";
    return {};
}

CommandResult state(Words words) {
    if (!words.isEmpty()) {
        return failed("state: takes nothing");
    }
    const Profile& current = profile();
    std::string lines = "machine: " + current.machine.value_or("none") + "\n" +
                        "plugin: " + (current.plugin ? "on" : "off") + "\n" +
                        "open calls: " + std::to_string(openBusCalls({}).size()) + "\n";
    for (const std::string& request : current.refused) {
        lines += "refused: " + request + "\n";
    }
    for (const auto& [name, value] : deviceState()) {
        lines += name + ": " + value + "\n";
    }
    return {{}, lines, false};
}

CommandResult journal(Words words) {
    const bool follow = !words.isEmpty();
    if (follow && (words.next() != "--follow" || !words.isEmpty())) {
        return failed("journal: takes only --follow");
    }
    std::string lines;
    for (const std::string& line : journalLines()) {
        lines += line + "\n";
    }
    return {{}, lines, follow};
}

CommandResult quit(Words words) {
    SDL_Event event{};
    event.type = SDL_QUIT;
    if (!words.isEmpty()) {
        return failed("quit: takes nothing");
    }
    if (SDL_PushEvent(&event) != 0) {
        return failed("quit: the application has no event queue, or it is full");
    }
    return {};
}

using Command = CommandResult (*)(Words);

const std::map<std::string, Command>& commands() {
    static const auto& table = *new std::map<std::string, Command>{
        {"allow", allow},   {"compass", compass}, {"journal", journal}, {"location", location},
        {"plugin", plugin}, {"quit", quit},       {"refuse", refuse},   {"reply", reply},
        {"set", set},       {"state", state},
    };
    return table;
}

}  // namespace

CommandResult carryOut(const std::string& line) {
    Words words(line);
    const std::string name = words.next();
    const auto command = commands().find(name);
    if (command == commands().end()) {
        std::string names;
        for (const auto& [known, function] : commands()) {
            names += (names.empty() ? "" : ", ") + known;
        }
        return failed("\"" + name + "\" is no command; there are " + names);
    }
    return command->second(words);
}

}  // namespace tavsim

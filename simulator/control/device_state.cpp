#include "simulator/control/device_state.h"

#include <memory>
#include <set>

#include "base/json/text.h"
#include "base/json/writer.h"
#include "screen/screen.h"
#include "simulator/bus/bus.h"
#include "simulator/bus/profile_services.h"
#include "simulator/bus/services.h"
#include "simulator/control/commands.h"
#include "simulator/control/running_devices.h"
#include "simulator/device/refusals.h"
#include "simulator/device/root.h"
#include "simulator/device/running.h"
#include "simulator/device/state.h"
#include "simulator/host/compass.h"
#include "simulator/page/plugin.h"
#include "simulator/time/clock.h"
#include "simulator/time/pause.h"
#include "simulator/time/queue.h"
#include "simulator/world/position.h"

namespace tavsim {
namespace {

using base::JsonWriter;

constexpr size_t kMostShown = 20;

// The JSON of one value.
template <typename Value>
std::string jsonOf(const Value& value) {
    return JsonWriter().value(value).take();
}

std::string jsonOf(const std::map<std::string, std::string>& values) {
    JsonWriter json;
    json.beginObject();
    for (const auto& [name, value] : values) {
        json.member(name, value);
    }
    return json.endObject().take();
}

template <typename Texts>
std::string listOf(const Texts& texts) {
    JsonWriter json;
    json.beginArray();
    for (const std::string& text : texts) {
        json.value(text);
    }
    return json.endArray().take();
}

// The database may have been made by something else, and hold anything.
std::string preferencesJson() {
    simdjson::dom::parser parser;
    JsonWriter json;
    json.beginObject();
    for (const auto& [name, value] : storedPreferences()) {
        simdjson::dom::element parsed;
        json.key(name);
        base::parse(parser, value, false, &parsed) ? json.raw(simdjson::minify(parsed))
                                                   : json.value(value);
    }
    return json.endObject().take();
}

const char* paceName() {
    return isTimePaced() ? "paced" : isTimeVirtual() ? "virtual" : "real";
}

std::string timeJson() {
    return base::jsonObject("now", now(), "pace", paceName(), "speed", paceFactor(), "paused",
                            isTimeHeld());
}

std::string queueJson() {
    JsonWriter json;
    json.beginArray();
    for (const Due& due : nextInQueue(kMostShown)) {
        json.beginObject().members("at", due.at, "what", due.what).endObject();
    }
    return json.endArray().take();
}

std::string positionJson() {
    const std::optional<Fix> fix = presentFix();
    return fix ? base::jsonObject("latitude", fix->latitude, "longitude", fix->longitude,
                                  "altitude", fix->altitude, "horizAccuracy", fix->horizAccuracy,
                                  "vertAccuracy", fix->vertAccuracy, "heading", fix->heading,
                                  "velocity", fix->velocity)
               : "null";
}

std::string compassJson() {
    const CompassState compass = compassState();
    JsonWriter json;
    json.beginObject().member("on", compass.isOn).key("heading");
    compass.heading ? json.value(*compass.heading) : json.raw("null");
    return json.members("follows", compass.follows, "held", compass.isHeld).endObject().take();
}

// A service of the device itself answers as it does; nothing is known of that in advance.
void addService(const std::string& uri, JsonWriter* json) {
    static const Service& unknown = *new const Service;
    const Service* known = profileService(uri);
    const Service& service = known != nullptr ? *known : unknown;
    const Reply first = service.replies.empty() ? Reply() : service.replies.front();
    const bool isSilent = known != nullptr && service.replies.empty() && service.cases.empty() &&
                          !service.compute && !service.program;
    json->beginObject()
        .members("uri", uri, "answer", first ? first->c_str() : nullptr, "silent", isSilent)
        .members("delay", changedDelay(uri).value_or(service.delay), "changed", isChanged(uri))
        .endObject();
}

std::string servicesJson() {
    std::set<std::string> uris = profileServiceUris();
    for (const std::string& uri : deviceServiceUris()) {
        uris.insert(uri);
    }
    JsonWriter json;
    json.beginArray();
    for (const std::string& uri : uris) {
        addService(uri, &json);
    }
    return json.endArray().take();
}

std::string screenJson() {
    const std::optional<screen::ScreenSize> size = screen::screenSize();
    return size ? base::jsonObject("width", size->width, "height", size->height) : "null";
}

std::string pageJson() {
    const std::shared_ptr<Page> page = livingPage();
    return page != nullptr ? R"({"methods":)" + listOf(page->methods()) + "}" : "null";
}

}  // namespace

std::vector<std::pair<const char*, std::string>> stateMembers() {
    const std::optional<std::string>& machine = profile().machine;
    const std::optional<int> lost = lossOfLocation();
    return {{"device", jsonOf(profile().name)},
            {"program", jsonOf(commandLine())},
            {"machine", machine ? jsonOf(*machine) : "null"},
            {"plugin", jsonOf(profile().plugin)},
            {"time", timeJson()},
            {"queue", queueJson()},
            {"position", positionJson()},
            {"lost", lost ? jsonOf(*lost) : "null"},
            {"compass", compassJson()},
            {"services", servicesJson()},
            {"preferences", preferencesJson()},
            {"properties", jsonOf(profile().properties)},
            {"appinfo", jsonOf(profile().appinfo)},
            {"screen", screenJson()},
            {"page", pageJson()},
            {"openCalls", jsonOf(openBusCalls({}).size())},
            {"battery", batteryPercent().value_or("null")},
            {"refused", listOf(refusedRequests())},
            {"state", jsonOf(deviceState())}};
}

std::string batteryReply() {
    const Service* service = profileService(kBatteryUri);
    const bool answers = service != nullptr && !service->replies.empty();
    return answers ? service->replies.front().value_or("") : "";
}

std::optional<std::string> batteryPercent() {
    simdjson::dom::element reply;
    simdjson::dom::element percent;
    // Scenarios look at the state, too, when the program ends.
    const bool isTold = base::parse(base::lastingParser(false), batteryReply(), false, &reply) &&
                        reply.at_key(kPercent).get(percent) == simdjson::SUCCESS;
    return isTold ? std::optional(simdjson::minify(percent)) : std::nullopt;
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

#include "simulator/bus/program_line.h"

#include "base/json/reader.h"
#include "base/json/writer.h"
#include "simulator/device/service_reader.h"
#include "simulator/time/clock.h"

namespace dom = simdjson::dom;
namespace json = base::json;

namespace tavsim {
namespace {

json::Reader given(std::optional<Reply>* target, json::Reader (*read)(Reply*)) {
    return [target, read](const json::Value& value) { read (&target->emplace())(value); };
}

}  // namespace

std::string requestLine(int token, int turn, const ServiceRequest& request) {
    base::JsonWriter line;
    line.beginObject()
        .members("id", token, "turn", turn, "at", now(), "uri", request.uri)
        .member("subscribe", request.isSubscription)
        .key("payload");
    dom::parser parser;
    dom::element payload;
    if (parser.parse(request.payload).get(payload) == simdjson::SUCCESS) {
        line.raw(simdjson::minify(payload));
    } else {
        line.value(request.payload);
    }
    return line.endObject().take();
}

std::string cancelLine(int token) {
    return base::jsonObject("id", token, "cancel", true);
}

std::optional<ProgramLine> readProgramLine(const std::string& line, std::string* error) {
    ProgramLine content;
    const json::Reader known = json::fields({{"id", json::integer(&content.id, 1)},
                                             {"reply", given(&content.reply, replyReader)},
                                             {"error", given(&content.reply, errorReader)},
                                             {"delay", json::integer(&content.delay, 0)},
                                             {"again", json::integer(&content.again, 1)},
                                             {"more", json::flag(&content.more)}});
    const json::Reader reader = [&](const json::Value& value) {
        known(value);
        if (content.id == 0) {
            value.fail("must have the id of a request");
        }
    };
    return json::read(line, "its output", reader, error) ? std::optional(content) : std::nullopt;
}

}  // namespace tavsim

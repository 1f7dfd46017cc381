#include "simulator/device/service_reader.h"

#include <utility>

#include "base/json/text.h"
#include "base/json/writer.h"

namespace json = base::json;

namespace tavsim {
namespace {

using Fields = std::map<std::string_view, json::Reader>;

json::Reader only(std::vector<Reply>* replies, json::Reader (*read)(Reply*)) {
    return [replies, read](const json::Value& value) {
        replies->assign(1, {});
        read (&replies->front())(value);
    };
}

// Milliseconds, or a minimum and a maximum.
json::Reader delay(Service* service) {
    return [service](const json::Value& value) {
        if (!value.element().is_array()) {
            json::integer(&service->delay, 0)(value);
            service->spread = 0;
            return;
        }
        int most = 0;
        json::sequence({json::integer(&service->delay, 0), json::integer(&most, 0)})(value);
        if (most < service->delay) {
            value.fail("must be the shortest delay and the longest");
        }
        service->spread = most - service->delay;
    };
}

json::Reader payloadPattern(PayloadPattern* pattern) {
    return [pattern](const json::Value& value) {
        *pattern = {base::comparableText(value.element()), value.element().is_string()};
    };
}

json::Reader program(std::optional<ServiceCommand>* target, const std::string& folder) {
    return [target, folder](const json::Value& value) {
        ServiceCommand& command = target->emplace();
        command.folder = folder;
        const auto word = [](std::string* each) { return json::text(each); };
        json::list(&command.words, word)(value);
        if (command.words.empty() || command.words.front().empty()) {
            value.fail("must be a program and its arguments");
        }
    };
}

Fields answerFields(Service* service) {
    return {{"reply", only(&service->replies, replyReader)},
            {"replies", json::list(&service->replies, replyReader)},
            {"error", only(&service->replies, errorReader)},
            {"repeat", json::flag(&service->repeat)},
            {"delay", delay(service)},
            {"every", json::integer(&service->every, 0)}};
}

void checkAnswer(const Service& service, const json::Value& value) {
    int answers = 0;
    json::eachMember(value, [&](std::string_view name, const json::Value& each) {
        answers += name == "reply" || name == "replies" || name == "error" ? 1 : 0;
        if (service.program && name != "program" && name != "refuse") {
            each.fail("is for the program to say");
        }
    });
    if (answers > 1) {
        value.fail(R"(must have only one of "reply", "replies" and "error")");
    }
    if (service.repeat && service.every == 0) {
        value.fail(R"("repeat" needs "every", the milliseconds between the replies)");
    }
}

json::Reader answerReader(Service* service, Fields fields) {
    fields.merge(answerFields(service));
    return [service, known = json::fields(std::move(fields))](const json::Value& value) {
        known(value);
        checkAnswer(*service, value);
    };
}

// A case without times of its own has the service's.
void readCases(Service* service, const json::Value& value) {
    const auto caseReader = [service](Service* each) {
        each->delay = service->delay;
        each->spread = service->spread;
        each->every = service->every;
        return answerReader(each, {{"when", json::members(&each->when, payloadPattern)}});
    };
    json::list(&service->cases, caseReader)(value);
}

}  // namespace

json::Reader serviceReader(Service* service, const std::string& folder) {
    const json::Reader known = answerReader(
        service, {{"refuse", json::flag(&service->refuse)},
                  {"seed", json::integer(&service->seed)},
                  {"match", [](const json::Value&) {}},  // is read after the service's times
                  {"program", program(&service->program, folder)}});
    return [service, known](const json::Value& value) {
        *service = {};
        known(value);
        json::Value::Element cases;
        if (value.element()["match"].get(cases) == simdjson::SUCCESS) {
            readCases(service, value.member("match", cases));
        }
    };
}

json::Reader replyReader(Reply* reply) {
    return [reply](const json::Value& value) {
        if (!value.element().is_null()) {
            *reply = base::textOf(value.element());
        }
    };
}

json::Reader errorReader(Reply* reply) {
    return [reply](const json::Value& value) {
        int code = -1;
        std::string text;
        json::fields({{"code", json::integer(&code)}, {"text", json::text(&text)}})(value);
        *reply = errorReply(code, text);
    };
}

std::string errorReply(int code, const std::string& text) {
    return base::jsonObject("returnValue", false, "errorCode", code, "errorText", text);
}

}  // namespace tavsim

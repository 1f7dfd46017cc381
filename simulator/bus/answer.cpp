#include "simulator/bus/answer.h"

#include "simulator/device/service_reader.h"

namespace tavsim {

base::JsonWriter successReply() {
    base::JsonWriter reply;
    reply.beginObject().member("returnValue", true);
    return reply;
}

Answer oneReply(base::JsonWriter& reply, int delay) {
    return {{reply.take()}, delay, 0};
}

Answer success() {
    return oneReply(successReply().endObject());
}

Answer failure(const std::string& reason, int delay) {
    return {{errorReply(-1, reason)}, delay};
}

std::string textMember(const simdjson::dom::object& request, const char* name) {
    std::string_view text;
    return request[name].get(text) == simdjson::SUCCESS ? std::string(text) : std::string();
}

bool flagMember(const simdjson::dom::object& request, const char* name) {
    bool value = false;
    return request[name].get(value) == simdjson::SUCCESS && value;
}

std::optional<int64_t> numberMember(const simdjson::dom::object& request, const char* name,
                                    int64_t least, int64_t most) {
    int64_t value = 0;
    if (request[name].get(value) != simdjson::SUCCESS || value < least || value > most) {
        return std::nullopt;
    }
    return value;
}

}  // namespace tavsim

// Helpers for services of the bus to make their answers.
#ifndef TAV_SIMULATOR_BUS_ANSWER_H
#define TAV_SIMULATOR_BUS_ANSWER_H

#include <simdjson.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/json/writer.h"
#include "simulator/device/profile.h"

namespace tavsim {

// The answer to one request. Its first reply is computed when the request arrives.
struct Answer {
    std::vector<Reply> replies;
    int delay = 0;
    int every = 0;
    bool isEndless = false;  // after the last reply, a subscription is answered again
    bool isFilled = false;   // the replies are templates
};

// Begins an object that says that the request was carried out. The caller adds members and ends it.
base::JsonWriter successReply();

Answer oneReply(base::JsonWriter& reply, int delay = 0);
Answer success();
Answer failure(const std::string& reason, int delay = 0);

// Members of a request, which is not trusted. A missing text is empty, a missing flag is false. A
// number without a value is not a whole number in that range.
std::string textMember(const simdjson::dom::object& request, const char* name);
bool flagMember(const simdjson::dom::object& request, const char* name);
std::optional<int64_t> numberMember(const simdjson::dom::object& request, const char* name,
                                    int64_t least, int64_t most);

}  // namespace tavsim

#endif

// What the services of the bus make their answers of.
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

// What comes back on one request; its first reply is worked out when the request arrives.
struct Answer {
    std::vector<Reply> replies;
    int delay = 0;
    int every = 0;
    bool isEndless = false;  // behind the last reply, a subscription is answered anew
    bool isFilled = false;   // the replies are templates
};

// An object that says that the request was carried out, for more members and its end.
base::JsonWriter successReply();

Answer oneReply(base::JsonWriter& reply, int delay = 0);
Answer success();
Answer failure(const std::string& reason, int delay = 0);

// Members of a request, which holds anything. A text that is not there counts as empty, a flag as
// false, and a number without a value is not a whole number of that range.
std::string textMember(const simdjson::dom::object& request, const char* name);
bool flagMember(const simdjson::dom::object& request, const char* name);
std::optional<int64_t> numberMember(const simdjson::dom::object& request, const char* name,
                                    int64_t least, int64_t most);

}  // namespace tavsim

#endif

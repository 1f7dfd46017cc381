// The members of a request.
#ifndef TAV_LINUX_SERVICES_MEMBERS_H
#define TAV_LINUX_SERVICES_MEMBERS_H

#include <simdjson.h>

#include <string>

namespace tavlinux {

// What is missing or of another type is empty, 0 or false.

inline std::string textMember(const simdjson::dom::object& object, const char* name) {
    std::string_view text;
    return object[name].get(text) == simdjson::SUCCESS ? std::string(text) : std::string();
}

inline int64_t integerMember(const simdjson::dom::object& object, const char* name) {
    int64_t value = 0;
    return object[name].get(value) == simdjson::SUCCESS ? value : 0;
}

inline bool flagMember(const simdjson::dom::object& object, const char* name) {
    bool value = false;
    return object[name].get(value) == simdjson::SUCCESS && value;
}

}  // namespace tavlinux

#endif

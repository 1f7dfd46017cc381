// Access to a request's payload, for the services.
#pragma once

#include <simdjson.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/device/profile.h"

namespace tavsim {

// A payload, which is not trusted. One that is not JSON has no members.
class Payload {
public:
    explicit Payload(const std::string& text);

    // A member by its name or path: "item", "item.id", "items[0].id".
    std::optional<simdjson::dom::element> member(std::string_view path) const;

    bool matches(const std::map<std::string, PayloadPattern>& patterns) const;

private:
    simdjson::dom::parser m_parser;
    std::optional<simdjson::dom::element> m_root;
};

// The replacement of a ${NAME}: as JSON, and as text inside a longer string.
struct Insertion {
    std::string json = "null";
    std::string text;
};
using Insertions = std::function<Insertion(std::string_view name)>;

// Fills in a template. A template that is a JSON object or list stays valid: a string that consists
// only of a ${NAME} becomes the value. $${ stands for a literal ${.
std::string fillTemplate(const std::string& text, const Insertions& insertions);

}  // namespace tavsim

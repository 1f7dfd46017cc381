// What is in a request, for services that answer to it.
#ifndef TAV_SIMULATOR_BUS_PAYLOAD_H
#define TAV_SIMULATOR_BUS_PAYLOAD_H

#include <simdjson.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/device/profile.h"

namespace tavsim {

// A payload, which can be anything; one that is no JSON has no members.
class Payload {
public:
    explicit Payload(const std::string& text);

    // A member, or one further in: "item", "item.id", "items.0.id".
    std::optional<simdjson::dom::element> member(std::string_view path) const;

    bool matches(const std::map<std::string, PayloadPattern>& patterns) const;

private:
    simdjson::dom::parser m_parser;
    std::optional<simdjson::dom::element> m_root;
};

// What is put in the place of a ${NAME}: as JSON, and in the midst of a text.
struct Insertion {
    std::string json = "null";
    std::string text;
};
using Insertions = std::function<Insertion(std::string_view name)>;

// Fills a template. One that is a JSON object or list stays one: a string of it that is nothing but
// a ${NAME} becomes the value. Two $ in front of the brace stand for one.
std::string fillTemplate(const std::string& text, const Insertions& insertions);

}  // namespace tavsim

#endif

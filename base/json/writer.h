// Writes JSON texts.
#pragma once

#include <concepts>
#include <string>
#include <string_view>

namespace base {

// The text escaped as the inside of a JSON string. Invalid UTF-8 in it is replaced.
std::string escapedJson(std::string_view text);

// For messages, which must stay one readable line: the text, a long one without its middle; and the
// same in quotes and escaped.
std::string shortened(std::string_view text);
std::string quoted(std::string_view text);

// Builds one JSON text from left to right, with commas and escapes where they are needed:
//
//     JsonWriter().beginObject().member("port", 80).key("tags").beginArray().value("a").endArray()…
class JsonWriter {
public:
    JsonWriter& beginObject() { return open('{'); }
    JsonWriter& endObject() { return close('}'); }
    JsonWriter& beginArray() { return open('['); }
    JsonWriter& endArray() { return close(']'); }

    // The name of a member; its value must follow.
    JsonWriter& key(std::string_view name);

    JsonWriter& value(std::string_view text);
    JsonWriter& value(const char* text);  // a null pointer is written as null
    JsonWriter& value(bool flag);
    JsonWriter& value(double number);  // in its shortest form; null for infinity and NaN
    JsonWriter& value(std::integral auto number) { return raw(std::to_string(number)); }

    // A value that is JSON already.
    JsonWriter& raw(std::string_view json);

    template <typename Value>
    JsonWriter& member(std::string_view name, const Value& content) {
        return key(name).value(content);
    }

    // Several members: their names, each with its value behind it.
    JsonWriter& members() { return *this; }
    template <typename Value, typename... More>
    JsonWriter& members(std::string_view name, const Value& content, const More&... more) {
        return member(name, content).members(more...);
    }

    const std::string& text() const { return m_text; }
    std::string take() { return std::move(m_text); }

private:
    JsonWriter& open(char bracket);
    JsonWriter& close(char bracket);
    void separate();

    std::string m_text;
};

// The text of an object with these members: jsonObject("id", 1, "cancel", true).
template <typename... Members>
std::string jsonObject(const Members&... members) {
    return JsonWriter().beginObject().members(members...).endObject().take();
}

}  // namespace base

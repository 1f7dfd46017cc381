#include "simulator/bus/payload.h"

#include <algorithm>

#include "base/glob.h"
#include "base/json/path.h"
#include "base/json/text.h"
#include "base/json/writer.h"

namespace dom = simdjson::dom;

namespace tavsim {
namespace {

constexpr std::string_view kOpening = "${";

bool isAsSaid(const std::optional<dom::element>& member, const PayloadPattern& pattern) {
    if (!member) {
        return !pattern.isGlob && pattern.text == "null";
    }
    const std::string text = base::comparableText(*member);
    return pattern.isGlob ? base::matchesGlob(text, pattern.text) : text == pattern.text;
}

std::string fillText(std::string_view text, const Insertions& insertions) {
    std::string filled;
    while (true) {
        const size_t start = text.find(kOpening);
        const size_t end = text.find('}', start);
        if (end == std::string_view::npos) {
            return filled.append(text);
        }
        if (start > 0 && text[start - 1] == '$') {
            filled.append(text.substr(0, start)).append("{");
            text.remove_prefix(start + kOpening.size());
            continue;
        }
        const size_t name = start + kOpening.size();
        filled.append(text.substr(0, start)).append(insertions(text.substr(name, end - name)).text);
        text.remove_prefix(end + 1);
    }
}

void fillString(base::JsonWriter& writer, std::string_view text, const Insertions& insertions) {
    const bool isOne = text.starts_with(kOpening) && text.find('}') == text.size() - 1;
    if (isOne) {
        text.remove_prefix(kOpening.size());
        text.remove_suffix(1);
        writer.raw(insertions(text).json);
    } else {
        writer.value(fillText(text, insertions));
    }
}

void fillValue(base::JsonWriter& writer, dom::element value, const Insertions& insertions) {
    dom::object object;
    dom::array list;
    std::string_view text;
    if (value.get(object) == simdjson::SUCCESS) {
        writer.beginObject();
        for (const auto& [name, each] : object) {
            fillValue(writer.key(name), each, insertions);
        }
        writer.endObject();
    } else if (value.get(list) == simdjson::SUCCESS) {
        writer.beginArray();
        for (const dom::element each : list) {
            fillValue(writer, each, insertions);
        }
        writer.endArray();
    } else if (value.get(text) == simdjson::SUCCESS) {
        fillString(writer, text, insertions);
    } else {
        writer.raw(simdjson::minify(value));
    }
}

}  // namespace

Payload::Payload(const std::string& text) {
    dom::element root;
    if (m_parser.parse(text).get(root) == simdjson::SUCCESS) {
        m_root = root;
    }
}

std::optional<dom::element> Payload::member(std::string_view path) const {
    return m_root ? base::valueAt(*m_root, path) : std::nullopt;
}

bool Payload::matches(const std::map<std::string, PayloadPattern>& patterns) const {
    return std::ranges::all_of(
        patterns, [&](const auto& each) { return isAsSaid(member(each.first), each.second); });
}

std::string fillTemplate(const std::string& text, const Insertions& insertions) {
    if (text.find(kOpening) == std::string::npos) {
        return text;
    }
    dom::parser parser;
    dom::element root;
    const bool isJson = parser.parse(text).get(root) == simdjson::SUCCESS;
    if (!isJson || !(root.is_object() || root.is_array())) {
        return fillText(text, insertions);
    }
    base::JsonWriter writer;
    fillValue(writer, root, insertions);
    return writer.take();
}

}  // namespace tavsim

#include "linux/bus/basic_values.h"

#include <limits>
#include <string>

namespace dom = simdjson::dom;

namespace tavlinux {
namespace {

bool isText(char type) {
    return type == 's' || type == 'o' || type == 'g';
}

Variant text(std::string_view content, char type) {
    if (content.find('\0') != std::string_view::npos) {
        return nullptr;
    }
    const std::string text(content);
    if (type == 's') {
        return owned(g_variant_new_string(text.c_str()));
    }
    if (type == 'o') {
        const bool isPath = g_variant_is_object_path(text.c_str()) != FALSE;
        return owned(isPath ? g_variant_new_object_path(text.c_str()) : nullptr);
    }
    const bool isSignature = g_variant_is_signature(text.c_str()) != FALSE;
    return owned(isSignature ? g_variant_new_signature(text.c_str()) : nullptr);
}

// The values for which JSON has no numbers.
Variant specialDouble(std::string_view name) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    if (name == "NaN") {
        return owned(g_variant_new_double(std::numeric_limits<double>::quiet_NaN()));
    }
    if (name == "Infinity" || name == "-Infinity") {
        return owned(g_variant_new_double(name == "Infinity" ? infinity : -infinity));
    }
    return nullptr;
}

}  // namespace

Variant basicFromJson(const dom::element& json, char type) {
    std::string_view content;
    if (json.get(content) == simdjson::SUCCESS) {
        return isText(type) ? text(content, type) : type == 'd' ? specialDouble(content) : nullptr;
    }
    if (!json.is_number() && !json.is_bool()) {
        return nullptr;
    }
    // GLib spells these as JSON does, and knows the range of each type.
    const char signature[] = {type, '\0'};
    const std::string spelling = simdjson::minify(json);
    return Variant(
        g_variant_parse(G_VARIANT_TYPE(signature), spelling.c_str(), nullptr, nullptr, nullptr));
}

Variant basicFromKey(std::string_view spelling, char type) {
    if (isText(type)) {
        return text(spelling, type);
    }
    if (Variant special = type == 'd' ? specialDouble(spelling) : nullptr) {
        return special;
    }
    dom::parser parser;
    dom::element json;
    const bool isJson = parser.parse(std::string(spelling)).get(json) == simdjson::SUCCESS;
    return isJson ? basicFromJson(json, type) : nullptr;
}

Variant bytesFromBase64(std::string_view text) {
    gsize size = 0;
    g_autofree guchar* decoded = g_base64_decode(std::string(text).c_str(), &size);
    // The decoder skips invalid characters. The text is valid only if encoding restores it.
    g_autofree char* again = g_base64_encode(decoded, size);
    const bool isExact = text == again;
    return owned(isExact ? g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, decoded, size, 1)
                         : nullptr);
}

}  // namespace tavlinux

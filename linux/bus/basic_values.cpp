#include "linux/bus/basic_values.h"

#include <limits>
#include <string>

namespace dom = simdjson::dom;

namespace tavlinux {
namespace {

template <typename Number>
GVariant* integer(const dom::element& json, GVariant* (*make)(Number)) {
    int64_t value = 0;
    const bool fits = json.get(value) == simdjson::SUCCESS &&
                      value >= static_cast<int64_t>(std::numeric_limits<Number>::min()) &&
                      value <= static_cast<int64_t>(std::numeric_limits<Number>::max());
    return fits ? make(static_cast<Number>(value)) : nullptr;
}

GVariant* largeInteger(const dom::element& json) {
    uint64_t value = 0;
    return json.get(value) == simdjson::SUCCESS ? g_variant_new_uint64(static_cast<guint64>(value))
                                                : nullptr;
}

GVariant* boolean(const dom::element& json) {
    bool flag = false;
    return json.get(flag) == simdjson::SUCCESS ? g_variant_new_boolean(flag) : nullptr;
}

bool isText(char type) {
    return type == 's' || type == 'o' || type == 'g';
}

GVariant* text(std::string_view content, char type) {
    const std::string text(content);
    if (content.find('\0') != std::string_view::npos) {
        return nullptr;
    }
    if (type == 's') {
        return g_variant_new_string(text.c_str());
    }
    if (type == 'o') {
        const bool isPath = g_variant_is_object_path(text.c_str()) != FALSE;
        return isPath ? g_variant_new_object_path(text.c_str()) : nullptr;
    }
    const bool isSignature = g_variant_is_signature(text.c_str()) != FALSE;
    return isSignature ? g_variant_new_signature(text.c_str()) : nullptr;
}

// What JSON has no numbers for.
GVariant* specialDouble(std::string_view name) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    if (name == "NaN") {
        return g_variant_new_double(std::numeric_limits<double>::quiet_NaN());
    }
    if (name == "Infinity" || name == "-Infinity") {
        return g_variant_new_double(name == "Infinity" ? infinity : -infinity);
    }
    return nullptr;
}

}  // namespace

GVariant* basicFromJson(const dom::element& json, char type) {
    std::string_view content;
    double number = 0.0;
    switch (type) {
    case 'b':
        return boolean(json);
    case 'y':
        return integer<guint8>(json, g_variant_new_byte);
    case 'n':
        return integer<gint16>(json, g_variant_new_int16);
    case 'q':
        return integer<guint16>(json, g_variant_new_uint16);
    case 'i':
        return integer<gint32>(json, g_variant_new_int32);
    case 'u':
        return integer<guint32>(json, g_variant_new_uint32);
    case 'x':
        return integer<gint64>(json, g_variant_new_int64);
    case 't':
        return largeInteger(json);
    case 'd':
        if (json.get(number) == simdjson::SUCCESS) {
            return g_variant_new_double(number);
        }
        return json.get(content) == simdjson::SUCCESS ? specialDouble(content) : nullptr;
    default:
        break;
    }
    const bool fits = isText(type) && json.get(content) == simdjson::SUCCESS;
    return fits ? text(content, type) : nullptr;
}

GVariant* basicFromKey(std::string_view spelling, char type) {
    if (isText(type)) {
        return text(spelling, type);
    }
    if (GVariant* special = type == 'd' ? specialDouble(spelling) : nullptr) {
        return special;
    }
    dom::parser parser;
    dom::element json;
    const bool isJson = parser.parse(std::string(spelling)).get(json) == simdjson::SUCCESS;
    return isJson ? basicFromJson(json, type) : nullptr;
}

GVariant* bytesFromBase64(std::string_view text) {
    gsize size = 0;
    guchar* decoded = g_base64_decode(std::string(text).c_str(), &size);
    // The decoder skips what it does not know, so it is asked for the text again.
    char* again = g_base64_encode(decoded, size);
    GVariant* bytes = nullptr;
    if (text == again) {
        bytes = g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, decoded, size, 1);
    }
    g_free(again);
    g_free(decoded);
    return bytes;
}

}  // namespace tavlinux

#include "linux/bus/dbus_to_json.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <set>
#include <string_view>

#include "base/json/writer.h"
#include "linux/bus/basic_values.h"
#include "linux/bus/variant.h"

namespace tavlinux {
namespace {

int64_t integerOf(GVariant* value) {
    switch (g_variant_classify(value)) {
    case G_VARIANT_CLASS_BYTE:
        return g_variant_get_byte(value);
    case G_VARIANT_CLASS_INT16:
        return g_variant_get_int16(value);
    case G_VARIANT_CLASS_UINT16:
        return g_variant_get_uint16(value);
    case G_VARIANT_CLASS_INT32:
        return g_variant_get_int32(value);
    case G_VARIANT_CLASS_UINT32:
        return g_variant_get_uint32(value);
    default:
        return g_variant_get_int64(value);
    }
}

// A dictionary's key as the name of a member.
std::string keyText(GVariant* key);

// Whether the keys can be names of members: unique, and not equal to the name of a type's member.
bool canBeObject(GVariant* dictionary) {
    std::set<std::string> names;
    for (gsize i = 0; i < g_variant_n_children(dictionary); ++i) {
        const Variant entry = childOf(dictionary, i);
        std::string name = keyText(childOf(entry.get(), 0).get());
        if (name.ends_with(kTypeSuffix) || !names.insert(std::move(name)).second) {
            return false;
        }
    }
    return true;
}

bool looksLikeTypedValue(GVariant* dictionary) {
    const Variant type(g_variant_lookup_value(dictionary, "type", nullptr));
    const Variant value(g_variant_lookup_value(dictionary, "value", nullptr));
    return type && value && g_variant_n_children(dictionary) == 2;
}

// Whether the plain JSON alone becomes a variant of the same type again.
bool isTypeEvident(GVariant* inner) {
    constexpr int64_t lowest = std::numeric_limits<int32_t>::min();
    constexpr int64_t highest = std::numeric_limits<int32_t>::max();
    switch (g_variant_classify(inner)) {
    case G_VARIANT_CLASS_BOOLEAN:
    case G_VARIANT_CLASS_STRING:
    case G_VARIANT_CLASS_INT32:
        return true;
    case G_VARIANT_CLASS_INT64:
        return integerOf(inner) < lowest || integerOf(inner) > highest;
    case G_VARIANT_CLASS_UINT64:
        return g_variant_get_uint64(inner) > std::numeric_limits<int64_t>::max();
    case G_VARIANT_CLASS_DOUBLE:
        return std::isfinite(g_variant_get_double(inner));
    case G_VARIANT_CLASS_ARRAY:
        return isOfType(inner, "av") ||
               (isOfType(inner, "a{sv}") && canBeObject(inner) && !looksLikeTypedValue(inner));
    default:
        return false;
    }
}

struct Output {
    base::JsonWriter json;
    bool isComplete = true;

    void value(GVariant* value) {
        switch (g_variant_classify(value)) {
        case G_VARIANT_CLASS_BOOLEAN:
            json.value(g_variant_get_boolean(value) != FALSE);
            break;
        case G_VARIANT_CLASS_BYTE:
        case G_VARIANT_CLASS_INT16:
        case G_VARIANT_CLASS_UINT16:
        case G_VARIANT_CLASS_INT32:
        case G_VARIANT_CLASS_UINT32:
        case G_VARIANT_CLASS_INT64:
            json.value(integerOf(value));
            break;
        case G_VARIANT_CLASS_UINT64:
            json.value(g_variant_get_uint64(value));
            break;
        case G_VARIANT_CLASS_DOUBLE:
            number(g_variant_get_double(value));
            break;
        case G_VARIANT_CLASS_STRING:
        case G_VARIANT_CLASS_OBJECT_PATH:
        case G_VARIANT_CLASS_SIGNATURE:
            json.value(g_variant_get_string(value, nullptr));
            break;
        case G_VARIANT_CLASS_VARIANT:
            variant(childOf(value, 0).get());
            break;
        case G_VARIANT_CLASS_ARRAY:
            if (isOfType(value, "ay")) {
                bytes(value);
            } else if (isOfType(value, "a{?*}")) {
                dictionary(value);
            } else {
                list(value);
            }
            break;
        case G_VARIANT_CLASS_TUPLE:
        case G_VARIANT_CLASS_DICT_ENTRY:
            list(value);
            break;
        default:  // a file descriptor
            json.raw("null");
            isComplete = false;
        }
    }

    void variant(GVariant* inner) {
        if (isTypeEvident(inner)) {
            value(inner);
            return;
        }
        json.beginObject().member("type", g_variant_get_type_string(inner)).key("value");
        value(inner);
        json.endObject();
    }

    // For a variant, writes the value, and the type in a second member unless it is evident.
    void member(const std::string& name, GVariant* content) {
        json.key(name);
        if (!isOfType(content, "v")) {
            value(content);
            return;
        }
        const Variant inner = childOf(content, 0);
        value(inner.get());
        if (!isTypeEvident(inner.get())) {
            json.member(name + std::string(kTypeSuffix), g_variant_get_type_string(inner.get()));
        }
    }

    void dictionary(GVariant* dictionary) {
        if (!canBeObject(dictionary)) {
            list(dictionary);
            return;
        }
        json.beginObject();
        for (gsize i = 0; i < g_variant_n_children(dictionary); ++i) {
            const Variant entry = childOf(dictionary, i);
            member(keyText(childOf(entry.get(), 0).get()), childOf(entry.get(), 1).get());
        }
        json.endObject();
    }

    void list(GVariant* container) {
        json.beginArray();
        for (gsize i = 0; i < g_variant_n_children(container); ++i) {
            value(childOf(container, i).get());
        }
        json.endArray();
    }

    void number(double value) {
        if (!std::isfinite(value)) {
            json.value(std::isnan(value) ? "NaN" : value > 0.0 ? "Infinity" : "-Infinity");
            return;
        }
        char digits[40];
        const auto [end, problem] = std::to_chars(std::begin(digits), std::end(digits), value);
        std::string text(digits, end);
        if (text.find_first_of(".e") == std::string::npos) {
            text += ".0";
        }
        json.raw(text);
    }

    void bytes(GVariant* array) {
        gsize size = 0;
        const void* start = g_variant_get_fixed_array(array, &size, 1);
        g_autofree char* text = g_base64_encode(static_cast<const guchar*>(start), size);
        json.value(text);
    }
};

std::string keyText(GVariant* key) {
    if (isOfType(key, "s") || isOfType(key, "o") || isOfType(key, "g")) {
        return g_variant_get_string(key, nullptr);
    }
    Output output;
    output.value(key);
    std::string text = output.json.take();
    return text.front() == '"' ? text.substr(1, text.size() - 2) : text;
}

// GLib gives names of this form to arguments without a name.
bool isInventedName(std::string_view name) {
    const size_t digits = name.find_last_not_of("0123456789") + 1;
    return digits < name.size() && name.substr(0, digits) == "arg_";
}

}  // namespace

std::string argumentName(GDBusArgInfo* const* arguments, size_t position) {
    const char* name = nullptr;
    for (size_t i = 0; arguments != nullptr && arguments[i] != nullptr && i <= position; ++i) {
        name = i == position ? arguments[i]->name : nullptr;
    }
    for (size_t i = 0; name != nullptr && i < position; ++i) {
        if (g_strcmp0(arguments[i]->name, name) == 0) {
            name = nullptr;
        }
    }
    const bool hasName = name != nullptr && *name != '\0' && !isInventedName(name);
    return hasName ? name : "arg" + std::to_string(position);
}

std::optional<std::string> jsonFromResult(GVariant* tuple, GDBusArgInfo* const* arguments) {
    Output output;
    output.json.beginObject();
    bool hasReturnValue = false;
    const gsize count = g_variant_n_children(tuple);
    for (gsize i = 0; i < count; ++i) {
        hasReturnValue = hasReturnValue || argumentName(arguments, i) == "returnValue";
    }
    if (!hasReturnValue) {
        output.json.member("returnValue", true);
    }
    for (gsize i = 0; i < count; ++i) {
        output.member(argumentName(arguments, i), childOf(tuple, i).get());
    }
    output.json.endObject();
    return output.isComplete ? std::optional(output.json.take()) : std::nullopt;
}

}  // namespace tavlinux

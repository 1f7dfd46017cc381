#include "linux/bus/json_to_dbus.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "linux/bus/basic_values.h"
#include "linux/bus/dbus_to_json.h"

namespace dom = simdjson::dom;

namespace tavlinux {
namespace {

constexpr int kDeepest = 60;  // the bus disconnects a client that nests more than 64 levels

std::string spelled(const GVariantType* type) {
    return {g_variant_type_peek_string(type), g_variant_type_get_string_length(type)};
}

// A single complete type without file descriptors, which JSON cannot name.
bool isUsableType(const std::string& type) {
    return g_variant_type_string_is_valid(type.c_str()) != FALSE &&
           g_variant_is_signature(type.c_str()) != FALSE && type.find('h') == std::string::npos &&
           g_variant_type_is_definite(G_VARIANT_TYPE(type.c_str())) != FALSE;
}

// How many containers are inside one another.
int depthOf(const GVariantType* type) {
    const bool isArray = g_variant_type_is_array(type) != FALSE;
    const bool hasItems =
        g_variant_type_is_tuple(type) != FALSE || g_variant_type_is_dict_entry(type) != FALSE;
    int inner = isArray ? depthOf(g_variant_type_element(type)) : 0;
    const GVariantType* item = hasItems ? g_variant_type_first(type) : nullptr;
    for (; item != nullptr; item = g_variant_type_next(item)) {
        inner = std::max(inner, depthOf(item));
    }
    return inner + (g_variant_type_is_container(type) != FALSE ? 1 : 0);
}

// The type of a variant without a given type; empty for null.
std::string_view evidentType(const dom::element& json) {
    int64_t integer = 0;
    switch (json.type()) {
    case dom::element_type::BOOL:
        return "b";
    case dom::element_type::STRING:
        return "s";
    case dom::element_type::DOUBLE:
        return "d";
    case dom::element_type::INT64:
        integer = json.get_int64().value_unsafe();
        return integer >= G_MININT32 && integer <= G_MAXINT32 ? "i" : "x";
    case dom::element_type::UINT64:
        return "t";
    case dom::element_type::ARRAY:
        return "av";
    case dom::element_type::OBJECT:
        return "a{sv}";
    default:
        return "";
    }
}

// Whether a member only holds the type of the variant in another member.
bool isTypeOfAnother(const dom::object& object, std::string_view name) {
    if (!name.ends_with(kTypeSuffix)) {
        return false;
    }
    name.remove_suffix(kTypeSuffix.size());
    return object[name].error() == simdjson::SUCCESS;
}

// Reads one payload. Every function returns a value, or null once something did not fit.
class Input {
public:
    Variant argument(const dom::element& payload, size_t position, const std::string& name,
                     const char* signature, size_t* used) {
        if (!isUsableType(signature)) {
            return fail("argument \"" + name + "\" cannot be given in JSON");
        }
        const GVariantType* type = G_VARIANT_TYPE(signature);
        dom::object object;
        dom::array positions;
        dom::element json;
        const bool isObject = payload.get(object) == simdjson::SUCCESS;
        const bool isThere = isObject ? object[name].get(json) == simdjson::SUCCESS
                                      : payload.get(positions) == simdjson::SUCCESS &&
                                            positions.at(position).get(json) == simdjson::SUCCESS;
        if (!isThere) {
            return fail("no argument \"" + name + "\"");
        }
        if (!isObject) {
            ++*used;
            return value(json, type);
        }
        const bool hasType = g_variant_type_is_variant(type) != FALSE &&
                             object[name + std::string(kTypeSuffix)].error() == simdjson::SUCCESS;
        // A member "subscribe" has been counted already.
        *used += (name == "subscribe" ? 0 : 1) + (hasType ? 1 : 0);
        return member(object, name, json, type);
    }

    const std::string& problem() const { return m_problem; }

private:
    Variant value(const dom::element& json, const GVariantType* type) {
        Variant result;
        if (g_variant_type_is_container(type) == FALSE) {
            result = basicFromJson(json, *g_variant_type_peek_string(type));
        } else {
            // A dictionary has two levels. The type counts, even where an array is empty.
            m_depth += 2;
            const bool isDeep = m_depth + 2 * (depthOf(type) - 1) > kDeepest;
            result = isDeep ? fail("nested too deeply") : container(json, type);
            m_depth -= 2;
        }
        return result ? std::move(result)
                      : fail(simdjson::minify(json).substr(0, 80) + " is no value of type " +
                             spelled(type));
    }

    Variant container(const dom::element& json, const GVariantType* type) {
        std::string_view text;
        dom::object object;
        if (g_variant_type_is_variant(type) != FALSE) {
            return variant(json, std::nullopt);
        }
        if (json.get(object) == simdjson::SUCCESS) {
            const bool isDictionary =
                g_variant_type_is_subtype_of(type, G_VARIANT_TYPE_DICTIONARY) != FALSE;
            return isDictionary ? members(object, type) : nullptr;
        }
        if (json.get(text) == simdjson::SUCCESS) {
            const bool isBytes = g_variant_type_equal(type, G_VARIANT_TYPE_BYTESTRING) != FALSE;
            return isBytes ? bytesFromBase64(text) : nullptr;
        }
        return items(json, type);
    }

    Variant variant(const dom::element& json, std::optional<std::string_view> type) {
        std::string_view named;
        dom::element content = json;
        dom::object object;
        if (!type && json.get(object) == simdjson::SUCCESS && object.size() == 2 &&
            object["type"].get(named) == simdjson::SUCCESS &&
            object["value"].get(content) == simdjson::SUCCESS) {
            type = named;
        }
        if (!type && json.is_null()) {
            return fail("null has no type on D-Bus");
        }
        const std::string signature(type ? *type : evidentType(json));
        if (!isUsableType(signature)) {
            return fail("\"" + signature + "\" is no type");
        }
        const Variant inner = value(content, G_VARIANT_TYPE(signature.c_str()));
        return owned(inner ? g_variant_new_variant(inner.get()) : nullptr);
    }

    // The items of an array have one type. Those of a struct or a dictionary entry may differ.
    Variant items(const dom::element& json, const GVariantType* type) {
        const bool isArray = g_variant_type_is_array(type) != FALSE;
        dom::array elements;
        if (json.get(elements) != simdjson::SUCCESS ||
            (!isArray && elements.size() != g_variant_type_n_items(type))) {
            return nullptr;
        }
        g_auto(GVariantBuilder) builder;
        g_variant_builder_init(&builder, type);
        const GVariantType* next =
            isArray ? g_variant_type_element(type) : g_variant_type_first(type);
        for (const dom::element element : elements) {
            const Variant item = value(element, next);
            if (!item) {
                return nullptr;
            }
            g_variant_builder_add_value(&builder, item.get());
            next = isArray ? next : g_variant_type_next(next);
        }
        return owned(g_variant_builder_end(&builder));
    }

    // An object as a dictionary.
    Variant members(const dom::object& object, const GVariantType* type) {
        const GVariantType* entry = g_variant_type_element(type);
        const GVariantType* keyType = g_variant_type_key(entry);
        const GVariantType* valueType = g_variant_type_value(entry);
        const bool hasVariants = g_variant_type_is_variant(valueType) != FALSE;
        g_auto(GVariantBuilder) builder;
        g_variant_builder_init(&builder, type);
        for (const dom::key_value_pair field : object) {
            if (hasVariants && isTypeOfAnother(object, field.key)) {
                continue;
            }
            const Variant name = key(field.key, keyType);
            const Variant content =
                name ? member(object, field.key, field.value, valueType) : nullptr;
            if (!content) {
                return nullptr;
            }
            g_variant_builder_add_value(&builder,
                                        g_variant_new_dict_entry(name.get(), content.get()));
        }
        return owned(g_variant_builder_end(&builder));
    }

    // The value of a member. For a variant, a second member may hold the type.
    Variant member(const dom::object& object, std::string_view name, const dom::element& json,
                   const GVariantType* type) {
        std::string_view named;
        const bool isTyped =
            g_variant_type_is_variant(type) != FALSE &&
            object[std::string(name) + std::string(kTypeSuffix)].get(named) == simdjson::SUCCESS;
        return isTyped ? variant(json, named) : value(json, type);
    }

    Variant key(std::string_view name, const GVariantType* type) {
        Variant result = basicFromKey(name, *g_variant_type_peek_string(type));
        return result ? std::move(result)
                      : fail("\"" + std::string(name) + "\" is no key of type " + spelled(type));
    }

    Variant fail(const std::string& problem) {
        if (m_problem.empty()) {
            m_problem = problem;
        }
        return nullptr;
    }

    std::string m_problem;
    int m_depth = 0;
};

}  // namespace

Variant argumentsFromJson(const dom::element& payload, GDBusArgInfo* const* arguments,
                          std::string* problem) {
    Input input;
    dom::object object;
    dom::array positions;
    const bool isObject = payload.get(object) == simdjson::SUCCESS;
    if (!isObject && payload.get(positions) != simdjson::SUCCESS) {
        *problem = "the payload is no JSON object or list";
        return nullptr;
    }
    size_t used = isObject && object["subscribe"].error() == simdjson::SUCCESS ? 1 : 0;
    g_auto(GVariantBuilder) builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_TUPLE);
    for (size_t i = 0; arguments != nullptr && arguments[i] != nullptr; ++i) {
        const std::string name = argumentName(arguments, i);
        const Variant value = input.argument(payload, i, name, arguments[i]->signature, &used);
        if (!value) {
            *problem = input.problem();
            return nullptr;
        }
        g_variant_builder_add_value(&builder, value.get());
    }
    if ((isObject ? object.size() : positions.size()) > used) {
        *problem = "there are more arguments than the method has";
        return nullptr;
    }
    return owned(g_variant_builder_end(&builder));
}

}  // namespace tavlinux

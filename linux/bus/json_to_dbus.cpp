#include "linux/bus/json_to_dbus.h"

#include <optional>
#include <string_view>

#include "linux/bus/basic_values.h"
#include "linux/bus/dbus_to_json.h"

namespace dom = simdjson::dom;

namespace tavlinux {
namespace {

constexpr int kDeepest = 60;  // the bus ends the connection of who nests deeper than 64 levels
constexpr std::string_view kTypeSuffix = ":type";

// Reads one payload. Every function returns a floating value, or null once something did not fit.
class Input {
public:
    GVariant* argument(const dom::element& payload, size_t position, const std::string& name,
                       const char* signature, size_t* used);
    const std::string& problem() const { return m_problem; }

private:
    GVariant* value(const dom::element& json, const GVariantType* type);
    GVariant* variant(const dom::element& json, const std::optional<std::string_view>& type);
    GVariant* fail(const std::string& problem);

    // The value of a member, which for a variant may have its type beside it.
    GVariant* member(const dom::object& object, std::string_view name, const dom::element& json,
                     const GVariantType* type);
    GVariant* sequence(const dom::element& json, const GVariantType* type);
    GVariant* dictionary(const dom::element& json, const GVariantType* type);
    GVariant* container(const dom::element& json, const GVariantType* type);
    GVariant* variantOfEvidentType(const dom::element& json);
    GVariant* key(std::string_view name, const GVariantType* type);
    bool addEntry(GVariantBuilder* builder, GVariant* key, GVariant* value);

    std::string m_problem;
    int m_depth = 0;
};

std::string spelled(const GVariantType* type) {
    return {g_variant_type_peek_string(type), g_variant_type_get_string_length(type)};
}

// A single complete type without file descriptors, which JSON cannot name.
bool isUsableType(const std::string& type) {
    return g_variant_type_string_is_valid(type.c_str()) != FALSE &&
           g_variant_is_signature(type.c_str()) != FALSE && type.find('h') == std::string::npos &&
           g_variant_type_is_definite(G_VARIANT_TYPE(type.c_str())) != FALSE;
}

// Whether a member only tells the type of the variant in another.
bool isTypeOfAnother(const dom::object& object, std::string_view name) {
    if (!name.ends_with(kTypeSuffix)) {
        return false;
    }
    name.remove_suffix(kTypeSuffix.size());
    return object[name].error() == simdjson::SUCCESS;
}

GVariant* Input::fail(const std::string& problem) {
    if (m_problem.empty()) {
        m_problem = problem;
    }
    return nullptr;
}

// The items of an array, which are of one type, or of a struct, each of which has its own.
GVariant* Input::sequence(const dom::element& json, const GVariantType* type) {
    const bool isTuple = g_variant_type_is_tuple(type) != FALSE;
    dom::array elements;
    if (json.get(elements) != simdjson::SUCCESS ||
        (isTuple && elements.size() != g_variant_type_n_items(type))) {
        return nullptr;
    }
    GVariantBuilder builder;
    g_variant_builder_init(&builder, type);
    const GVariantType* next = isTuple ? g_variant_type_first(type) : g_variant_type_element(type);
    for (const dom::element element : elements) {
        GVariant* item = value(element, next);
        if (item == nullptr) {
            g_variant_builder_clear(&builder);
            return nullptr;
        }
        g_variant_builder_add_value(&builder, item);
        next = isTuple ? g_variant_type_next(next) : next;
    }
    return g_variant_builder_end(&builder);
}

GVariant* Input::key(std::string_view name, const GVariantType* type) {
    GVariant* result = basicFromKey(name, *g_variant_type_peek_string(type));
    return result != nullptr
               ? result
               : fail("\"" + std::string(name) + "\" is no key of type " + spelled(type));
}

bool Input::addEntry(GVariantBuilder* builder, GVariant* key, GVariant* value) {
    if (key == nullptr || value == nullptr) {
        for (GVariant* unused : {key, value}) {
            if (unused != nullptr) {
                g_variant_unref(g_variant_ref_sink(unused));
            }
        }
        g_variant_builder_clear(builder);
        return false;
    }
    g_variant_builder_add_value(builder, g_variant_new_dict_entry(key, value));
    return true;
}

GVariant* Input::dictionary(const dom::element& json, const GVariantType* type) {
    const GVariantType* entry = g_variant_type_element(type);
    const GVariantType* keyType = g_variant_type_key(entry);
    const GVariantType* valueType = g_variant_type_value(entry);
    const bool hasVariants = g_variant_type_equal(valueType, G_VARIANT_TYPE_VARIANT) != FALSE;
    dom::object object;
    dom::array pairs;
    GVariantBuilder builder;
    g_variant_builder_init(&builder, type);
    if (json.get(object) == simdjson::SUCCESS) {
        for (const dom::key_value_pair field : object) {
            const bool isType = hasVariants && isTypeOfAnother(object, field.key);
            if (!isType && !addEntry(&builder, key(field.key, keyType),
                                     member(object, field.key, field.value, valueType))) {
                return nullptr;
            }
        }
        return g_variant_builder_end(&builder);
    }
    if (json.get(pairs) == simdjson::SUCCESS) {
        for (const dom::element pair : pairs) {
            dom::element first;
            dom::element second;
            const bool isPair = pair.at_pointer("/0").get(first) == simdjson::SUCCESS &&
                                pair.at_pointer("/1").get(second) == simdjson::SUCCESS;
            if (!addEntry(&builder, isPair ? value(first, keyType) : nullptr,
                          isPair ? value(second, valueType) : nullptr)) {
                return nullptr;
            }
        }
        return g_variant_builder_end(&builder);
    }
    g_variant_builder_clear(&builder);
    return nullptr;
}

GVariant* Input::variantOfEvidentType(const dom::element& json) {
    switch (json.type()) {
    case dom::element_type::BOOL:
        return value(json, G_VARIANT_TYPE_BOOLEAN);
    case dom::element_type::STRING:
        return value(json, G_VARIANT_TYPE_STRING);
    case dom::element_type::DOUBLE:
        return value(json, G_VARIANT_TYPE_DOUBLE);
    case dom::element_type::UINT64:
        return value(json, G_VARIANT_TYPE_UINT64);
    case dom::element_type::ARRAY:
        return value(json, G_VARIANT_TYPE("av"));
    case dom::element_type::OBJECT:
        return value(json, G_VARIANT_TYPE_VARDICT);
    case dom::element_type::INT64: {
        int64_t integer = 0;
        const bool fits = json.get(integer) == simdjson::SUCCESS && integer >= G_MININT32 &&
                          integer <= G_MAXINT32;
        return value(json, fits ? G_VARIANT_TYPE_INT32 : G_VARIANT_TYPE_INT64);
    }
    default:
        return fail("null has no type on D-Bus");
    }
}

GVariant* Input::variant(const dom::element& json, const std::optional<std::string_view>& type) {
    std::string_view named = type.value_or(std::string_view());
    dom::element content = json;
    dom::object object;
    const bool isTypedValue = !type && json.get(object) == simdjson::SUCCESS &&
                              object.size() == 2 &&
                              object["type"].get(named) == simdjson::SUCCESS &&
                              object["value"].get(content) == simdjson::SUCCESS;
    GVariant* inner = nullptr;
    if (type || isTypedValue) {
        const std::string signature(named);
        inner = isUsableType(signature) ? value(content, G_VARIANT_TYPE(signature.c_str()))
                                        : fail("\"" + signature + "\" is no type");
    } else {
        inner = variantOfEvidentType(json);
    }
    return inner != nullptr ? g_variant_new_variant(inner) : nullptr;
}

GVariant* Input::member(const dom::object& object, std::string_view name, const dom::element& json,
                        const GVariantType* type) {
    std::string_view named;
    const bool isTyped =
        g_variant_type_equal(type, G_VARIANT_TYPE_VARIANT) != FALSE &&
        object[std::string(name) + std::string(kTypeSuffix)].get(named) == simdjson::SUCCESS;
    return isTyped ? variant(json, named) : value(json, type);
}

GVariant* Input::container(const dom::element& json, const GVariantType* type) {
    std::string_view text;
    if (g_variant_type_is_variant(type) != FALSE) {
        return variant(json, std::nullopt);
    }
    if (g_variant_type_is_subtype_of(type, G_VARIANT_TYPE_DICTIONARY) != FALSE) {
        return dictionary(json, type);
    }
    const bool isBytes = g_variant_type_equal(type, G_VARIANT_TYPE_BYTESTRING) != FALSE &&
                         json.get(text) == simdjson::SUCCESS;
    return isBytes ? bytesFromBase64(text) : sequence(json, type);
}

GVariant* Input::value(const dom::element& json, const GVariantType* type) {
    GVariant* result = nullptr;
    if (g_variant_type_is_container(type) == FALSE) {
        result = basicFromJson(json, *g_variant_type_peek_string(type));
    } else {
        // A dictionary's level has an entry's below it.
        m_depth += 2;
        result = m_depth <= kDeepest ? container(json, type) : fail("nested too deeply");
        m_depth -= 2;
    }
    return result != nullptr ? result
                             : fail(simdjson::minify(json).substr(0, 80) + " is no value of type " +
                                    spelled(type));
}

GVariant* Input::argument(const dom::element& payload, size_t position, const std::string& name,
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
    // A member "subscribe" counted before it was known to be an argument.
    *used += (name == "subscribe" ? 0 : 1) + (hasType ? 1 : 0);
    return member(object, name, json, type);
}

}  // namespace

GVariant* argumentsFromJson(const dom::element& payload, GDBusArgInfo* const* arguments,
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
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_TUPLE);
    for (size_t i = 0; arguments != nullptr && arguments[i] != nullptr; ++i) {
        const std::string name = argumentName(arguments, i);
        GVariant* value = input.argument(payload, i, name, arguments[i]->signature, &used);
        if (value == nullptr) {
            g_variant_builder_clear(&builder);
            *problem = input.problem();
            return nullptr;
        }
        g_variant_builder_add_value(&builder, value);
    }
    GVariant* tuple = g_variant_builder_end(&builder);
    if ((isObject ? object.size() : positions.size()) > used) {
        g_variant_unref(g_variant_ref_sink(tuple));
        *problem = "there are more arguments than the method has";
        return nullptr;
    }
    return tuple;
}

}  // namespace tavlinux

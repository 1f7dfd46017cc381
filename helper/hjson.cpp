#include "platform/hjson.h"

#include <simdjson.h>

#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "base/json/text.h"

namespace dom = simdjson::dom;

// A parser with the document that it parsed last. Parsers are reused, because making one costs more
// than parsing a short reply.
struct HJson {
    dom::parser parser;
    std::vector<char> padded;
    dom::element root;

    bool parse(const char* text) {
        const size_t length = std::strlen(text);
        if (padded.size() < length + simdjson::SIMDJSON_PADDING) {
            padded.resize(length + simdjson::SIMDJSON_PADDING);
        }
        std::memcpy(padded.data(), text, length);
        return base::parse(parser, {padded.data(), length}, true, &root);
    }

    bool find(const char* key, dom::element& value) const {
        return key != nullptr && root[std::string_view(key)].get(value) == simdjson::SUCCESS;
    }
};

namespace {

constexpr size_t kBytesKept = 1 << 20;  // after a larger text, the parser is destroyed

std::unique_ptr<HJson>& idleParser() {
    static auto& parser = *new std::unique_ptr<HJson>;
    return parser;
}

std::unique_ptr<HJson> takeParser() {
    if (idleParser() == nullptr) {
        return std::make_unique<HJson>();
    }
    return std::move(idleParser());
}

void giveBack(std::unique_ptr<HJson> json) {
    if (json->padded.size() <= kBytesKept) {
        idleParser().swap(json);
    }
}

template <typename Value>
Value valueOr(const HJson* json, const char* key, Value neutral) {
    dom::element element;
    Value value;
    const bool found =
        json != nullptr && json->find(key, element) && element.get(value) == simdjson::SUCCESS;
    return found ? value : neutral;
}

}  // namespace

HJson* HJson_create(const char* text) try {
    if (text == nullptr) {
        return nullptr;
    }
    std::unique_ptr<HJson> json = takeParser();
    if (!json->parse(text)) {
        giveBack(std::move(json));
        return nullptr;
    }
    return json.release();
} catch (const std::bad_alloc&) {
    return nullptr;
}

void HJson_free(HJson* json) {
    if (json != nullptr) {
        giveBack(std::unique_ptr<HJson>(json));
    }
}

int HJson_getBool(const HJson* json, const char* key) {
    return valueOr<bool>(json, key, false) ? 1 : 0;
}

int HJson_getInt(const HJson* json, const char* key) {
    // A double represents every 32-bit integer exactly.
    const double value = valueOr<double>(json, key, 0.0);
    constexpr double lowest = std::numeric_limits<int>::min();
    constexpr double highest = std::numeric_limits<int>::max();
    return value > lowest - 1.0 && value < highest + 1.0 ? static_cast<int>(value) : 0;
}

double HJson_getDouble(const HJson* json, const char* key) {
    return valueOr<double>(json, key, 0.0);
}

int HJson_valueExists(const HJson* json, const char* key) {
    dom::element value;
    return json != nullptr && json->find(key, value) ? 1 : 0;
}

HString* HJson_getValueFromStr(const char* text, const char* key) try {
    const std::unique_ptr<HJson, decltype(&HJson_free)> json(HJson_create(text), HJson_free);
    dom::element value;
    if (json == nullptr || !json->find(key, value)) {
        return nullptr;
    }
    const std::string valueText = base::textOf(value);
    HString* result = HString_alloc();
    if (result != nullptr && HString_append(result, "%s", valueText.c_str()) == 0) {
        HString_free(result);
        return nullptr;
    }
    return result;
} catch (const std::bad_alloc&) {
    return nullptr;
}

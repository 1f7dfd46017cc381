// The helper library's strings, JSON and lists, as the contract promises them.
#include <climits>
#include <cmath>
#include <thread>

#include "device_test.h"
#include "platform/hjson.h"
#include "platform/hlinkedlist.h"
#include "platform/hstring.h"

namespace {

using Json = std::unique_ptr<HJson, decltype(&HJson_free)>;

Json parse(const std::string& text) {
    return Json(HJson_create(text.c_str()), HJson_free);
}

std::string nested(int levels) {
    return "{\"a\":" + std::string(static_cast<size_t>(levels), '[') +
           std::string(static_cast<size_t>(levels), ']') + ",\"n\":7}";
}

TEST(HStringTest, GrowsKeepsItsLengthAndSurvivesANullArgument) {
    HString* string = HString_alloc();
    const std::string piece(1000, 'x');
    for (int i = 0; i < 100; ++i) {
        ASSERT_NE(HString_append(string, "%s", piece.c_str()), 0);
    }
    EXPECT_EQ(string->length, 100000U);
    EXPECT_EQ(std::strlen(HString_toStr(string)), 100000U);
    const char* volatile null = nullptr;  // or the compiler warns where it can see it
    EXPECT_NE(HString_append(string, "%s", null), 0);
    EXPECT_EQ(string->length, 100006U);
    HString_free(string);
    HString_free(nullptr);
}

TEST(HStringTest, AppendThatFailsLeavesTheStringAsItWas) {
    HString* string = HString_alloc();
    HString_append(string, "kept");
    sim::device().failNth(sim::Fault::StringAllocation, 1);
    EXPECT_EQ(HString_append(string, " lost"), 0);
    EXPECT_STREQ(HString_toStr(string), "kept");
    sim::device().failNth(sim::Fault::StringAllocation, 1);
    EXPECT_EQ(HString_alloc(), nullptr);
    HString_free(string);
}

TEST(HJsonTest, RefusesWhatIsNotOneJsonValue) {
    const std::string refused[] = {
        "",           " ",   "{",        "{\"a\":1}}",           "{\"a\":1} x",   "{'a':1}",
        "{\"a\":01}", "nul", "\xff\xfe", "{\"a\":\"\xc3\x28\"}", "{\"a\":1e999}", nested(2000)};
    for (const std::string& text : refused) {
        EXPECT_EQ(parse(text), nullptr) << text.substr(0, 40);
        EXPECT_EQ(HJson_getValueFromStr(text.c_str(), "a"), nullptr) << text.substr(0, 40);
    }
    EXPECT_EQ(HJson_create(nullptr), nullptr);
    EXPECT_NE(parse(nested(500)), nullptr);
}

TEST(HJsonTest, ReadsEachTypeAndAnswersOthersWithTheNeutralValue) {
    const Json json = parse(
        R"({"yes":true,"no":false,"one":1,"less":-7,"half":2.75,"text":"12","big":4294967296,
            "low":-2147483648,"below":-2147483649,"null":null,"list":[1],"twice":1,"twice":2})");
    ASSERT_NE(json, nullptr);
    const struct {
        const char* key;
        int asBool;
        int asInt;
        double asDouble;
        int exists;
    } rows[] = {
        {"yes", 1, 0, 0.0, 1},
        {"no", 0, 0, 0.0, 1},
        {"one", 0, 1, 1.0, 1},
        {"less", 0, -7, -7.0, 1},
        {"half", 0, 2, 2.75, 1},
        {"text", 0, 0, 0.0, 1},
        {"big", 0, 0, 4294967296.0, 1},
        {"low", 0, INT_MIN, INT_MIN, 1},
        {"below", 0, 0, -2147483649.0, 1},
        {"null", 0, 0, 0.0, 1},
        {"list", 0, 0, 0.0, 1},
        {"twice", 0, 1, 1.0, 1},
        {"absent", 0, 0, 0.0, 0},
        {"", 0, 0, 0.0, 0},
        {nullptr, 0, 0, 0.0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.key != nullptr ? row.key : "null");
        EXPECT_EQ(HJson_getBool(json.get(), row.key), row.asBool);
        EXPECT_EQ(HJson_getInt(json.get(), row.key), row.asInt);
        EXPECT_EQ(HJson_getDouble(json.get(), row.key), row.asDouble);
        EXPECT_EQ(HJson_valueExists(json.get(), row.key), row.exists);
    }
    EXPECT_EQ(HJson_getInt(parse("[1]").get(), "0"), 0);
}

TEST(HJsonTest, GivesAnyValueAsText) {
    const struct {
        const char* key;
        const char* text;  // null: there is none
    } rows[] = {{"s", "a \"b\" \xc3\xa9"}, {"n", "12"},   {"d", "0.5"},      {"b", "false"},
                {"o", "{\"x\":[1,2]}"},    {"z", "null"}, {"gone", nullptr}, {nullptr, nullptr}};
    const char* json =
        R"({"s":"a \"b\" \u00e9","n":12,"d":0.5,"b":false,"o":{ "x" : [1, 2] },"z":null})";
    for (const auto& row : rows) {
        HString* value = HJson_getValueFromStr(json, row.key);
        ASSERT_EQ(value != nullptr, row.text != nullptr);
        if (value != nullptr) {
            EXPECT_STREQ(HString_toStr(value), row.text);
            EXPECT_EQ(value->length, std::strlen(row.text));
        }
        HString_free(value);
    }
}

TEST(HJsonTest, HandlesLiveBesideEachOther) {
    const Json first = parse(R"({"n":1})");
    const Json second = parse(R"({"n":2})");
    EXPECT_EQ(HJson_getInt(first.get(), "n"), 1);
    EXPECT_EQ(HJson_getInt(second.get(), "n"), 2);
}

// Removals from both ends and the middle, between appends, against the plainest list there is.
TEST(HLinkedListTest, KeepsItsOrderThroughAppendsAndRemovals) {
    HLinkedList list;
    std::vector<void*> model;
    int things[500];
    unsigned random = 12345;
    for (int step = 0; step < 5000; ++step) {
        random = random * 1103515245U + 12345U;
        void* thing = &things[(random >> 16) % 500];
        const bool removes = !model.empty() && (random >> 8) % 5 < 2;
        if (removes) {
            const size_t index = (random >> 4) % 3 == 0 ? 0 : (random >> 10) % model.size();
            list.remove(static_cast<int>(index));
            model.erase(model.begin() + static_cast<std::ptrdiff_t>(index));
        } else {
            list.append(thing);
            model.push_back(thing);
        }
        ASSERT_EQ(list.size(), static_cast<int>(model.size()));
        for (size_t i = 0; i < model.size(); i += 7) {
            ASSERT_EQ(list.get(static_cast<int>(i)), model[i]);
        }
    }
    void* last = model.back();
    EXPECT_EQ(list.getLLElem(last), last);
    EXPECT_EQ(list.getLLElem(&random), nullptr);
    EXPECT_EQ(list.get(-1), nullptr);
    EXPECT_EQ(list.get(list.size()), nullptr);
    list.remove(-1);
    list.remove(&random);
    EXPECT_EQ(list.size(), static_cast<int>(model.size()));
    list.clear();
    EXPECT_EQ(list.size(), 0);
}

}  // namespace

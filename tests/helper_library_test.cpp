// The helper library's strings, JSON and lists, as the contract promises them.
#include <climits>
#include <memory>

#include "device_test.h"
#include "helper/suggestion.h"
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

TEST(HStringTest, GrowsKeepsItsLengthAndSurvivesAFailure) {
    HString* string = HString_alloc();
    const std::string piece(100000, 'x');
    ASSERT_NE(HString_append(string, "%s", "kept "), 0);
    ASSERT_NE(HString_append(string, "%s", piece.c_str()), 0);
    const char* volatile null = nullptr;  // or the compiler warns where it can see it
    EXPECT_NE(HString_append(string, "%s", null), 0);
    tavsim::device().failNth(tavsim::Fault::Allocation, 1);
    EXPECT_EQ(HString_append(string, " lost"), 0);
    EXPECT_EQ(HString_toStr(string), "kept " + piece + "(null)");
    EXPECT_EQ(string->length, piece.size() + 11);
    tavsim::device().failNth(tavsim::Fault::Allocation, 1);
    EXPECT_EQ(HString_alloc(), nullptr);
    HString_free(string);
    HString_free(nullptr);
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

TEST(HJsonTest, ReadsNumbersAtTheirEdgesAndTheFirstOfTwoFields) {
    const Json json = parse(R"({"low":-2147483648,"below":-2147483649,"twice":1,"twice":2})");
    ASSERT_NE(json, nullptr);
    EXPECT_EQ(HJson_getInt(json.get(), "low"), INT_MIN);
    EXPECT_EQ(HJson_getInt(json.get(), "below"), 0);
    EXPECT_EQ(HJson_getDouble(json.get(), "below"), -2147483649.0);
    EXPECT_EQ(HJson_getInt(json.get(), "twice"), 1);
    EXPECT_EQ(HJson_valueExists(json.get(), nullptr), 0);
    EXPECT_EQ(HJson_getInt(parse("[1]").get(), "0"), 0);
}

TEST(SuggestionTest, NamesTheNearestAndNothingThatIsFar) {
    const struct {
        const char* word;
        const char* meant;  // null: nothing
    } rows[] = {
        {"locaton", "location"}, {"sate", "state"},  {"lsit", "list"},
        {"xjournal", "journal"}, {"quern", nullptr}, {"", nullptr},
        {"xy", nullptr},         {"stale", "state"}, {"ls", nullptr},
    };
    const std::vector<std::string> names = {"list", "location", "state", "journal", "q"};
    for (const auto& row : rows) {
        const std::string expected =
            row.meant == nullptr ? "" : std::string("; did you mean \"") + row.meant + "\"?";
        EXPECT_EQ(helper::suggestion(row.word, names), expected) << row.word;
    }
    EXPECT_EQ(helper::suggestion(std::string(1 << 20, 'q'), names), "");
}

TEST(HLinkedListTest, KeepsItsOrderThroughAppendsAndRemovals) {
    HLinkedList list;
    int things[6];
    const auto expectThings = [&](const std::vector<int>& numbers) {
        ASSERT_EQ(list.size(), static_cast<int>(numbers.size()));
        for (int i = 0; i < list.size(); ++i) {
            EXPECT_EQ(list.get(i), &things[numbers[static_cast<std::size_t>(i)]]);
        }
        EXPECT_EQ(list.get(-1), nullptr);
        EXPECT_EQ(list.get(list.size()), nullptr);
    };
    for (int i = 0; i < 5; ++i) {
        list.append(&things[i]);
    }
    list.remove(2);
    list.remove(&things[4]);
    list.append(&things[5]);
    expectThings({0, 1, 3, 5});
    list.remove(0);
    list.remove(-1);
    list.remove(&things[0]);
    expectThings({1, 3, 5});
    EXPECT_EQ(list.getLLElem(&things[3]), &things[3]);
    EXPECT_EQ(list.getLLElem(&things[0]), nullptr);
    list.clear();
    expectThings({});
}

}  // namespace

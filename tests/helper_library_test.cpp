// The helper library's strings, JSON and lists, as the contract promises them.
#include <algorithm>
#include <climits>
#include <memory>
#include <random>
#include <vector>

#include "base/suggestion.h"
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
        {"locaton", "location"}, {"sate", "state"},  {"lsit", "list"},    {"ilst", "list"},
        {"xjournal", "journal"}, {"quern", nullptr}, {"", nullptr},       {"xy", nullptr},
        {"stale", "state"},      {"ls", nullptr},    {"lotion", nullptr},
    };
    const std::vector<std::string> names = {"list", "location", "state", "journal", "q"};
    for (const auto& row : rows) {
        const std::string expected =
            row.meant == nullptr ? "" : std::string("; did you mean \"") + row.meant + "\"?";
        EXPECT_EQ(base::suggestion(row.word, names), expected) << row.word;
    }
    EXPECT_EQ(base::suggestion(std::string(1 << 20, 'q'), names), "");
}

// Beside a model, in phases that fill and empty it from every side, with elements that are in it
// more than once.
TEST(HLinkedListTest, KeepsItsOrderThroughAppendsAndRemovals) {
    std::mt19937 random(20260802);
    const auto below = [&](std::size_t limit) { return random() % limit; };
    HLinkedList list;
    std::vector<void*> model;
    char things[300];
    for (int step = 0; step < 60000; ++step) {
        const std::size_t grows = step % 2000 < 1000 ? 5 : 1;
        const std::size_t index = (step / 2000) % 3 == 0   ? 0
                                  : (step / 2000) % 3 == 1 ? model.size() - 1
                                                           : below(model.size() + 1);
        void* thing = &things[below(std::size(things))];
        if (below(6) < grows) {
            ASSERT_NE(list.append(thing), 0);
            model.push_back(thing);
        } else if (below(2) == 0) {
            list.remove(static_cast<int>(index));
            if (index < model.size()) {
                model.erase(model.begin() + static_cast<std::ptrdiff_t>(index));
            }
        } else {
            thing = index < model.size() ? model[index] : thing;
            list.remove(thing);
            const auto found = std::find(model.begin(), model.end(), thing);
            model.erase(found, found == model.end() ? found : found + 1);
        }
        const bool isThere = std::find(model.begin(), model.end(), thing) != model.end();
        ASSERT_EQ(list.getLLElem(thing), isThere ? thing : nullptr);
        ASSERT_EQ(list.size(), static_cast<int>(model.size()));
        ASSERT_EQ(list.get(static_cast<int>(index)), index < model.size() ? model[index] : nullptr);
        for (int at = step % 100 == 0 ? list.size() : -1; at >= 0; --at) {
            const auto place = static_cast<std::size_t>(at);
            ASSERT_EQ(list.get(at), place < model.size() ? model[place] : nullptr);
        }
        if (step % 20000 == 19999) {
            list.clear();
            model.clear();
        }
    }
    EXPECT_EQ(list.get(-1), nullptr);
    tavsim::device().failNth(tavsim::Fault::Allocation, 1);
    EXPECT_EQ(list.append(things), 0);
    EXPECT_EQ(list.size(), 0);
}

}  // namespace

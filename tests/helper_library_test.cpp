// The helper library's strings, JSON and lists, as the contract promises them.
#include <algorithm>
#include <random>
#include <vector>

#include "base/json/writer.h"
#include "base/suggestion.h"
#include "device_test.h"
#include "platform/hdata.h"
#include "platform/hjson.h"
#include "platform/hlinkedlist.h"
#include "platform/hstring.h"

namespace {

TEST(HStringTest, GrowsKeepsItsLengthAndSurvivesAFailure) {
    HString_free(HString_alloc());
    HString* string = HString_alloc();  // in memory that was used before
    EXPECT_STREQ(HString_toStr(string), "");
    ASSERT_NE(HString_append(string, "%s", "kept "), 0);
    const std::string piece(3 * string->capacity / 2, 'x');  // twice the room is too little
    ASSERT_NE(HString_append(string, "%s", piece.c_str()), 0);
    EXPECT_GT(string->capacity, string->length);
    const char* volatile null = nullptr;  // volatile: else the compiler warns
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

TEST(HDataTest, WritesNothingOutsideTheBuffer) {
    HDataWriter writer;
    for (const char* text : {"longer", "lost", "unread"}) {
        writer.writeStr(text);
    }
    HDataReader reader(writer.bytes(), writer.size());
    char buffer[] = "12345678";
    reader.readStr(buffer, 4);
    EXPECT_EQ(std::string(buffer, 8), std::string("lon\0", 4) + "5678");
    reader.readStr(buffer, 0);
    EXPECT_STREQ(buffer, "lon");
    reader.readStr(buffer, 4);
    EXPECT_STREQ(buffer, "") << "nothing is read after a failure";
    EXPECT_FALSE(reader.isSuccessful());
}

TEST(HJsonTest, TakesNothingAndDeepNesting) {
    const std::string nested = std::string(500, '[') + std::string(500, ']');
    for (const char* text : {"", " ", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(HJson_create(text), nullptr);
    }
    HJson* json = HJson_create(nested.c_str());
    ASSERT_NE(json, nullptr);
    EXPECT_EQ(HJson_valueExists(json, nullptr), 0);
    EXPECT_EQ(HJson_getInt(json, "0"), 0);
    HJson_free(json);
}

TEST(SuggestionTest, NamesTheNearestAndNothingThatIsFar) {
    const std::vector<std::string> names = {"list", "location", "state", "journal", "q"};
    const std::pair<const char*, const char*> meant[] = {
        {"locaton", "location"}, {"sate", "state"},       {"lsit", "list"},
        {"ilst", "list"},        {"xjournal", "journal"}, {"stale", "state"}};
    for (const auto& [word, name] : meant) {
        EXPECT_EQ(base::suggestion(word, names), std::string("; did you mean \"") + name + "\"?");
    }
    for (const char* word : {"quern", "", "xy", "ls", "lotion"}) {
        EXPECT_EQ(base::suggestion(word, names), "") << word;
    }
    EXPECT_EQ(base::suggestion(std::string(1 << 20, 'q'), names), "");
}

TEST(QuotedTest, CutsALongTextBetweenCharacters) {
    std::string half;
    for (int count = 0; count < 24; ++count) {
        half += "\U0001F600";
    }
    EXPECT_EQ(base::quoted("a" + half + half + half + "b"), "\"a" + half + "…" + half + "b\"");
}

// Compared with a model, in phases that fill the list and empty it from both ends and at random.
// Some elements are in it several times.
TEST(HLinkedListTest, KeepsItsOrderThroughAppendsAndRemovals) {
    std::mt19937 random(20260802);
    const auto below = [&](std::size_t limit) { return random() % limit; };
    HLinkedList list;
    std::vector<void*> model;
    char things[300];
    for (int step = 0; step < 60000; ++step) {
        const std::size_t grows = step % 2000 < 1000 ? 5 : 1;
        const std::size_t places[] = {0, model.size() - 1, below(model.size() + 1)};
        const std::size_t index = places[step / 2000 % 3];
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
        ASSERT_EQ(list.getLLElem(thing), std::ranges::count(model, thing) != 0 ? thing : nullptr);
        ASSERT_EQ(list.size(), static_cast<int>(model.size()));
        ASSERT_EQ(list.get(static_cast<int>(index)), index < model.size() ? model[index] : nullptr);
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

// The interface for tests in C: a missing device, invalid arguments, and the ends of the journal.
#include "tavsim.h"

#include <thread>

#include "platform/napp.h"
#include "transcript.h"

namespace {

class TavsimTest : public tavtest::TranscriptTest {
protected:
    void SetUp() override {
        TranscriptTest::SetUp();
        device.stop();
        ASSERT_EQ(TAVSim_Start("{}", nullptr), 0) << TAVSim_GetError();
    }
    void TearDown() override {
        TAVSim_Stop();
        TranscriptTest::TearDown();
    }

    std::string lastError() override { return TAVSim_GetError(); }

    // Every function that needs a device, with valid arguments.
    void callAll() {
        CALL(TAVSim_Advance(1));
        CALL(TAVSim_Command("state"));
        CALL(TAVSim_State("vibrator"));
        CALL(TAVSim_JournalLength());
        CALL(TAVSim_JournalLine(0));
        CALL(TAVSim_FindEntry("kind=*", 0));
        CALL(TAVSim_FailNth(TAVSIM_READ, 1));
        CALL(TAVSim_FailFrom(TAVSIM_READ, 1));
        CALL(TAVSim_Occurrences(TAVSIM_READ));
    }
};

TEST_F(TavsimTest, NeedsADeviceOnItsOwnThread) {
    std::thread([this] {
        callAll();
        CALL(TAVSim_Stop());
        CALL(TAVSim_Start("{}", nullptr));
    }).join();
    CALL(TAVSim_JournalLength());
    CALL(TAVSim_Stop());
    CALL(TAVSim_Stop());
    callAll();
}

TEST_F(TavsimTest, RefusesWhatMakesNoSense) {
    CALL(TAVSim_Advance(-1));
    CALL(TAVSim_Command(nullptr));
    CALL(TAVSim_Command("location error"));
    CALL(TAVSim_Command("fail host:0"));
    CALL(TAVSim_Command("fail host:++"));
    CALL(TAVSim_State(nullptr));
    CALL(TAVSim_State("keybord"));
    CALL(TAVSim_State("media"));
    CALL(TAVSim_JournalLine(0));
    CALL(TAVSim_FindEntry(nullptr, 0));
    CALL(TAVSim_FindEntry("kind=* within 1s", 0));
    CALL(TAVSim_FailNth(TAVSIM_READ, -1));
    CALL(TAVSim_FailFrom(TAVSIM_READ + 1, 1));
    CALL(TAVSim_Occurrences(-1));
    TAVSim_Options realTime = {};
    realTime.realTime = 1;
    ASSERT_EQ(TAVSim_Start("quern", &realTime), 0) << TAVSim_GetError();
    CALL(TAVSim_Advance(0));
}

TEST_F(TavsimTest, StartsNoDeviceFromWhatIsWrong) {
    TAVSim_Options page = {};
    page.page = "nowhere/page.js";
    TAVSim_Options journal = {};
    journal.journal = "/nowhere/journal";
    CALL(TAVSim_Start(nullptr, nullptr));
    CALL(TAVSim_Start(" \n{\"machine\": 5}", nullptr));
    CALL(TAVSim_Start("gramophone", nullptr));
    CALL(TAVSim_Start("{}", &page));
    CALL(TAVSim_Start("{}", &journal));
    callAll();
}

TEST_F(TavsimTest, FindsEntriesAmongTheLinesThatAreKept) {
    constexpr int kChanges = 6000;  // two entries each; the journal keeps the last 10000
    for (int change = 0; change < kChanges; ++change) {
        NApp_SetKeyboardState(change % 2);
    }
    ASSERT_EQ(TAVSim_JournalLength(), 2 * kChanges);
    EXPECT_STREQ(TAVSim_State("keyboard"), "shown");
    EXPECT_EQ(TAVSim_JournalLine(1999), nullptr);
    EXPECT_THAT(TAVSim_JournalLine(2000), testing::HasSubstr("NApp_SetKeyboardState"));
    EXPECT_THAT(TAVSim_JournalLine(11999), testing::HasSubstr("\"shown\""));
    EXPECT_EQ(TAVSim_JournalLine(12000), nullptr);
    for (const auto& [start, found] :
         {std::pair(-1, 2001), {0, 2001}, {2002, 2005}, {11998, -1}, {1 << 30, -1}}) {
        EXPECT_EQ(TAVSim_FindEntry("what=keyboard outcome=hidden", start), found) << start;
    }
}

TEST_F(TavsimTest, OneThingOrAllFromItOnFail) {
    const auto accepted = [] {
        const auto once = [] { return NApp_SetKeyboardState(1) != 0 ? '1' : '0'; };
        return std::string{once(), once(), once(), once()};
    };
    TAVSim_FailNth(TAVSIM_HOST, 2);
    EXPECT_EQ(accepted(), "1011");
    TAVSim_FailFrom(TAVSIM_HOST, 3);
    EXPECT_EQ(accepted(), "1100");
    EXPECT_EQ(accepted(), "0000");
    EXPECT_EQ(TAVSim_Occurrences(TAVSIM_HOST), 8);
    EXPECT_STREQ(TAVSim_Command("fail host:4"), "");
    EXPECT_EQ(accepted(), "1110");
    EXPECT_STREQ(TAVSim_Command("fail host:1+"), "");
    EXPECT_EQ(accepted(), "0000");
    TAVSim_FailFrom(TAVSIM_HOST, 0);
    EXPECT_EQ(accepted(), "1111");
    for (const char* other : {"fail allocation:9", "fail dispatch:9", "fail read:9"}) {
        EXPECT_STREQ(TAVSim_Command(other), "");
    }
}

}  // namespace

// The interface for tests in C: where it does not reach, what it refuses, and the journal's ends.
#include "tavsim.h"

#include <functional>
#include <string>
#include <thread>

#include "device_test.h"
#include "platform/napp.h"

namespace {

constexpr char kNoDevice[] = "no device runs; TAVSim_Start() starts one";
constexpr char kOtherThread[] = "the device belongs to the thread that started it";

class TavsimTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(TAVSim_Start("{}", nullptr), 0) << TAVSim_GetError(); }
    void TearDown() override { TAVSim_Stop(); }
};

struct Refusal {
    std::function<bool()> isRefused;
    const char* error;
};

void expectRefusals(const std::vector<Refusal>& refusals) {
    for (const Refusal& refusal : refusals) {
        EXPECT_TRUE(refusal.isRefused()) << refusal.error;
        EXPECT_STREQ(TAVSim_GetError(), refusal.error);
    }
}

// All that needs a device, with arguments that are right.
std::vector<Refusal> refusalsOfAll(const char* error) {
    return {{[] { return TAVSim_Advance(1) == -1; }, error},
            {[] { return TAVSim_Command("state") == nullptr; }, error},
            {[] { return TAVSim_State("vibrator") == nullptr; }, error},
            {[] { return TAVSim_JournalLength() == -1; }, error},
            {[] { return TAVSim_JournalLine(0) == nullptr; }, error},
            {[] { return TAVSim_FindEntry("kind=*", 0) == -2; }, error},
            {[] { return TAVSim_FailNth(TAVSIM_READ, 1) == -1; }, error},
            {[] { return TAVSim_FailFrom(TAVSIM_READ, 1) == -1; }, error},
            {[] { return TAVSim_Occurrences(TAVSIM_READ) == -1; }, error}};
}

TEST_F(TavsimTest, NeedsADeviceOnItsOwnThread) {
    std::thread([] {
        expectRefusals(refusalsOfAll(kOtherThread));
        expectRefusals({{[] { return TAVSim_Stop() == -1; }, kOtherThread},
                        {[] { return TAVSim_Start("{}", nullptr) == -1; }, kOtherThread}});
    }).join();
    EXPECT_EQ(TAVSim_JournalLength(), 0);
    EXPECT_EQ(TAVSim_Stop(), 0);
    EXPECT_EQ(TAVSim_Stop(), 0);
    expectRefusals(refusalsOfAll(kNoDevice));
}

TEST_F(TavsimTest, RefusesWhatMakesNoSense) {
    expectRefusals({
        {[] { return TAVSim_Advance(-1) == -1; }, "time cannot go back"},
        {[] { return TAVSim_Command(nullptr) == nullptr; }, "the command is null"},
        {[] { return TAVSim_Command("location error") == nullptr; }, "usage: location error CODE"},
        {[] { return TAVSim_Command("fail host:0") == nullptr; }, "usage: fail KIND:N[+]"},
        {[] { return TAVSim_Command("fail host:++") == nullptr; }, "usage: fail KIND:N[+]"},
        {[] { return TAVSim_State(nullptr) == nullptr; }, "the name is null"},
        {[] { return TAVSim_State("door") == nullptr; },
         "the application has done nothing to door"},
        {[] { return TAVSim_JournalLine(0) == nullptr; }, "the journal has no line 0"},
        {[] { return TAVSim_FindEntry(nullptr, 0) == -2; }, "the pattern is null"},
        {[] { return TAVSim_FindEntry("kind=* within 1s", 0) == -2; },
         "the journal is searched as it is; let time pass before"},
        {[] { return TAVSim_FailNth(TAVSIM_READ, -1) == -1; }, "things are counted from 1"},
        {[] { return TAVSim_FailFrom(TAVSIM_READ + 1, 1) == -1; }, "there is no such fault"},
        {[] { return TAVSim_Occurrences(-1) == -1; }, "there is no such fault"},
    });
}

TEST_F(TavsimTest, StartsNoDeviceFromWhatIsWrong) {
    TAVSim_Options page = {};
    page.page = "nowhere/page.js";
    TAVSim_Options journal = {};
    journal.journal = "/nowhere/journal";
    expectRefusals({
        {[] { return TAVSim_Start(nullptr, nullptr) == -1; }, "the profile is null"},
        {[] { return TAVSim_Start(" \n{\"machine\": 5}", nullptr) == -1; },
         "profile: machine: must be a string"},
        {[] { return TAVSim_Start("gramophone", nullptr) == -1; },
         "no device \"gramophone\"; `tavsim devices` lists those that there are"},
        {[=] { return TAVSim_Start("{}", &page) == -1; }, "nowhere/page.js: no such page script"},
        {[=] { return TAVSim_Start("{}", &journal) == -1; },
         "/nowhere/journal: the journal cannot be written: No such file or directory"},
    });
    expectRefusals(refusalsOfAll(kNoDevice));
}

TEST_F(TavsimTest, TimeIsTheMachinesWhereAsked) {
    TAVSim_Options options = {};
    options.realTime = 1;
    ASSERT_EQ(TAVSim_Start("quern", &options), 0) << TAVSim_GetError();
    expectRefusals({{[] { return TAVSim_Advance(0) == -1; }, "the device is not in virtual time"}});
}

TEST_F(TavsimTest, FindsEntriesAmongTheLinesThatAreKept) {
    constexpr int kChanges = 6000;  // of two lines each, of which the last 10000 are kept
    for (int change = 0; change < kChanges; ++change) {
        NApp_SetKeyboardState(change % 2);
    }
    ASSERT_EQ(TAVSim_JournalLength(), 2 * kChanges);
    EXPECT_STREQ(TAVSim_State("keyboard"), "shown");
    EXPECT_EQ(TAVSim_JournalLine(1999), nullptr);
    EXPECT_THAT(TAVSim_JournalLine(2000), testing::HasSubstr("NApp_SetKeyboardState"));
    EXPECT_THAT(TAVSim_JournalLine(11999), testing::HasSubstr("\"shown\""));
    EXPECT_EQ(TAVSim_JournalLine(12000), nullptr);
    EXPECT_EQ(TAVSim_FindEntry("what=keyboard outcome=hidden", 0), 2001);
    EXPECT_EQ(TAVSim_FindEntry("what=keyboard outcome=hidden", 2002), 2005);
    EXPECT_EQ(TAVSim_FindEntry("what=keyboard outcome=hidden", 11998), -1);
    EXPECT_EQ(TAVSim_FindEntry("what=keyboard", 1 << 30), -1);
    EXPECT_EQ(TAVSim_FindEntry("what=keyboard", -1), 2001);
}

TEST_F(TavsimTest, OneThingOrAllFromItOnFail) {
    const auto accepted = [] {
        std::string outcomes;
        for (int request = 0; request < 4; ++request) {
            outcomes += NApp_SetKeyboardState(1) != 0 ? '1' : '0';
        }
        return outcomes;
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
}

}  // namespace

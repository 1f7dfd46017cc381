// The device's clock: what moves it, who sees it, and what happens when.
#include <thread>

#include "device_test.h"
#include "simulator/time/pacing.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using EventLoopTest = tavtest::EventTest;

TEST_F(EventLoopTest, WaitingForAnEventLetsTimePassToTheNextDelivery) {
    device.profile.compass.turn = 36.0;
    device.profile.compass.interval = 250;
    TAV_Init(0);
    ASSERT_EQ(TAV_EnableCompass(SDL_TRUE), TAV_NOERROR);
    SDL_Event event{};
    while (event.type != SDL_USEREVENT) {
        ASSERT_EQ(SDL_WaitEvent(&event), 1);
    }
    EXPECT_EQ(event.user.code, TAV_EVENT_COMPASS);
    EXPECT_EQ(device.now(), 250);
}

TEST_F(EventLoopTest, AThreadsEventIsReceivedWhileNothingIsDueAndTimeStandsStill) {
    std::thread elsewhere([] {
        SDL_Delay(1);
        SDL_Event event{};
        event.type = SDL_USEREVENT;
        SDL_PushEvent(&event);
    });
    SDL_Event event{};
    while (event.type != SDL_USEREVENT) {
        ASSERT_EQ(SDL_WaitEvent(&event), 1);
    }
    elsewhere.join();
    EXPECT_EQ(device.now(), 0);
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
    EXPECT_EQ(SDL_WaitEvent(&event), 0) << "there is no queue to wait for";
}

TEST(PacingTest, AMomentComesSoManyTimesAsSoon) {
    using std::chrono::microseconds;
    const tavsim::Pacing::Clock::time_point begin(std::chrono::hours(5));
    for (const auto& [factor, real] : {std::pair(1.0, 40000), {4.0, 10000}, {1000.0, 40}}) {
        const tavsim::Pacing pacing{begin, 100, factor};
        EXPECT_EQ(pacing.timeOf(100), begin);
        EXPECT_EQ(pacing.timeOf(140), begin + microseconds(real));
        EXPECT_EQ(pacing.momentAt(begin + microseconds(real)), 140);
    }
}

TEST_F(EventLoopTest, WhoNeverWaitsSeesTimePassWithAThousandLooks) {
    SDL_Event event;
    const Uint32 start = SDL_GetTicks();
    for (int looks = 1; looks < 3000; ++looks) {
        looks % 2 == 0 ? SDL_PumpEvents() : static_cast<void>(SDL_PollEvent(&event));
    }
    EXPECT_EQ(device.now(), 3);
    SDL_Delay(1000);
    EXPECT_EQ(SDL_GetTicks() - start, 1003U);
    while (SDL_GetTicks() - start < 1010) {}
    EXPECT_EQ(SDL_GetTicks() - start, 1010U);
}

class TimerTest : public EventLoopTest {
protected:
    struct Timer {
        std::vector<Uint32> firedAt;
        std::vector<Uint32> intervals;  // that it returns in turn; then 0
        Uint32 takes = 0;
    };

    void SetUp() override {
        EventLoopTest::SetUp();
        ASSERT_EQ(SDL_InitSubSystem(SDL_INIT_TIMER), 0);
    }

    static Uint32 fire(Uint32, void* parameter) {
        Timer& timer = *static_cast<Timer*>(parameter);
        timer.firedAt.push_back(SDL_GetTicks());
        SDL_Delay(timer.takes);
        const size_t count = timer.firedAt.size();
        return count <= timer.intervals.size() ? timer.intervals[count - 1] : 0;
    }
};

TEST_F(TimerTest, EachFiresAtItsTimesUntilItEnds) {
    Timer first{{}, {0}}, slow{{}, {25, 10}, 35}, removed;
    SDL_AddTimer(0, fire, &first);
    SDL_AddTimer(11, fire, &slow);
    const SDL_TimerID id = SDL_AddTimer(30, fire, &removed);
    SDL_Delay(20);
    // A slow timer delays the others, and itself.
    EXPECT_THAT(first.firedAt, ElementsAre(10));
    EXPECT_EQ(SDL_RemoveTimer(id), SDL_TRUE);
    EXPECT_EQ(SDL_RemoveTimer(id), SDL_FALSE);
    SDL_Delay(200);
    EXPECT_THAT(slow.firedAt, ElementsAre(20, 55, 90));
    EXPECT_THAT(removed.firedAt, IsEmpty());
}

TEST_F(TimerTest, TheOneOldTimerReplacesAllAndTheyEndWithTheirSubsystem) {
    static int fired = 0;
    Timer other{{}, {10, 10}};
    SDL_AddTimer(10, fire, &other);
    ASSERT_EQ(SDL_SetTimer(30, [](Uint32 interval) { return ++fired, interval; }), 0);
    SDL_Delay(100);
    EXPECT_EQ(fired, 3);
    EXPECT_THAT(other.firedAt, IsEmpty());
    EXPECT_EQ(SDL_SetTimer(0, nullptr), 0);
    SDL_Delay(100);
    EXPECT_EQ(fired, 3);
    SDL_AddTimer(1000, fire, &other);
    SDL_QuitSubSystem(SDL_INIT_TIMER);
    SDL_Delay(100);
    EXPECT_EQ(fired, 3);
    EXPECT_EQ(SDL_AddTimer(10, fire, &other), nullptr);
    EXPECT_STRNE(SDL_GetError(), "");
}

}  // namespace

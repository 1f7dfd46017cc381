#include "device/location.h"

#include "device_test.h"
#include "services.h"

namespace {

using tav::g_GPSContext;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kUri[] = "vire://com.vire.location/startTracking";
constexpr char kFixReply[] =
    R"({"errorCode":0,"velocity":7,"latitude":1.5,"longitude":-2,"altitude":3,)"
    R"("horizAccuracy":4,"vertAccuracy":5,"heading":6})";

std::vector<double> values(const TAV_Location& l) {
    return {l.latitude,     l.longitude, l.altitude, l.horizAccuracy,
            l.vertAccuracy, l.heading,   l.velocity};
}

const std::vector<double> kNoFix(7, -1.0);
const std::vector<double> kFix = {1.5, -2, 3, 4, 5, 6, 7};

class LocationTest : public tavtest::EventTest {
protected:
    void SetUp() override {
        EventTest::SetUp();
        begin();
    }

    void TearDown() override {
        TAV_EnableLocationTracking(SDL_FALSE);
        EventTest::TearDown();
    }

    // No fix, tracking off, and a service that answers only what a test delivers.
    void begin() {
        startDevice({});
        TAV_EnableLocationTracking(SDL_FALSE);
        g_GPSContext.clear();
        device.profile.services[kUri] = {};
    }

    void deliver(const tavsim::Reply& reply) {
        ASSERT_TRUE(device.deliver(device.openCalls(kUri).back(), reply));
    }

    TAV_Location location{};
};

TEST_F(LocationTest, StartsWithoutFixAndSubscribesInTheLibrarysName) {
    tavtest::Requests requests;
    device.profile.services[kUri] = tavtest::keepingService(requests);
    trace();
    const tav::gpsCallbackContext fresh;
    EXPECT_EQ(TAV_EnableLocationTracking(tavtest::anyValue<SDL_bool>(2)), TAV_NOERROR);
    EXPECT_THAT(trace(), ElementsAre("tav_f gpsCallbackContext --", "tav_f clear --",
                                     "tav_f TAV_EnableLocationTracking true",
                                     "tav_f getBooleanString true"));
    EXPECT_EQ(fresh.callId, -1);
    EXPECT_THAT(requests, ElementsAre(tavtest::Request{kUri, R"({ "subscribe": true })"}));
    EXPECT_EQ(tavtest::optionsSent(device), std::set{true});
    EXPECT_EQ(g_GPSContext.tracking, 2);
    EXPECT_EQ(TAV_GetLocation(&location), TAV_NOERROR);
    EXPECT_EQ(values(location), kNoFix);
}

TEST_F(LocationTest, RepliesBecomeAFixOrAFailure) {
    using Lines = std::vector<std::string>;
    const std::string failed = R"({"errorCode":5})";
    const std::string unknown = R"({"errorCode":-7})";
    const std::string incomplete =
        R"({"errorCode":0,"longitude":2,"altitude":3,"horizAccuracy":4,"vertAccuracy":5,"heading":6})";
    const Lines unknownLine = {"tav_e gpsCallback unknown error returned from gps: -7"};
    const Lines unparsedLine = {"tav_e gpsCallback could not parse gps reply"};
    const Lines incompleteLines = {"tav_e validateValue value not present: latitude",
                                   "tav_e validateValue value not present: velocity",
                                   "tav_e gpsCallback reply from gps missing parameters"};
    constexpr int kDone = TAV_EVENT_LOCATION;
    constexpr int kFailed = TAV_EVENT_LOCATION_FAILURE;
    const struct {
        std::vector<tavsim::Reply> replies;
        int code;
        std::vector<int> events;
        Lines lastTrace;  // of the last reply, after its entry
    } cases[] = {
        {{kFixReply}, 0, {kDone}, {}},
        {{R"({"latitude":1})"}, 0, {}, {}},
        {{R"({"errorCode":4})"}, 0, {}, {}},
        {{failed}, TAV_ELOCATIONSERVICE, {kFailed}, {}},
        {{unknown}, TAV_EOTHER, {kFailed}, unknownLine},
        {{"{"}, TAV_EOTHER, {kFailed}, unparsedLine},
        {{std::nullopt}, TAV_EOTHER, {kFailed}, unparsedLine},
        {{incomplete}, TAV_EOTHER, {kFailed}, incompleteLines},
        {{failed, incomplete}, TAV_ELOCATIONSERVICE, {kFailed, kFailed}, {}},
        {{failed, kFixReply}, TAV_ELOCATIONSERVICE, {kFailed, kFailed}, {}},
        {{failed, "?"}, TAV_EOTHER, {kFailed, kFailed}, unparsedLine},
        {{failed, "{}"}, TAV_ELOCATIONSERVICE, {kFailed}, {}},
        {{failed, R"({"errorCode":4})"}, TAV_ELOCATIONSERVICE, {kFailed}, {}},
        {{kFixReply, failed}, TAV_ELOCATIONSERVICE, {kDone, kFailed}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.replies));
        begin();
        TAV_EnableLocationTracking(SDL_TRUE);
        for (const tavsim::Reply& reply : c.replies) {
            trace();
            deliver(reply);
        }
        Lines lines = {"tav_f gpsCallback " + c.replies.back().value_or("(null)")};
        lines.insert(lines.end(), c.lastTrace.begin(), c.lastTrace.end());
        EXPECT_EQ(trace(), lines);
        EXPECT_STREQ(SDL_GetError(), "");
        EXPECT_EQ(userEvents(), c.events);
        const bool hasFix = !c.events.empty() && c.events.front() == kDone;
        EXPECT_EQ(values(g_GPSContext.location), hasFix ? kFix : kNoFix);
        EXPECT_EQ(TAV_GetLocation(&location), c.code);
        if (c.code != TAV_NOERROR) {
            expectFailure("TAV_GetLocation", "GPS failure");
        }
    }
}

TEST_F(LocationTest, EventsPointAtTheLiveState) {
    TAV_EnableLocationTracking(SDL_TRUE);
    deliver(kFixReply);
    deliver("?");
    SDL_Event event;
    ASSERT_EQ(SDL_PollEvent(&event), 1);
    EXPECT_EQ(event.user.data1, &g_GPSContext);
    EXPECT_EQ(values(*static_cast<TAV_Location*>(event.user.data1)), kFix);
    ASSERT_EQ(SDL_PollEvent(&event), 1);
    EXPECT_EQ(*static_cast<Sint32*>(event.user.data1), TAV_EOTHER);
    TAV_EnableLocationTracking(SDL_FALSE);
    EXPECT_EQ(*static_cast<Sint32*>(event.user.data1), TAV_NOERROR);
}

TEST_F(LocationTest, DisablingCancelsTheLastSubscriptionAndKeepsTheFix) {
    TAV_EnableLocationTracking(SDL_TRUE);
    TAV_EnableLocationTracking(SDL_TRUE);
    const int earlier = device.openCalls(kUri).front();
    device.deliver(earlier, kFixReply);
    EXPECT_EQ(TAV_EnableLocationTracking(SDL_FALSE), TAV_NOERROR);
    EXPECT_THAT(device.openCalls(kUri), ElementsAre(earlier));
    EXPECT_EQ(TAV_GetLocation(&location), TAV_UNINIT);
    expectFailure("TAV_GetLocation", "GPS tracking is not on (call TAV_EnableLocationTracking)");
    device.deliver(earlier, "late");
    EXPECT_THAT(trace(), ElementsAre("tav_f gpsCallback late"));
    TAV_EnableLocationTracking(SDL_FALSE);
    EXPECT_THAT(device.openCalls(kUri), ElementsAre(earlier));
    TAV_EnableLocationTracking(SDL_TRUE);
    EXPECT_EQ(TAV_GetLocation(&location), TAV_NOERROR);
    EXPECT_EQ(values(location), kFix);
}

TEST_F(LocationTest, ARefusedEnableLeavesTrackingAndFailureAsTheyWere) {
    for (const int code : {TAV_UNINIT, TAV_ELOCATIONSERVICE}) {
        device.failNth(tavsim::Fault::Dispatch, 1);
        EXPECT_EQ(TAV_EnableLocationTracking(SDL_TRUE), TAV_ECONNECTION);
        expectFailure("TAV_EnableLocationTracking", "Unable to communicate with app card");
        EXPECT_EQ(g_GPSContext.callId, -1);
        EXPECT_EQ(TAV_GetLocation(&location), code);
        TAV_EnableLocationTracking(SDL_TRUE);
        EXPECT_EQ(TAV_GetLocation(&location), TAV_NOERROR);
        deliver(R"({"errorCode":5})");
    }
}

TEST_F(LocationTest, RefusesANullRecordAndAForeignContext) {
    EXPECT_EQ(TAV_GetLocation(nullptr), TAV_INVALIDINPUT);
    expectFailure("TAV_GetLocation", "location is NULL");
    TAV_EnableLocationTracking(SDL_TRUE);
    tav::gpsCallback(1, kFixReply, &location);
    EXPECT_EQ(trace().back(),
              "tav_e gpsCallback gps callback received, but context is wrong. ignoring.");
    EXPECT_THAT(userEvents(), IsEmpty());
    EXPECT_EQ(values(g_GPSContext.location), kNoFix);
}

}  // namespace

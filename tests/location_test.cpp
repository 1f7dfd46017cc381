#include "device/location.h"

#include "transcript.h"

namespace {

using tav::g_GPSContext;

constexpr char kUri[] = "vire://com.vire.location/startTracking";
constexpr char kFixReply[] =
    R"({"errorCode":0,"velocity":7,"latitude":1.5,"longitude":-2,"altitude":3,)"
    R"("horizAccuracy":4,"vertAccuracy":5,"heading":6})";
constexpr char kFailure[] = R"({"errorCode":5})";

class LocationTest : public tavtest::TranscriptTest {
protected:
    // No fix, tracking off, and a service that answers only what a test delivers.
    void begin() {
        startDevice({});
        TAV_EnableLocationTracking(SDL_FALSE);
        g_GPSContext.clear();
        device.profile.services[kUri] = {};
    }

    // The events in the queue, the result of a query, and the position that the library holds.
    std::string known() {
        std::ostringstream text;
        for (SDL_Event event; SDL_PollEvent(&event) != 0;) {
            const bool isFix = event.user.code == TAV_EVENT_LOCATION;
            EXPECT_EQ(event.user.data1, isFix ? static_cast<void*>(&g_GPSContext.location)
                                              : static_cast<void*>(&g_GPSContext.failure));
            text << (isFix ? "fix, " : "failure, ");
        }
        TAV_Location read{};
        const TAV_Location& l = g_GPSContext.location;
        return join(text.str(), TAV_GetLocation(&read), ' ', l.latitude, ' ', l.longitude, ' ',
                    l.altitude, ' ', l.horizAccuracy, ' ', l.vertAccuracy, ' ', l.heading, ' ',
                    l.velocity);
    }

    void deliver(const tavsim::Reply& reply) {
        show(reply.value_or("null"), [&] {
            device.deliver(device.openCalls(kUri).back(), reply);
            return known();
        });
    }
};

TEST_F(LocationTest, RepliesBecomeAFixOrAFailure) {
    const std::string incomplete =
        R"({"errorCode":0,"longitude":2,"altitude":3,"horizAccuracy":4,"vertAccuracy":5,"heading":6})";
    const std::vector<tavsim::Reply> sequences[] = {
        {kFixReply, R"({"errorCode":4})", "{}", kFailure, R"({"errorCode":4})", "{}"},
        {R"({"latitude":1})", R"({"errorCode":-7})", kFixReply},
        {"{"},
        {std::nullopt},
        {incomplete},
        {kFailure, incomplete},
        {kFailure, "?"}};
    for (const auto& replies : sequences) {
        begin();
        CALL(TAV_EnableLocationTracking(tavtest::anyValue<SDL_bool>(2)));
        for (const tavsim::Reply& reply : replies) {
            deliver(reply);
        }
    }
}

TEST_F(LocationTest, SwitchingOnAndOff) {
    begin();
    TAV_Location location{};
    CALL(TAV_GetLocation(nullptr));
    CALL(TAV_GetLocation(&location));
    TAV_EnableLocationTracking(SDL_TRUE);
    CALL(TAV_EnableLocationTracking(SDL_TRUE));
    const int earlier = device.openCalls(kUri).front();
    device.deliver(earlier, kFixReply);
    CALL(TAV_EnableLocationTracking(SDL_FALSE));
    CALL(device.deliver(earlier, "late"));
    CALL(TAV_EnableLocationTracking(SDL_FALSE));
    CALL(device.openCalls(kUri).front() == earlier);
    for (int time = 0; time < 2; ++time) {
        device.failNth(tavsim::Fault::Dispatch, 1);
        CALL(TAV_EnableLocationTracking(SDL_TRUE));
        CALL(known());
        CALL(TAV_EnableLocationTracking(SDL_TRUE));
        deliver(kFailure);
    }
    CALL(tav::gpsCallback(1, kFixReply, &location));
    CALL(known());
    CALL(TAV_EnableLocationTracking(SDL_FALSE));
    CALL(g_GPSContext.failure);
    CALL(tav::gpsCallbackContext().callId);
}

TEST_F(LocationTest, TheTraceSaysWhatIsWrongWithAReply) {
    const std::map<std::string, std::vector<std::string>> problems = {
        {"{", {"could not parse gps reply"}},
        {R"({"errorCode":-7})", {"unknown error returned from gps: -7"}},
        {R"({"errorCode":0,"longitude":2,"altitude":3,"horizAccuracy":4,"vertAccuracy":5,"heading":6})",
         {"value not present: latitude", "value not present: velocity",
          "reply from gps missing parameters"}},
        {kFailure, {}}};
    for (const auto& [reply, problem] : problems) {
        begin();
        TAV_EnableLocationTracking(SDL_TRUE);
        trace();
        device.deliver(device.openCalls(kUri).back(), reply);
        std::vector<std::string> traced = trace();
        EXPECT_EQ(traced.front(), "tav_f gpsCallback " + reply);
        traced.erase(traced.begin());
        for (std::string& line : traced) {
            EXPECT_TRUE(line.starts_with("tav_e ")) << line;
            line.erase(0, line.find(' ', line.find(' ') + 1) + 1);
        }
        EXPECT_EQ(traced, problem) << reply;
    }
    tav::gpsCallback(1, kFixReply, nullptr);
    EXPECT_EQ(trace().back(),
              "tav_e gpsCallback gps callback received, but context is wrong. ignoring.");
}

}  // namespace

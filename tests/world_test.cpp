// The device's position: walks, tracks, a lost position, and a compass that follows the movement.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "simulator/world/track.h"
#include "transcript.h"

namespace {

constexpr char kTracking[] = "vire://com.vire.location/startTracking";

class WorldTest : public tavtest::TranscriptTest {
protected:
    void subscribe() {
        show("subscribe", [&] { TranscriptTest::subscribe(kTracking); });
    }
};

TEST_F(WorldTest, ThePositionIsTheDevicesAndNotASubscriptions) {
    tavsim::Profile profile;
    profile.location = {
        {{1, 10, 0, 0, 0, 0, 0}, {2, 20, 0, 0, 0, 0, 0}, {3, 30, 0, 0, 0, 0, 0}}, {5}, 1000};
    startDevice(profile);
    device.advance(5000);
    subscribe();
    pass(1500);
    subscribe();
    pass(0);
    pass(1000);
    give({"location 4 40 0 1 2 3 4"});
    pass(5000);

    note("the profile's positions and its error, which is of the moment");
    startDevice(profile);
    subscribe();
    pass(60000);
    subscribe();
    pass(60000);

    note("somewhere else before anybody tracks it: the profile has nothing more to say");
    startDevice(profile);
    give({"location 4 40 0 1 2 3 4"});
    device.advance(0);
    subscribe();
    pass(60000);
}

TEST_F(WorldTest, WalksAlongGreatCircles) {
    subscribe();
    give({"walk 1", "walk 1 0,0"});
    // A degree of the equator is 111.195 km.
    give({"walk 1000 every 50s 0,0 0,1 1,1"});
    pass(500000);
    note("from there, by metres; another walk ends it, and the position can be lost on the way");
    give({"walk 2 every 100m 1,1.01"});
    pass(60000);
    give({"location lost"});
    pass(60000);
    give({"location found"});
    pass(0);
    give({"walk 100 1,1"});
    pass(3600000);
    note("over the date line, over the pole, and nowhere");
    give({"walk 10000 every 1min 0,179.9 0,-179.9"});
    pass(60000);
    give({"walk 10000 every 1000s 89.9,0 89.9,180 89.9,180"});
    pass(60000);
    give({"walk 1 5,5 5,5"});
    pass(60000);
}

TEST_F(WorldTest, WhoeverTracksALostPositionHearsThat) {
    give({"location found", "location 1 2 0 0 0 0 0", "location lost 7"});
    pass(0);
    subscribe();
    give({"location 3 4 0 0 0 0 0"});
    pass(1000);
    give({"location found"});
    pass(1000);
    note("a service that stands in front answers instead");
    device.profile.services[kTracking] = {};
    give({"location 5 6 0 0 0 0 0"});
    pass(1000);
}

TEST_F(WorldTest, AReceiverIsOffByNoMoreThanItSays) {
    // The errors in metres of the fixes within ten seconds while the device stands still. The first
    // one comes when tracking begins.
    const auto errors = [&](const std::string& receiver,
                            const std::string& then = "compass follow off") {
        startDevice({});
        for (const auto& line : {std::string("location 52 13 0 1 1 0 0"), receiver, then}) {
            tavsim::carryOut(line);
        }
        device.advance(0);
        TAV_EnableLocationTracking(SDL_TRUE);
        std::vector<double> found;
        for (int pass = 0; pass < 100; ++pass) {
            device.advance(100);
            if (userEvents() == std::vector{TAV_EVENT_LOCATION}) {
                TAV_Location at;
                TAV_GetLocation(&at);
                const double east = (at.longitude - 13) * std::cos(52 * std::numbers::pi / 180);
                found.push_back(111195 * std::hypot(at.latitude - 52, east));
                EXPECT_EQ(at.horizAccuracy, found.back() == 0 ? 1 : 8);
            }
        }
        TAV_EnableLocationTracking(SDL_FALSE);
        return found;
    };
    const std::string standing = "location every 500ms 8m 1";
    const std::vector<double> found = errors(standing);
    const auto [least, most] = std::minmax_element(found.begin(), found.end());
    EXPECT_TRUE(*least < 4 && *most > 6 && *most < 8.1) << *least << " to " << *most;
    EXPECT_EQ(found, errors("location every 0.5s 8m 1"));
    EXPECT_NE(found, errors("location every 500ms 8m 2"));
    EXPECT_EQ(errors(standing, "walk 0.01 every 100ms 52,13 53,13").size(), found.size());
    EXPECT_EQ(errors(standing, "location lost").size(), 0U);
    EXPECT_EQ(errors(standing, "location every off"), std::vector{0.0});
}

TEST_F(WorldTest, TheCompassCanFollow) {
    TAV_Init(0);
    TAV_EnableCompass(SDL_TRUE);
    const auto readings = [&] {
        device.advance(1000);
        return userEvents().size();
    };
    CALL(readings());
    give({"compass follow on", "walk 1 0,0 0,1"});
    CALL(readings());
    give({"compass follow off"});
    CALL(readings());
}

TEST_F(WorldTest, ACompassThatIsHeldAndTurnedGoesOnWithItsReadings) {
    TAV_Init(0);
    TAV_EnableCompass(SDL_TRUE);
    for (const char* line : {"compass hold 10", "compass hold 20.5", "compass hold 30"}) {
        EXPECT_EQ(tavsim::carryOut(line).error, "");
        device.advance(60);
    }
    EXPECT_THAT(device.journal().back(), testing::HasSubstr("\"doubleValue1\":20.5,"));
    tavsim::carryOut("compass hold off");
    device.advance(1000);
    EXPECT_EQ(userEvents().size(), 1u);
}

TEST_F(WorldTest, RecordedTracksAreFollowed) {
    subscribe();
    give({"track gpx"}, seedFolder("track"));
    pass(60000);
    give({"track gpx  10"}, seedFolder("track"));
    pass(60000);
    write("/data/a log.nmea", seeds("track").at("nmea"));
    EXPECT_EQ(tavsim::carryOut("track " + path("/data/a log.nmea")).error, "");
    pass(60000);
    TAV_Location location;
    TAV_EnableLocationTracking(SDL_TRUE);
    device.advance(0);
    CALL(TAV_GetLocation(&location));
    CALL(location.altitude);
}

TEST_F(WorldTest, TracksThatCannotBeReadAreOneErrorEach) {
    for (const auto& [name, content] : seeds("track")) {
        std::string error = "none";
        tavsim::parseTrack(content, "t", &error);
        note(name + ": " + error);
    }
    write("/data/large", std::string(17 << 20, ' '));
    give({"track", "track nowhere.gpx", "track /", "track /dev/zero 2", "track large", "track x 0",
          "walk 0 1,1 2,2", "walk 1 every 0s 1,1 2,2", "walk 1 every 5 1,1 2,2", "walk 1 1,1 2",
          "walk 1 1,1 91,2", "walk 1 1,1 2,-181", "location lost now", "compass follow me"},
         path("/data"));
}

}  // namespace

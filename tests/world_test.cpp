// Where the device is and where it goes: walks, tracks, a lost position, a compass that follows.
#include <filesystem>
#include <fstream>

#include "device_test.h"
#include "platform/hkscaller.h"
#include "platform/napp.h"
#include "simulator/control/commands.h"
#include "simulator/world/track.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr char kTracking[] = "vire://com.vire.location/startTracking";

class WorldTest : public tavtest::EventTest {
protected:
    static std::string command(const std::string& line) { return tavsim::carryOut(line).error; }

    // What trackers have been told since the last look, each as "TIME: LAT,LON HEADING VELOCITY",
    // or its error code.
    std::vector<std::string> told() {
        std::vector<std::string> lines;
        for (; m_read < device.journal().size(); ++m_read) {
            const std::string& line = device.journal()[m_read];
            const auto number = [&line](const std::string& name) {
                const size_t at = line.find(name + "\\\":");
                const size_t begin = at + name.size() + 3;
                return at == std::string::npos
                           ? ""
                           : line.substr(begin, line.find_first_of(",}", begin) - begin);
            };
            if (line.find(R"("what":"reply")") == std::string::npos) {
                continue;
            }
            const std::string at = line.substr(6, line.find(',') - 6) + ": ";
            lines.push_back(at + (number("latitude").empty()
                                      ? number("errorCode")
                                      : number("latitude") + "," + number("longitude") + " " +
                                            number("heading") + " " + number("velocity")));
        }
        return lines;
    }

    static void track() { TAV_EnableLocationTracking(SDL_TRUE); }

    // Calls the service itself, beside the library.
    static int subscribe() {
        return NApp_GetKSCaller()->ksCallWithSubscription(
            kTracking, "{}", true, [](int, const char*, void*) {}, nullptr);
    }

    size_t m_read = 0;
};

TEST_F(WorldTest, ThePositionIsTheDevicesAndNotASubscriptions) {
    tavsim::Profile profile;
    profile.location = {
        {{1, 10, 0, 0, 0, 0, 0}, {2, 20, 0, 0, 0, 0, 0}, {3, 30, 0, 0, 0, 0, 0}}, {5}, 1000};
    startDevice(profile);
    device.advance(5000);
    subscribe();
    device.advance(1500);
    EXPECT_THAT(told(), ElementsAre("6000: 1,10 0 0"));
    subscribe();
    device.advance(0);
    EXPECT_THAT(told(), ElementsAre("6500: 1,10 0 0")) << "only the second one";
    device.advance(1000);
    EXPECT_THAT(told(), ElementsAre("7000: 2,20 0 0", "7000: 2,20 0 0"));
    EXPECT_EQ(command("location 4 40 0 1 2 3 4"), "");
    device.advance(5000);
    EXPECT_THAT(told(), ElementsAre("7500: 4,40 3 4", "7500: 4,40 3 4")) << "it stays there";

    startDevice(profile);
    m_read = 0;
    subscribe();
    device.advance(60000);
    EXPECT_THAT(told(),
                ElementsAre("1000: 1,10 0 0", "2000: 2,20 0 0", "3000: 3,30 0 0", "4000: 5"));
    subscribe();
    device.advance(60000);
    EXPECT_THAT(told(), ElementsAre("60000: 3,30 0 0")) << "an error is of the moment";

    // Somewhere else before anybody tracks it: the profile has nothing more to say.
    startDevice(profile);
    m_read = 0;
    EXPECT_EQ(command("location 4 40 0 1 2 3 4"), "");
    device.advance(0);
    subscribe();
    device.advance(60000);
    EXPECT_THAT(told(), ElementsAre("0: 4,40 3 4"));
}

TEST_F(WorldTest, WalksAlongGreatCircles) {
    subscribe();
    EXPECT_EQ(command("walk 1"), "usage: walk SPEED [every TIME|every METRESm] LAT,LON...");
    EXPECT_THAT(command("walk 1 0,0"), HasSubstr("has no position yet"));
    // A degree of the equator is 111.195 km.
    EXPECT_EQ(command("walk 1000 every 50s 0,0 0,1 1,1"), "");
    device.advance(500000);
    EXPECT_THAT(told(), ElementsAre("0: 0,0 90 1000", "50000: 0,0.4496602 90 1000",
                                    "100000: 0,0.8993204 90 1000", "150000: 0.3489805,1 0 1000",
                                    "200000: 0.7986407,1 0 1000", "222390: 1,1 0 0"));
    EXPECT_THAT(device.journal().back(), HasSubstr(R"("what":"movement","outcome":"arrived")"));

    // From there, by metres; another walk ends it, and the position can be lost on the way.
    EXPECT_EQ(command("walk 2 every 100m 1,1.01"), "");
    device.advance(60000);
    EXPECT_EQ(command("location lost"), "");
    device.advance(60000);
    EXPECT_EQ(command("location found"), "");
    device.advance(0);
    EXPECT_THAT(told(), ElementsAre("500000: 1,1 90 2", "550000: 1,1.0008995 90 2", "560000: 2",
                                    "620000: 1,1.0017989 90 2"));
    EXPECT_EQ(command("walk 10 1,1"), "");
    device.advance(3600000);
    const std::vector<std::string> back = told();
    EXPECT_EQ(back.front(), "620000: 1,1.0017989 270 10");
    EXPECT_EQ(back.back(), "640000: 1,1 270 0");

    // Over the date line, over the pole, and nowhere.
    EXPECT_EQ(command("walk 10000 every 1min 0,179.9 0,-179.9"), "");
    device.advance(60000);
    EXPECT_THAT(told(), SizeIs(2));
    EXPECT_EQ(command("walk 10000 every 1000s 89.9,0 89.9,180 89.9,180"), "");
    device.advance(60000);
    EXPECT_THAT(told().back(), HasSubstr(": 89.9,180 180 0"));
    EXPECT_EQ(command("walk 1 5,5 5,5"), "");
    device.advance(60000);
    EXPECT_THAT(told(), ElementsAre(HasSubstr(": 5,5 180 0")));
}

TEST_F(WorldTest, WhoeverTracksALostPositionHearsThat) {
    EXPECT_EQ(command("location found"), "location found: it is not lost");
    EXPECT_EQ(command("location 1 2 0 0 0 0 0"), "");
    EXPECT_EQ(command("location lost 7"), "");
    device.advance(0);
    subscribe();
    EXPECT_EQ(command("location 3 4 0 0 0 0 0"), "");
    device.advance(1000);
    EXPECT_EQ(command("location found"), "");
    device.advance(1000);
    EXPECT_THAT(told(), ElementsAre("0: 7", "1000: 3,4 0 0"));

    // A service that stands in front answers instead.
    device.profile.services[kTracking] = {};
    EXPECT_EQ(command("location 5 6 0 0 0 0 0"), "");
    device.advance(1000);
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(WorldTest, TheCompassCanFollow) {
    TAV_Init(0);
    TAV_EnableCompass(SDL_TRUE);
    device.advance(1000);
    EXPECT_THAT(userEvents(), IsEmpty());
    EXPECT_EQ(command("compass follow on"), "");
    EXPECT_EQ(command("walk 1 0,0 0,1"), "");
    device.advance(1000);
    TAV_CompassReading reading = {};
    TAV_GetCompass(&reading);
    EXPECT_EQ(reading.doubleValue1, 90);
    EXPECT_THAT(userEvents(), SizeIs(10));
    EXPECT_EQ(command("compass follow off"), "");
    device.advance(1000);
    EXPECT_THAT(userEvents(), IsEmpty());
}

const std::string kGpx = R"(<?xml version="1.0"?>
<gpx version="1.1" xmlns="http://www.topografix.com/GPX/1/1"><trk><trkseg>
<trkpt lat="0" lon="0"><ele>12.5</ele><time>2026-05-01T23:59:58Z</time></trkpt>
<trkpt lat="0" lon="0.001"><time>2026-05-02T02:00:08.500+02:00</time></trkpt>
</trkseg></trk><trk><trkseg>
<trkpt lat="0.001" lon="0.001"><time>2026-05-02T00:00:18.5Z</time></trkpt>
</trkseg></trk></gpx>
)";

constexpr char kNmea[] =
    "$GPRMC,,V,,,,,,,,,,N*53\r\n"
    "$GPGGA,235959.00,0030.0000,S,01000.6000,W,1,08,0.9,12.5,M,,M,,*4F\r\n"
    "$GPRMC,235959.00,A,0030.0000,S,01000.6000,W,10.0,270.0,010526,,,A*60\r\n"
    "$GPGSV,1,1,00*79\n\n"
    "$GNRMC,000000.50,V,,,,,,,020526,,,N*65\r\n"
    "$GNRMC,000001,A,0030.0000,S,01000.7200,W,0.0,,020526,,,A*4A";

TEST_F(WorldTest, RecordedTracksAreFollowed) {
    const std::string folder = device.root() + "/data/";
    std::ofstream(folder + "a b.gpx") << kGpx;
    std::ofstream(folder + "log.nmea") << kNmea;
    subscribe();
    EXPECT_EQ(tavsim::carryOut("track a b.gpx", folder).error, "");
    device.advance(60000);
    EXPECT_THAT(told(),
                ElementsAre("0: 0,0 90 10.59", "10500: 0,0.001 0 11.12", "20500: 0.001,0.001 0 0"));
    EXPECT_EQ(tavsim::carryOut("track a b.gpx  10", folder).error, "");
    device.advance(60000);
    EXPECT_THAT(told().back(), StartsWith("62050: 0.001"));
    EXPECT_EQ(command("track " + folder + "log.nmea"), "");
    device.advance(1999);
    EXPECT_THAT(told(), ElementsAre("120000: -0.5,-10.01 270 5.14", "121500: 2"));
    device.advance(1);
    EXPECT_THAT(told(), ElementsAre("122000: -0.5,-10.012 270 0"));
    TAV_Location location;
    track();
    device.advance(0);
    EXPECT_EQ(TAV_GetLocation(&location), TAV_NOERROR);
    EXPECT_EQ(location.altitude, 12.5);
}

TEST_F(WorldTest, TracksThatCannotBeReadAreOneErrorEach) {
    const auto gpx = [](const std::string& points) {
        return "<gpx>\n<trk><trkseg>\n" + points + "</trkseg></trk></gpx>";
    };
    const struct {
        std::string content;
        const char* error;
    } rows[] = {
        {"", "t:1: no XML: "},
        {"\x7f\x45\x4c\x46", "t:1: no XML: "},
        {"<gpx>\n<trk>\n", "t:2: no XML: "},
        {"<kml></kml>", "t:1: the element is none of GPX"},
        {"<gpx></gpx>", "t: there is no point of a track in it"},
        {gpx("<trkpt lat='1'/>"), "t:3: lon must be a number from -180 to 180"},
        {gpx("<trkpt lat='1' lon='1'/>\n<trkpt lat='91' lon='1'/>"),
         "t:4: lat must be a number from -90 to 90"},
        {gpx("<trkpt lat='nan' lon='1'/>"), "t:3: lat must be"},
        {gpx("<trkpt lat='1' lon='1'><time>noon</time></trkpt>"), "t:3: time must be"},
        {gpx("<trkpt lat='1' lon='1'><ele>high</ele></trkpt>"), "t:3: ele must be a number"},
        {gpx("<trkpt lat='1' lon='1'/>\n<trkpt lat='1' "
             "lon='1'><time>2026-01-01T00:00:00Z</time></trkpt>"),
         "t:4: the point has a time, but others have none"},
        {gpx("<trkpt lat='1' lon='1'><time>2026-01-01T00:00:01Z</time></trkpt>\n"
             "<trkpt lat='1' lon='1'><time>2026-01-01T00:00:00Z</time></trkpt>"),
         "t:4: the time is before the one of the point before"},
        {"$GPGSV,1,1,00*79", "t: there is no point of a track in it"},
        {"$GPGSV,1,1,00*79\n$GPGSV,1,1,00*78", "t:2: the checksum is not 79"},
        {"$GPGSV,1,1,00", "t:1: the sentence has no checksum"},
        {"$GPGSV,1,1,00*79\nhello", "t:2: no sentence of NMEA 0183"},
        {"$GPRMC,0000,A,0030.0,S,01000.6,W,,,,,,A*7B", "t:1: the time must be hhmmss"},
        {"$GPRMC,000000,A,0030.0,S,19000.6,W,,,,,,A*72", "t:1: the longitude is out of range"},
        {"$GPRMC,000000,A,0060.0,S,01000.6,W,,,,,,A*7E", "t:1: the latitude is out of range"},
        {"$GPRMC,000000,A,,S,01000.6,W,,,,,,A*66", "t:1: the latitude must be a number"},
    };
    for (const auto& row : rows) {
        std::string error = "none";
        tavsim::parseTrack(row.content, "t", &error);
        EXPECT_THAT(error, StartsWith(row.error)) << row.content;
    }
    const std::string large = device.root() + "/data/large.gpx";
    std::ofstream(large).put(' ');
    std::filesystem::resize_file(large, 17 << 20);
    const struct {
        std::string line;
        const char* error;
    } commands[] = {
        {"track", "usage: track FILE [FACTOR]"},
        {"track nowhere.gpx", "track: nowhere.gpx: no such file"},
        {"track /", "track: /: cannot be read"},
        {"track /dev/zero 2", "track: /dev/zero: cannot be read"},
        {"track " + large, ": is larger than 16 MiB"},
        {"track x 0", "track: the factor is from 0.001 to 1000"},
        {"walk 0 1,1 2,2", "walk: the speed is from 0.01 to 10000"},
        {"walk 1 every 0s 1,1 2,2", "walk: there is at least a millisecond"},
        {"walk 1 every 5 1,1 2,2", "usage: walk"},
        {"walk 1 1,1 2", "usage: walk"},
        {"walk 1 1,1 91,2", "walk: the latitude is from -90 to 90"},
        {"walk 1 1,1 2,-181", "walk: the longitude is from -180 to 180"},
        {"location lost now", "usage: location lost [CODE]"},
        {"compass follow me", "usage: compass follow on|off"},
    };
    for (const auto& row : commands) {
        EXPECT_THAT(command(row.line), HasSubstr(row.error)) << row.line;
    }
    EXPECT_THAT(device.journal(), IsEmpty());
}

}  // namespace

// NMEA 0183: sentences such as $GPRMC,120000,A,5231.2000,N,01324.3000,E,2.7,90.0,010526,,*0B, of
// which RMC and GGA contain the position. A recorder may be switched off within a sentence, lose
// bytes, or write lines of its own, so lines that cannot be read are skipped.
#include <glib.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "base/number.h"
#include "simulator/world/recordings.h"
#include "simulator/world/walk.h"

namespace tavsim {
namespace {

constexpr Milliseconds kHour = 3'600'000;
constexpr Milliseconds kDay = 24 * kHour;
constexpr double kKnot = 1852.0 / 3600.0;  // metres a second
constexpr size_t kLengthOfName = 5;        // two letters for the talker, three for the sentence

// The fields that are needed; further ones are ignored, and missing ones are empty.
using Fields = std::array<std::string_view, 10>;

Fields fieldsOf(std::string_view sentence) {
    Fields fields;
    for (std::string_view& field : fields) {
        const size_t end = std::min(sentence.find(','), sentence.size());
        field = sentence.substr(0, end);
        sentence.remove_prefix(std::min(end + 1, sentence.size()));
    }
    return fields;
}

class NmeaReader {
public:
    explicit NmeaReader(std::string_view content) : m_rest(content) {}

    Track read(std::string* leftOut) {
        while (!m_rest.empty()) {
            ++m_line;
            const size_t end = std::min(m_rest.find('\n'), m_rest.size());
            std::string_view line = m_rest.substr(0, end);
            m_rest.remove_prefix(std::min(end + 1, m_rest.size()));
            line = line.substr(0, line.find_last_not_of(" \t\r") + 1);
            if (!line.empty()) {
                tryToRead(line);
            }
        }
        if (m_track.empty() && m_firstError) {
            throw TrackError(*m_firstError);
        }
        if (m_firstError) {
            *leftOut = std::to_string(m_leftOut) + " of " + std::to_string(m_line) +
                       " lines left out, the first of them line " +
                       std::to_string(m_firstError->line) + ": " + m_firstError->what;
        }
        return std::move(m_track);
    }

private:
    [[noreturn]] void fail(const std::string& what) const { throw TrackError{m_line, what}; }

    void tryToRead(std::string_view line) {
        try {
            readSentence(line);
        } catch (const TrackError& problem) {
            ++m_leftOut;
            m_firstError = m_firstError ? m_firstError : problem;
        }
    }

    void readSentence(std::string_view line) {
        // A time or a tag block may come before it.
        const size_t start = line.find_last_of("$!");
        if (start == std::string_view::npos) {
            fail("no sentence of NMEA 0183");
        }
        line.remove_prefix(start);
        const size_t star = line.rfind('*');
        checkSum(line, star);
        const Fields fields = fieldsOf(line.substr(1, star - 1));
        // Names that begin with P are proprietary.
        if (fields[0].size() != kLengthOfName || fields[0][0] == 'P') {
            return;
        }
        if (fields[0].ends_with("RMC")) {
            readRmc(fields);
        } else if (fields[0].ends_with("GGA")) {
            readGga(fields);
        }
    }

    void checkSum(std::string_view line, size_t star) const {
        if (star == std::string_view::npos) {
            fail("the sentence has no checksum");
        }
        unsigned sum = 0;
        for (const char c : line.substr(1, star - 1)) {
            sum ^= static_cast<unsigned char>(c);
        }
        char digits[3];
        g_snprintf(digits, sizeof digits, "%02X", sum);
        const std::string_view told = line.substr(star + 1);
        if (told.size() != 2 || g_ascii_strncasecmp(told.data(), digits, 2) != 0) {
            fail(std::string("the checksum is not ") + digits);
        }
    }

    void readRmc(const Fields& fields) {
        if (fields[2] != "A") {
            pointAt(fields[1]);
            return;
        }
        const Place place = placeIn(fields[3], fields[4], fields[5], fields[6]);
        const bool isMoving = !fields[7].empty();
        const double velocity = isMoving ? numberOf(fields[7], "the speed") * kKnot : 0;
        const double heading =
            isMoving && !fields[8].empty() ? numberOf(fields[8], "the course") : m_heading;
        TrackPoint* point = pointAt(fields[1]);
        if (point == nullptr) {
            return;
        }
        Fix& fix = placed(point, place);
        if (isMoving) {
            fix.velocity = velocity;
            fix.heading = m_heading = heading;
            point->isMoving = true;
        }
    }

    void readGga(const Fields& fields) {
        if (fields[6].empty() || fields[6] == "0") {
            pointAt(fields[1]);
            return;
        }
        const Place place = placeIn(fields[2], fields[3], fields[4], fields[5]);
        const double altitude =
            fields[9].empty() ? m_altitude : numberOf(fields[9], "the altitude");
        if (TrackPoint* point = pointAt(fields[1])) {
            m_altitude = altitude;
            placed(point, place);
        }
    }

    // The point of that time; sentences of the same time share one point. Null if the receiver does
    // not know the time.
    TrackPoint* pointAt(std::string_view text) {
        if (text.empty()) {
            return nullptr;
        }
        Milliseconds time = m_day + timeIn(text);
        const Milliseconds last = m_track.empty() ? time : *m_track.back().time;
        if (last - time > kDay / 2) {
            m_day += kDay;
            time += kDay;
        }
        if (m_track.empty() || time != last) {
            m_track.push_back({m_line, time, std::nullopt, false});
        }
        return &m_track.back();
    }

    Milliseconds timeIn(std::string_view text) const {
        const std::optional<double> number = base::numberIn<double>(text);
        const bool isTime = text.size() >= 6 && number && *number >= 0 && *number < 240000;
        const double hours = isTime ? std::floor(*number / 10000) : 0;
        const double minutes = isTime ? std::floor((*number - hours * 10000) / 100) : 60;
        const double seconds = isTime ? *number - hours * 10000 - minutes * 100 : 0;
        if (minutes >= 60 || seconds >= 61) {  // there are leap seconds
            fail("the time must be hhmmss");
        }
        return static_cast<Milliseconds>(hours) * kHour +
               static_cast<Milliseconds>(minutes) * 60'000 + std::llround(seconds * 1000);
    }

    // Sets the point's position.
    Fix& placed(TrackPoint* point, const Place& place) const {
        Fix fix = point->fix.value_or(fixOfReceiver());
        fix.latitude = place.latitude;
        fix.longitude = place.longitude;
        fix.altitude = m_altitude;
        return point->fix.emplace(fix);
    }

    Place placeIn(std::string_view latitude, std::string_view north, std::string_view longitude,
                  std::string_view east) const {
        return {degreesIn(latitude, north, "NS", kHighestLatitude, "the latitude"),
                degreesIn(longitude, east, "EW", kHighestLongitude, "the longitude")};
    }

    // Degrees and minutes, as dddmm.mmmm.
    double degreesIn(std::string_view text, std::string_view side, std::string_view sides,
                     double highest, const char* name) const {
        const double number = numberOf(text, name);
        const double whole = std::floor(number / 100);
        const double degrees = whole + (number - whole * 100) / 60;
        const bool isSide = side.size() == 1 && sides.find(side[0]) != std::string_view::npos;
        if (!isSide || number < 0 || number - whole * 100 >= 60 || degrees > highest) {
            fail(std::string(name) + " is out of range");
        }
        return side[0] == sides[1] ? -degrees : degrees;
    }

    double numberOf(std::string_view text, const char* name) const {
        const std::optional<double> number = base::numberIn<double>(text);
        if (!number) {
            fail(std::string(name) + " must be a number");
        }
        return *number;
    }

    std::string_view m_rest;
    Track m_track;
    int m_line = 0;
    int m_leftOut = 0;  // lines
    std::optional<TrackError> m_firstError;
    Milliseconds m_day = 0;  // those that have passed
    double m_heading = 0;
    double m_altitude = 0;
};

}  // namespace

Track pointsOfNmea(const std::string& content, std::string* leftOut) {
    return NmeaReader(content).read(leftOut);
}

}  // namespace tavsim

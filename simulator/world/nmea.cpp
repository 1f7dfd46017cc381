// NMEA 0183: sentences such as $GPRMC,120000,A,5231.2000,N,01324.3000,E,2.7,90.0,010526,,*0B, of
// which RMC and GGA tell the position.
#include <algorithm>
#include <array>

#include "simulator/world/recordings.h"

namespace tavsim {
namespace {

constexpr Milliseconds kHour = 3'600'000;
constexpr Milliseconds kDay = 24 * kHour;
constexpr double kKnot = 1852.0 / 3600.0;  // metres a second

// The fields that are needed; further ones are left out. Those that are missing are empty.
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

class Reader {
public:
    explicit Reader(std::string_view content) : m_rest(content) {}

    Track read() {
        while (!m_rest.empty()) {
            ++m_line;
            const size_t end = std::min(m_rest.find('\n'), m_rest.size());
            std::string_view line = m_rest.substr(0, end);
            m_rest.remove_prefix(std::min(end + 1, m_rest.size()));
            line = line.substr(0, line.find_last_not_of(" \t\r") + 1);
            if (!line.empty()) {
                readSentence(line);
            }
        }
        return std::move(m_track);
    }

private:
    [[noreturn]] void fail(const std::string& what) const { throw TrackError{m_line, what}; }

    void readSentence(std::string_view line) {
        if (line[0] != '$' && line[0] != '!') {
            fail("no sentence of NMEA 0183");
        }
        const size_t star = line.rfind('*');
        checkSum(line, star);
        const Fields fields = fieldsOf(line.substr(1, star - 1));
        const std::string_view kind = fields[0].substr(std::min<size_t>(2, fields[0].size()));
        if (kind == "RMC") {
            readRmc(fields);
        } else if (kind == "GGA") {
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
        const std::string_view digits = line.substr(star + 1);
        unsigned told = 0;
        const char* end = digits.data() + digits.size();
        const auto [at, problem] = std::from_chars(digits.data(), end, told, 16);
        if (problem != std::errc() || at != end || digits.size() != 2 || told != sum) {
            constexpr char kDigits[] = "0123456789ABCDEF";
            fail("the checksum is not " + std::string(1, kDigits[sum >> 4 & 0xf]) +
                 kDigits[sum & 0xf]);
        }
    }

    void readRmc(const Fields& fields) {
        TrackPoint* point = pointAt(fields[1]);
        if (fields[2] != "A" || point == nullptr) {
            return;
        }
        Fix& fix = placed(point, fields[3], fields[4], fields[5], fields[6]);
        if (fields[7].empty()) {
            return;
        }
        fix.velocity = numberOf(fields[7], "the speed") * kKnot;
        m_heading = fields[8].empty() ? m_heading : numberOf(fields[8], "the course");
        fix.heading = m_heading;
        point->isMoving = true;
    }

    void readGga(const Fields& fields) {
        TrackPoint* point = pointAt(fields[1]);
        if (fields[6].empty() || fields[6] == "0" || point == nullptr) {
            return;
        }
        m_altitude = fields[9].empty() ? m_altitude : numberOf(fields[9], "the altitude");
        placed(point, fields[2], fields[3], fields[4], fields[5]);
    }

    // The point of that time: sentences of one time make one point. Null before there is a time.
    TrackPoint* pointAt(std::string_view text) {
        if (text.empty() && m_track.empty()) {
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
        const std::optional<double> number = numberIn(text);
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

    // Puts the point there, as far as it has no place yet.
    Fix& placed(TrackPoint* point, std::string_view latitude, std::string_view north,
                std::string_view longitude, std::string_view east) const {
        Fix fix = point->fix.value_or(fixOfReceiver());
        fix.latitude = degreesIn(latitude, north, "NS", kHighestLatitude, "the latitude");
        fix.longitude = degreesIn(longitude, east, "EW", kHighestLongitude, "the longitude");
        fix.altitude = m_altitude;
        return point->fix.emplace(fix);
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
        const std::optional<double> number = numberIn(text);
        if (!number) {
            fail(std::string(name) + " must be a number");
        }
        return *number;
    }

    std::string_view m_rest;
    Track m_track;
    int m_line = 0;
    Milliseconds m_day = 0;  // those that have passed
    double m_heading = 0;
    double m_altitude = 0;
};

}  // namespace

Track pointsOfNmea(const std::string& content) {
    return Reader(content).read();
}

}  // namespace tavsim

// GPX: XML with a track of segments of points, or a route of points.
#include <glib.h>

#include <algorithm>
#include <cmath>
#include <pugixml.hpp>

#include "base/number.h"
#include "simulator/world/recordings.h"

namespace tavsim {
namespace {

class GpxReader {
public:
    explicit GpxReader(const std::string& content) : m_content(content) {}

    Track read() {
        pugi::xml_document document;
        const pugi::xml_parse_result result = document.load_buffer(
            m_content.data(), m_content.size(), pugi::parse_default | pugi::parse_trim_pcdata,
            pugi::encoding_utf8);
        if (!result) {
            throw TrackError{lineAt(result.offset), std::string("no XML: ") + result.description()};
        }
        const pugi::xml_node root = document.document_element();
        if (nameOf(root) != "gpx") {
            throw TrackError{lineAt(root.offset_debug()), "the element is none of GPX"};
        }
        addPoints(root, "*[local-name()='trk']/*/*[local-name()='trkpt']");
        if (m_track.empty()) {
            addPoints(root, "*/*[local-name()='rtept']");
        }
        return std::move(m_track);
    }

private:
    // The name without its namespace prefix.
    static std::string_view nameOf(const pugi::xml_node& node) {
        const std::string_view name = node.name();
        return name.substr(name.find(':') + 1);
    }

    static const char* textOf(const pugi::xml_node& node, std::string_view name) {
        for (const pugi::xml_node& child : node.children()) {
            if (nameOf(child) == name) {
                return child.child_value();
            }
        }
        return nullptr;
    }

    // The nodes come in the order of the file, so no line is counted twice.
    int lineAt(ptrdiff_t offset) {
        const auto end =
            std::min(static_cast<size_t>(std::max<ptrdiff_t>(offset, 0)), m_content.size());
        if (end < m_counted) {
            m_counted = 0;
            m_line = 1;
        }
        const auto from = m_content.begin() + static_cast<ptrdiff_t>(m_counted);
        m_line += static_cast<int>(
            std::count(from, m_content.begin() + static_cast<ptrdiff_t>(end), '\n'));
        m_counted = end;
        return m_line;
    }

    void addPoints(const pugi::xml_node& root, const char* path) {
        pugi::xpath_node_set points = root.select_nodes(path);
        points.sort();
        for (const pugi::xpath_node& point : points) {
            addPoint(point.node());
        }
    }

    void addPoint(const pugi::xml_node& node) {
        TrackPoint point;
        point.line = lineAt(node.offset_debug());
        Fix fix = fixOfReceiver();
        fix.latitude = degreesIn(node, "lat", kHighestLatitude);
        fix.longitude = degreesIn(node, "lon", kHighestLongitude);
        if (const char* elevation = textOf(node, "ele")) {
            const std::optional<double> altitude = base::numberIn<double>(elevation);
            if (!altitude) {
                throw TrackError{m_line, "ele must be a number"};
            }
            fix.altitude = *altitude;
        }
        if (const char* time = textOf(node, "time")) {
            point.time = timeIn(time);
        }
        point.fix = fix;
        m_track.push_back(point);
    }

    double degreesIn(const pugi::xml_node& node, const char* name, double highest) const {
        const std::optional<double> degrees = base::numberIn<double>(node.attribute(name).value());
        if (!degrees || std::abs(*degrees) > highest) {
            const std::string limit = std::to_string(static_cast<int>(highest));
            throw TrackError{
                m_line, std::string(name) + " must be a number from -" + limit + " to " + limit};
        }
        return *degrees;
    }

    Milliseconds timeIn(const char* text) const {
        g_autoptr(GTimeZone) utc = g_time_zone_new_utc();
        g_autoptr(GDateTime) time = g_date_time_new_from_iso8601(text, utc);
        if (time == nullptr) {
            throw TrackError{m_line, "time must be a date and time, such as 2026-05-01T10:00:00Z"};
        }
        return g_date_time_to_unix(time) * 1000 + g_date_time_get_microsecond(time) / 1000;
    }

    const std::string& m_content;
    Track m_track;
    size_t m_counted = 0;
    int m_line = 1;
};

}  // namespace

Track pointsOfGpx(const std::string& content) {
    return GpxReader(content).read();
}

}  // namespace tavsim

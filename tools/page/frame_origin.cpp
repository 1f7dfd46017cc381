#include "frame_origin.h"

#include <cstdio>
#include <utility>

#include "bridge/message.h"
#include "helper/items.h"

namespace page {
namespace {

// Whether its only part is the whole screen.
bool isWhole(const std::string& frame) {
    int size[2] = {};
    int part[4] = {};
    int end = 0;
    constexpr char kForm[] = R"({"width":%d,"height":%d,"parts":[[%d,%d,%d,%d]]}%n)";
    return std::sscanf(frame.c_str(), kForm, &size[0], &size[1], &part[0], &part[1], &part[2],
                       &part[3], &end) == 6 &&
           end > 0 && part[2] == size[0] && part[3] == size[1];
}

}  // namespace

void FrameOrigin::ask() {
    helper::ItemWriter items;
    items.writeBool(m_needsWhole);
    m_isAsked = true;
    m_plugin.send(bridge::MessageKind::FrameWanted, items.message());
}

void FrameOrigin::stop() {
    m_isAsked = false;
    m_needsWhole = true;
}

void FrameOrigin::take(const std::string& frame) {
    if (!m_isAsked) {
        m_needsWhole = true;  // the next one would lack what this one shows
    } else if (!m_needsWhole || isWhole(frame)) {
        m_isAsked = false;
        m_needsWhole = false;
        m_sink(frame);
    }
}

}  // namespace page

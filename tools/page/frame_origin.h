// The pictures of the application's screen.
#pragma once

#include <functional>
#include <string>

#include "plugin.h"

namespace page {

// Asks the application for each picture. What it sends does not always answer the last request,
// because a document may have stopped looking, and begun anew, in between.
class FrameOrigin {
public:
    FrameOrigin(Plugin& plugin, std::function<void(const std::string& frame)> sink)
        : m_plugin(plugin), m_sink(std::move(sink)) {}

    void ask();
    void stop();
    void take(const std::string& frame);

private:
    Plugin& m_plugin;
    std::function<void(const std::string&)> m_sink;
    bool m_isAsked = false;
    bool m_needsWhole = true;
};

}  // namespace page

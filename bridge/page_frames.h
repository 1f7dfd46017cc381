// The application's picture for its page.
#pragma once

#include <optional>
#include <string>

#include "screen/changes.h"

namespace bridge {

class PageFrames {
public:
    // The page wants to see what changes, or everything if it begins to look.
    void want(bool isWhole);

    // The frame that the page wants, as soon as there is something to see. To be called again and
    // again: nothing is kept for a page that has not wanted to see any for some seconds.
    std::optional<std::string> next();

private:
    bool m_isWanted = false;
    std::optional<screen::ScreenChanges> m_changes;
};

}  // namespace bridge

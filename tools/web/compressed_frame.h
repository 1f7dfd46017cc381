// A frame for a slow line.
#pragma once

#include <string>
#include <string_view>

namespace web {

// A frame as the device hands it over, with a PNG file in place of each part's pixels, how long
// each is behind its rectangle, and "format":"png" in the first line. Empty where the frame is
// malformed.
std::string compressed(std::string_view frame);

}  // namespace web

// What a page of the panel may do.
#pragma once

#include <optional>
#include <string>

namespace panel {

// The origin of a tile server's address, such as https://tiles.example:8080. Nothing where that is
// not an address with {x}, {y} and {z}.
std::optional<std::string> originOfTiles(const std::string& address);

// The value of the header Content-Security-Policy, with the tile server's origin; it may be empty.
std::string contentPolicy(const std::string& tiles);

// Why a page must not give the command: it names a file outside of the folder. Empty otherwise.
std::string whyNoCommand(const std::string& line, const std::string& folder);

// The same for a scenario that lies in the folder. One with an include or a table is refused too,
// because its steps are not known before they are put together.
std::string whyNoScenario(const std::string& text, const std::string& folder);

}  // namespace panel

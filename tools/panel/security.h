// Who may speak to the panel.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace panel {

// A secret that nobody can guess, for the link to the panel; empty where the system has none.
std::string newToken();

// In a time that does not depend on where they differ.
bool isSameSecret(std::string_view left, std::string_view right);

// Whether the value of the header Host is a name of this machine's own, with any port: a page of
// another site, whose name leads here, has another one.
bool isLoopback(std::string_view host);

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

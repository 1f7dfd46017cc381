// Who may speak to a server on this machine.
#pragma once

#include <string>
#include <string_view>

namespace web {

// A secret that nobody can guess; empty where the system has none.
std::string newToken();

// In a time that does not depend on where they differ.
bool isSameSecret(std::string_view left, std::string_view right);

// Whether the value of the header Host is a name of this machine's own, with any port: a page of
// another site, whose name leads here, has another one.
bool isLoopback(std::string_view host);

// Whether the text is an origin such as https://tiles.example:8080. Nothing else can stand in one,
// and so it cannot add to a policy.
bool isOrigin(std::string_view text);

}  // namespace web

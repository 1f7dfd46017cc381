// The bridge between the application and the web page whose plug-in it is.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "bridge/methods.h"

namespace tavsim {

// Sets the page's script; empty for a page that never calls. The script starts when the application
// connects its methods.
void startPage(const std::string& pageFile);

// Ends the page and clears the application's methods.
void stopPage();

// The application's methods that the page can call; nothing while no page runs.
std::optional<std::vector<std::string>> pageMethods();

// Calls a method as the page's script does. Nothing is called while the script runs, or no page.
std::optional<bridge::MethodReply> callFromPage(const std::string& method,
                                                const std::vector<std::string>& arguments);

}  // namespace tavsim

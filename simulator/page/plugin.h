// The bridge between the application and the web page whose plug-in it is.
#pragma once

#include <poll.h>

#include <optional>
#include <string>
#include <vector>

#include "bridge/calls.h"

namespace tavsim {

// Sets the page's file, a document or a script; empty for a page that never calls. The page starts
// when the application connects its methods. False, with a line in `error`, when the clock does not
// suit the page.
bool startPage(const std::string& pageFile, std::string* error);

// Ends the page and clears the application's methods.
void stopPage();

// The application's methods that the page can call; nothing while no page runs.
std::optional<std::vector<std::string>> pageMethods();

// Calls a method as the page's script does. Nothing is called while the script runs, or no page.
std::optional<bridge::MethodReply> callFromPage(const std::string& method,
                                                const std::vector<std::string>& arguments);

// Answers a document, which asks unprompted, without waiting.
void servePage();

// Only sends what it takes now, for while the application waits.
void sendToPage();

// Its socket, and what to poll it for; negative when there is none.
pollfd pageToPoll();

}  // namespace tavsim

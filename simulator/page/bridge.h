// The bridge between the application and the web page whose plug-in it is.
#pragma once

#include <string>

namespace tavsim {

// Sets the page's script; empty for a page that never calls. The script starts when the application
// connects its methods.
void startPage(const std::string& pageFile);

// Ends the page and clears the application's methods.
void stopPage();

}  // namespace tavsim

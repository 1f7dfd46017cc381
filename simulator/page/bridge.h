// The bridge between the application and the web page whose plug-in it is.
#ifndef TAV_SIMULATOR_PAGE_BRIDGE_H
#define TAV_SIMULATOR_PAGE_BRIDGE_H

#include <string>

namespace tavsim {

// Names the page's script; empty: a host that never calls. Nothing runs before the application
// connects its methods.
void startPage(const std::string& pageFile);

// Ends the page and forgets the application's methods.
void stopPage();

}  // namespace tavsim

#endif

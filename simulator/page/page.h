// The web page whose plug-in the application is.
#ifndef TAV_SIMULATOR_PAGE_PAGE_H
#define TAV_SIMULATOR_PAGE_PAGE_H

#include <string>

namespace tavsim {

// Names the page's script; empty: a host that never calls. Nothing runs before the application
// connects its methods.
void startPage(const std::string& pageFile);

// Ends the page and forgets the application's methods.
void stopPage();

}  // namespace tavsim

#endif

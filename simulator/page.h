// The web page that a plug-in application is part of.
#ifndef TAV_SIMULATOR_PAGE_H
#define TAV_SIMULATOR_PAGE_H

#include <string>

namespace sim {

// Remembers the page's script, which runs once the application has registered its methods.
void startPage(const std::string& pageFile);
void stopPage();

}  // namespace sim

#endif

// The bridge between the application and the web page whose plug-in it is.
#pragma once

#include <memory>
#include <string>

#include "simulator/page/page.h"

namespace tavsim {

// Sets the page's file, a document or a script; empty for a page that never calls. The page starts
// when the application connects its methods. False, with a line in `error`, when the clock does not
// suit the page.
bool startPage(const std::string& pageFile, std::string* error);

// Ends the page and clears the application's methods.
void stopPage();

// The page, which whoever uses it keeps, because a native method may end it; null while none runs.
std::shared_ptr<Page> livingPage();

}  // namespace tavsim

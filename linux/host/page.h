// The page whose plug-in the application is.
#pragma once

namespace tavlinux {

// Shows the application's picture to the page, if that wants to see it and there is a new one.
void showPicture();

}  // namespace tavlinux

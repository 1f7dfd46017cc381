// The page whose plug-in the application is.
#pragma once

namespace tavlinux {

// Shows the application's picture to the page, if that wants to see it and there is a new one.
void showPicture();

// While the application waits for so many milliseconds, on any thread: sends the page what it
// takes, because a socket takes less than a picture at once. Returns how many are left.
unsigned sendToPage(unsigned milliseconds);

}  // namespace tavlinux

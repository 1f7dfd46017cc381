// Whether this library's functions are interposed, so that the program calls them.
#pragma once

namespace tavlinux {

// False when SDL's event functions come before this library's, so that nothing would ever be
// delivered; then says so once on standard error, with the remedy.
bool isInFront();

}  // namespace tavlinux

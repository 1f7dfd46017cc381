// The on-screen keyboard.
#ifndef TAV_LINUX_HOST_KEYBOARD_H
#define TAV_LINUX_HOST_KEYBOARD_H

namespace tavlinux {

// False when there is none on the session bus.
bool showKeyboard(bool visible);

}  // namespace tavlinux

#endif

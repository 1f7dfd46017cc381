// Requests to the desktop.
#pragma once

namespace tavlinux {

// Each returns whether the desktop is in the requested state. Inhibitions end with the application.
bool enableScreenTimeout(bool enable);
bool enableNotifications(bool enable);

// The on-screen keyboard; false when there is none on the session bus.
bool showKeyboard(bool visible);

}  // namespace tavlinux

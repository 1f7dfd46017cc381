// What the application asks of the desktop.
#pragma once

namespace tavlinux {

// Each returns whether the state is as asked for afterwards. Inhibitions end with the application.
bool enableScreenTimeout(bool enable);
bool enableNotifications(bool enable);

// The on-screen keyboard; false when there is none on the session bus.
bool showKeyboard(bool visible);

}  // namespace tavlinux

// What the application keeps the desktop from doing.
#ifndef TAV_LINUX_HOST_INHIBITIONS_H
#define TAV_LINUX_HOST_INHIBITIONS_H

namespace tavlinux {

// Each returns whether the state is as asked for afterwards. Inhibitions end with the application.
bool enableScreenTimeout(bool enable);
bool enableNotifications(bool enable);

}  // namespace tavlinux

#endif

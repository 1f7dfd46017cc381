// `tavsim ctl wait`: until something has happened to a device.
#ifndef TAV_TOOLS_CONTROL_WAIT_H
#define TAV_TOOLS_CONTROL_WAIT_H

#include <string_view>

#include "tools/control/ctl.h"

namespace tools {

// Takes what stands behind the command's name. The exit status: 0 when it has happened, 1 when it
// has not in its time or cannot any more, 2 when it is malformed or no device was reached.
int waitFor(const ControlRequest& request, std::string_view words);

}  // namespace tools

#endif

// `tavsim ctl wait`: waits for an event on a device.
#ifndef TAV_TOOLS_CONTROL_WAIT_H
#define TAV_TOOLS_CONTROL_WAIT_H

#include <string_view>

#include "tools/control/ctl.h"

namespace tools {

// Takes the text after the command's name. The exit status: 0 when the condition was met, 1 when it
// was not met in time or cannot be met any more, 2 when it is malformed or no device was reached.
int waitFor(const ControlRequest& request, std::string_view words);

}  // namespace tools

#endif

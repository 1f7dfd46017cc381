// What a command's usage demands of its words.
#ifndef TAV_SIMULATOR_CONTROL_USAGE_H
#define TAV_SIMULATOR_CONTROL_USAGE_H

#include <string_view>

#include "simulator/control/words.h"

namespace tavsim {

// False when the command would certainly refuse the words: one that the usage demands is missing or
// too many, is no number or no time where one must stand, or is not one of several (on|off). What
// is optional, or repeated, the command looks at itself.
bool fitsUsage(std::string_view usage, Words words);

}  // namespace tavsim

#endif

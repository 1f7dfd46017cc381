// Calls of a page's functions, as the application makes them through NApp_JSCall().
#pragma once

#include <vector>

#include "helper/items.h"

namespace bridge {

bool isCallable(const char* function, const char* const* arguments, int argumentCount);

// They point into the arguments.
std::vector<helper::Text> textsOf(const char* const* arguments, int argumentCount);

}  // namespace bridge

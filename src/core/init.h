// Whether the library was started.
#pragma once

#include "SDL.h"

namespace tav {

// 1 from the first TAV_Init on; TAV_Quit does not change it.
extern Sint32 g_calledInit;

}  // namespace tav

// Uncaught exceptions of a script.
#ifndef TAV_SIMULATOR_PAGE_THROWN_H
#define TAV_SIMULATOR_PAGE_THROWN_H

#include "simulator/page/engine.h"

namespace tavsim {

// Lets the engine note where something is thrown; the global object is on top.
void watchThrows(duk_context* engine);

// The name to report for whatever does not know its file: the string on top, which stays there.
void nameScript(duk_context* engine);

// Reports the thrown value, which is on top, and its line to the device.
void reportThrown(duk_context* engine);

}  // namespace tavsim

#endif

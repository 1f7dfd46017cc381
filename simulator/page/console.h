// console.log, console.warn and console.error.
#ifndef TAV_SIMULATOR_PAGE_CONSOLE_H
#define TAV_SIMULATOR_PAGE_CONSOLE_H

#include "simulator/page/engine.h"

namespace tavsim {

// Adds the console to the global object, which is on top.
void addConsole(duk_context* engine);

// Prints a line, of the script or of the page itself.
void writeConsole(bool toStandardError, EngineText line);

}  // namespace tavsim

#endif

// What the page's script finds in the engine besides the language, and what it leaves.
#pragma once

#include "simulator/page/engine.h"

namespace tavsim {

// These add to the global object, which is on top: console.log and the like; setTimeout and the
// like; `component`, which is the application with its native methods.
void addConsole(duk_context* engine);
void addTimers(duk_context* engine);
void addComponent(duk_context* engine);

// Prints a line, of the script or of the page itself.
void writeConsole(EngineText level, EngineText line);

// Calls the function of the timer that the message from the device names.
void runTimer(duk_context* engine);

// Calls the listener that the message from the device names, with the message's arguments.
void callListener(duk_context* engine);

// Lets the engine note where something is thrown; the global object is on top.
void watchThrows(duk_context* engine);

// The name to report for whatever does not know its file: the string on top, which stays there.
void nameScript(duk_context* engine);

// Reports the thrown value, which is on top, and its line to the device.
void reportThrown(duk_context* engine);

}  // namespace tavsim

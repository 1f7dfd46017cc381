// `component`: the application as the page's script sees it, with its native methods as members.
#ifndef TAV_SIMULATOR_PAGE_COMPONENT_H
#define TAV_SIMULATOR_PAGE_COMPONENT_H

#include "simulator/page/engine.h"

namespace tavsim {

// Adds it to the global object, which is on top.
void addComponent(duk_context* engine);

// Calls the listener that the message from the device names, with the message's arguments.
void callListener(duk_context* engine);

}  // namespace tavsim

#endif

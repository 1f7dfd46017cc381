// The native methods that the page's JavaScript can call.
#pragma once

#include "platform/hdata.h"
#include "tav.h"

namespace tav {

// Set by the first successful TAV_JSRegistrationComplete; nothing clears it.
extern bool g_jsRegistrationComplete;

// The answer to a call of the page until its handler sets one: the empty text, which is never
// released.
extern char g_emptyAnswer[];

// Writes the number of methods, then their names in the order of registration. Always true.
bool jsGetMethodsCallback(HDataWriter* writer);

// Performs one call: reads the method's name, the parameter count and the parameters, and writes
// whether the answer is an exception, and its text. False, with nothing written, when the name
// cannot be read or memory does not suffice. The handler may change the registry in any way while
// it runs.
bool jsMethodCallback(HDataReader* reader, HDataWriter* writer);

}  // namespace tav

// Forgets every handler. Visible to other modules of the platform; applications use TAV_Quit.
TAV_API void TAV_JSQuit();

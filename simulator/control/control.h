// The control socket, which receives commands for a running device.
#pragma once

#include <string>

namespace tavsim {

// Listens in the root folder; false, with a line in `error`, on failure.
bool startControl(std::string* error);

// Whether this process listens.
bool isControlled();

// Carries out the received commands on the caller's thread. Never waits, but while the time is
// paused and the application was not asked to quit.
void serveControl();

void stopControl();

}  // namespace tavsim

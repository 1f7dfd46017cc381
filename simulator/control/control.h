// The control socket, which receives commands for a running device.
#pragma once

#include <string>

namespace tavsim {

// Listens in the root folder; false, with a line in `error`, on failure.
bool startControl(std::string* error);

// Whether this process listens.
bool isControlled();

// Carries out the received commands on the caller's thread. While the time is paused, this goes on
// until it is resumed or the application is asked to quit; otherwise it never waits.
void serveControl();

void stopControl();

}  // namespace tavsim

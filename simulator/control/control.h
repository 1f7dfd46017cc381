// The control socket, which receives commands for a running device.
#pragma once

#include <string>

namespace tavsim {

// Listens in the root folder; false, with a line in `error`, on failure.
bool startControl(std::string* error);

// Carries out the received commands on the caller's thread. Never waits.
void serveControl();

void stopControl();

}  // namespace tavsim

// The control socket, through which a running device is steered.
#ifndef TAV_SIMULATOR_CONTROL_CONTROL_H
#define TAV_SIMULATOR_CONTROL_CONTROL_H

#include <string>

namespace tavsim {

// Listens in the root folder; false, with a line in `error`, when that cannot be done.
bool startControl(std::string* error);

// Carries out the commands that have come in, on the caller's thread. Never waits.
void serveControl();

void stopControl();

}  // namespace tavsim

#endif

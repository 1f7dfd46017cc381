// The control socket, which receives commands for a running device.
#pragma once

#include <poll.h>

#include <string>
#include <vector>

namespace tavsim {

// Listens in the root folder; false, with a line in `error`, on failure.
bool startControl(std::string* error);

// Whether this process listens.
bool isControlled();

// Carries out the received commands on the caller's thread. While the time is paused, this goes on
// until it is resumed or the application is asked to quit; otherwise it never waits.
void serveControl();

// A socket takes less than a picture at once. So these are for sending the rest while the
// application waits anyway: the sockets that are to take more, and to send what they take now.
std::vector<pollfd> controlsToPoll();
void sendToControls();

void stopControl();

}  // namespace tavsim

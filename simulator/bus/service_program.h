// The user's own programs that answer requests.
#pragma once

#include "simulator/bus/program_line.h"
#include "simulator/device/profile.h"

namespace tavsim {

// Passes a request to its program, which is started if it does not run yet. In virtual time, waits
// for the program's answer. Its replies are delivered while the call is open.
void askServiceProgram(const ServiceCommand& command, int token, const ServiceRequest& request);

// The call is closed, or its program must not answer it any more.
void forgetServiceRequest(int token);

// Reads the lines that programs have sent meanwhile.
void serveServicePrograms();

// Ends all programs, and kills those that do not end.
void endServicePrograms();

}  // namespace tavsim

// Programs of the user's own that answer requests.
#ifndef TAV_SIMULATOR_BUS_SERVICE_PROGRAM_H
#define TAV_SIMULATOR_BUS_SERVICE_PROGRAM_H

#include "simulator/bus/program_line.h"
#include "simulator/device/profile.h"

namespace tavsim {

// Hands a request to its program, which is started if it does not run yet. In virtual time, waits
// for the program's word. Its replies come by themselves while the call is open.
void askServiceProgram(const ServiceCommand& command, int token, const ServiceRequest& request);

// The call is closed, or its program shall not answer it any more.
void forgetServiceRequest(int token);

// Takes what programs say unasked.
void serveServicePrograms();

// Lets all programs end; kills those that do not.
void endServicePrograms();

}  // namespace tavsim

#endif

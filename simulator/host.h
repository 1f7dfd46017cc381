// What the host says to a request.
#ifndef TAV_SIMULATOR_HOST_H
#define TAV_SIMULATOR_HOST_H

namespace sim {

// False when the profile or a fault makes the host refuse this request now.
bool hostAccepts(const char* request);

// "accepted" or "refused", for the journal.
const char* acceptance(bool accepts);

}  // namespace sim

#endif

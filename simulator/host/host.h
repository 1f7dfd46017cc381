// What the host says to a request.
#ifndef TAV_SIMULATOR_HOST_HOST_H
#define TAV_SIMULATOR_HOST_HOST_H

namespace tavsim {

// False when the profile or a fault makes the host refuse this request now.
bool hostAccepts(const char* request);

// "accepted" or "refused", for the journal.
const char* acceptance(bool accepts);

}  // namespace tavsim

#endif

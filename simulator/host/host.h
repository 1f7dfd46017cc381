// The host's answer to a request.
#ifndef TAV_SIMULATOR_HOST_HOST_H
#define TAV_SIMULATOR_HOST_HOST_H

namespace tavsim {

// False when the profile, a command or an injected fault makes the host refuse this request.
bool hostAccepts(const char* request);

// "accepted" or "refused", for the journal.
const char* acceptance(bool accepts);

}  // namespace tavsim

#endif

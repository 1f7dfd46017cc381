// A request that is waited for.
#ifndef TAV_SERVICES_BLOCKING_CALL_H
#define TAV_SERVICES_BLOCKING_CALL_H

#include "core/handles.h"

namespace tav {

// What a waiting call shares with its reply function; it lives as long as the wait.
struct BlockingCallContext {
    HStringPtr reply;  // null once a reply did not fit into memory
    bool done = false;
};

// Sends the request and waits for its reply, at most for the time-out where that is above 0. Events
// that SDL queues meanwhile are dropped. Null after a failure, which is reported.
HStringPtr blockingKSCall(const char* uri, const char* payload, bool option, int timeoutMs);

void blockingCallCallback(int token, const char* reply, void* context);

}  // namespace tav

#endif

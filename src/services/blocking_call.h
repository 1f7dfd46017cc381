// A request that is waited for.
#pragma once

#include "core/handles.h"

namespace tav {

// State that a blocking call shares with its reply function, for as long as it waits.
struct BlockingCallContext {
    HStringPtr reply;  // null after a reply for which there was no memory
    bool done = false;
};

// Sends the request and waits for its reply: at most for the time-out, or without limit when that
// is 0 or less. Drops the events that SDL queues meanwhile. Null after a failure, which is
// reported.
HStringPtr blockingKSCall(const char* uri, const char* payload, bool option, int timeoutMs);

void blockingCallCallback(int token, const char* reply, void* context);

}  // namespace tav

/* The caller's side of the platform's message bus. */
#ifndef TAV_PLATFORM_HKSCALLER_H
#define TAV_PLATFORM_HKSCALLER_H

#include "visibility.h"

/* Receives a reply: the call's token, the reply's text (which belongs to the bus, is valid during
 * this one call only and may be null) and the context given with the call. It comes on the
 * application's thread, while the application polls, waits for or pumps SDL events, and never from
 * within the functions below. It may itself use the bus and poll events. */
extern "C" {
typedef void (*HKSReplyFunction)(int token, const char* reply, void* context);
}

/* Requests to services. The texts are copied where they are needed later; nothing is validated.
 * The option tells the bus in whose name a request goes out: true for a feature of the library,
 * false for the application itself. A token is never -1, and no two open calls have the same. The
 * result -1 means that the request could not be dispatched, and then no reply follows. */
class TAV_PLATFORM_API HKSCaller {
public:
    /* Sends a request whose replies nobody receives. */
    int ksCall(const char* uri, const char* payload, bool option);

    /* Sends a request with one reply. */
    int ksCallWithResponse(const char* uri, const char* payload, bool option,
                           HKSReplyFunction replyFunction, void* context);

    /* Sends a request whose replies come until the call is cancelled. */
    int ksCallWithSubscription(const char* uri, const char* payload, bool option,
                               HKSReplyFunction replyFunction, void* context);

    /* Withdraws a call: its reply function is not called any more. A token that stands for no open
     * call, -1 included, changes nothing. */
    void ksCancelCall(int token);
};

#endif

// Calls whose replies go to functions of the application.
#pragma once

#include <cstdint>

#include "SDL.h"
#include "tav.h"

namespace tav {

// One open call. The bus hands its address back with every reply.
struct UserCallbackContext {
    UserCallbackContext();

    TAV_ServiceCallback callback = nullptr;
    void* userData = nullptr;
    int token;
    Sint32 removeAfterResponse = 1;  // 0 for a subscription
    std::uint64_t serial;            // unique for all calls of the process
};

// Passes a reply to the function of the call that it belongs to.
void userCallback(int token, const char* reply, void* context);

}  // namespace tav

// Removes all open calls from the registry without cancelling them. Visible to other modules of the
// platform.
TAV_API void TAV_ServicesQuit();

// The simulated message bus.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "simulator/device/profile.h"

namespace tavsim {

// Cancels every call.
void clearBus();

// In the order of dispatch.
TAV_PLATFORM_API std::vector<int> openBusCalls(const std::string& uri);

// Whether a request waits for the payment service.
bool isPaymentOpen();

// While the library waits for the payment service, it drops the events that it takes, and after the
// answer it takes events until none is left. Called when a request to quit is taken: true when the
// library drops it, and it is then held back.
bool holdQuit();

// Called when no event is left. True when a request to quit was held back that the application can
// have now.
bool letQuitGo();

// From now on the service answers with this text. Its open subscriptions receive it at once,
// instead of their pending replies. Without a text it answers nothing, and all pending replies are
// dropped.
void answerFromNowOn(const std::string& uri, const std::optional<std::string>& text);

// Delivers a reply to an open call now; false when there is no open call with this token.
TAV_PLATFORM_API bool deliverReply(int token, const Reply& reply);

}  // namespace tavsim

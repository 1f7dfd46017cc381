// The simulated message bus.
#ifndef TAV_SIMULATOR_BUS_BUS_H
#define TAV_SIMULATOR_BUS_BUS_H

#include <optional>
#include <string>
#include <vector>

#include "simulator/device/profile.h"

namespace tavsim {

// Cancels every call.
void clearBus();

// In the order of dispatch.
std::vector<int> openBusCalls(const std::string& uri);

// Whether a request waits for the payment service, or got its answer at this very moment.
bool isPaymentOpen();
bool isPaymentAwaited();

// From now on the service answers with this text. Its open subscriptions receive it at once,
// instead of their pending replies. Without a text it answers nothing, and all pending replies are
// dropped.
void answerFromNowOn(const std::string& uri, const std::optional<std::string>& text);

// Delivers a reply to an open call now; false when there is no open call with this token.
bool deliverReply(int token, const Reply& reply);

}  // namespace tavsim

#endif

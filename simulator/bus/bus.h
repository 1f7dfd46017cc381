// The simulated message bus.
#ifndef TAV_SIMULATOR_BUS_BUS_H
#define TAV_SIMULATOR_BUS_BUS_H

#include <optional>
#include <string>
#include <vector>

#include "simulator/device/profile.h"

namespace tavsim {

// Withdraws every call.
void clearBus();

// In the order of dispatch.
std::vector<int> openBusCalls(const std::string& uri);

// Whether a request waits for the payment service, or did so until this moment.
bool isPaymentOpen();
bool isPaymentAwaited();

// From now on the service answers with this text, which its open subscriptions receive at once, in
// the place of what was on its way to them. Without a text it answers nothing, and what is on its
// way to anybody does not arrive.
void answerFromNowOn(const std::string& uri, const std::optional<std::string>& text);

// Hands a reply to an open call now; false when the token stands for none.
bool deliverReply(int token, const Reply& reply);

}  // namespace tavsim

#endif

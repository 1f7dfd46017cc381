// The payment service, which sells the items of the profile.
#ifndef TAV_SIMULATOR_BUS_PAYMENT_H
#define TAV_SIMULATOR_BUS_PAYMENT_H

#include "simulator/bus/answer.h"

namespace tavsim {

inline constexpr char kPayment[] = "vire://com.vire.service.payment/";
inline constexpr char kPurchaseUri[] = "vire://com.vire.service.payment/purchaseItem";

Answer availableItems(const simdjson::dom::object& request);
Answer itemInfo(const simdjson::dom::object& request);
Answer purchaseItem(const simdjson::dom::object& request);
Answer pendingPurchase(const simdjson::dom::object& request);

// The application is asked to quit: every purchase that waits for an answer is refused.
void refuseOpenPurchases();

}  // namespace tavsim

#endif

// The services that every device has.
#pragma once

#include <simdjson.h>

#include <string>
#include <vector>

#include "simulator/device/profile.h"
#include "simulator/world/position.h"

namespace tavsim {

// The answer to one request. Its first reply is computed when the request arrives.
struct Answer {
    std::vector<Reply> replies;
    int delay = 0;
    int every = 0;
    bool isEndless = false;  // after the last reply, a subscription is answered again
    bool isFilled = false;   // the replies are templates
};

Answer failure(const std::string& reason, int delay = 0);

// Carries the request out. The journal gets its changes of state.
Answer deviceServiceAnswer(const std::string& uri, const std::string& payload);

std::vector<std::string> deviceServiceUris();

inline constexpr char kLocationUri[] = "vire://com.vire.location/startTracking";
Answer startTracking(const simdjson::dom::object& request);
std::string locationErrorReply(int code);

// Answers all who track the location.
void announceLocation(const Report& report);

inline constexpr char kPayment[] = "vire://com.vire.service.payment/";
inline constexpr char kPurchaseUri[] = "vire://com.vire.service.payment/purchaseItem";
Answer availableItems(const simdjson::dom::object& request);
Answer itemInfo(const simdjson::dom::object& request);
Answer purchaseItem(const simdjson::dom::object& request);
Answer pendingPurchase(const simdjson::dom::object& request);

// The application is asked to quit: every purchase that waits for an answer is refused.
void refuseOpenPurchases();

}  // namespace tavsim

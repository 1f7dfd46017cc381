// The services that a profile describes, and the changes to them since.
#pragma once

#include <optional>
#include <set>
#include <string>

#include "simulator/bus/services.h"
#include "simulator/time/clock.h"

namespace tavsim {

// Null for a URI that the profile does not have.
const Service* profileService(const std::string& uri);

// Overrides the profile's service until it is restored.
void replaceService(const std::string& uri, Service service);

// Overrides how long the first reply to a request takes, of any service, until it is restored.
void delayService(const std::string& uri, Milliseconds delay);
std::optional<Milliseconds> changedDelay(const std::string& uri);

// Takes all changes to the service back.
void restoreService(const std::string& uri);
bool isChanged(const std::string& uri);

// Those of the profile, and those that were changed.
std::set<std::string> profileServiceUris();

// The service's answer to this request. Services that compute their answer do so here.
Answer serviceAnswer(const Service& service, const std::string& uri, const std::string& payload,
                     bool isSubscription);

// A reply of the service, with its placeholders filled in now.
Reply filledReply(const Reply& reply, const std::string& uri, const std::string& payload);

// Undoes all overrides, and resets the progress of each service.
void clearProfileServices();

}  // namespace tavsim

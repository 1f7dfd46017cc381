// The services that a profile describes, and what has been made of them since.
#ifndef TAV_SIMULATOR_BUS_PROFILE_SERVICES_H
#define TAV_SIMULATOR_BUS_PROFILE_SERVICES_H

#include <string>

#include "simulator/bus/answer.h"

namespace tavsim {

// Null for a URI that the profile does not have.
const Service* profileService(const std::string& uri);

// Puts the service in front of the profile's until it is restored.
void replaceService(const std::string& uri, Service service);
void restoreService(const std::string& uri);

// What the service answers to this request. Services that compute are asked here.
Answer serviceAnswer(const Service& service, const std::string& uri, const std::string& payload,
                     bool isSubscription);

// A reply of the service as it goes out now.
Reply filledReply(const Reply& reply, const std::string& uri, const std::string& payload);

// Forgets what was replaced, and how far each service has come.
void clearProfileServices();

}  // namespace tavsim

#endif

// The desktop portal, which responds to a request with a signal.
#pragma once

#include <functional>
#include <string>

#include "linux/bus/subscription.h"

namespace tavlinux {

inline constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
inline constexpr char kPortalPath[] = "/org/freedesktop/portal/desktop";
inline constexpr char kPortalRequest[] = "org.freedesktop.portal.Request";

// A new token, and the path of the object that the portal makes for it: a "request" or a "session".
std::string newPortalToken();
std::string portalObject(const char* kind, const std::string& token);

// Receives the response to one request while it exists. Make it before the request is sent, because
// the response can come before the method returns.
class PortalResponse {
public:
    enum Code : guint32 { Granted = 0, Cancelled = 1 };  // by the user; other codes are failures

    explicit PortalResponse(const std::function<void(guint32 code)>& receiver);

    // Options for the request, with the token that tells the portal where to respond.
    GVariantBuilder options() const;

private:
    const std::string m_token;
    const Subscription m_signal;
};

}  // namespace tavlinux

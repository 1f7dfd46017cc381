// The desktop portal, which says in a signal what becomes of a request.
#ifndef TAV_LINUX_BUS_PORTAL_H
#define TAV_LINUX_BUS_PORTAL_H

#include <functional>
#include <string>

#include "linux/bus/subscription.h"

namespace tavlinux {

inline constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
inline constexpr char kPortalPath[] = "/org/freedesktop/portal/desktop";
inline constexpr char kPortalRequest[] = "org.freedesktop.portal.Request";

// A new token for what the portal is to make, and where it makes that: a "request" or a "session".
std::string newPortalToken();
std::string portalObject(const char* kind, const std::string& token);

// Receives the response to one request while it lives. It is made before the request is sent, as
// the response can come before the method's answer.
class PortalResponse {
public:
    enum Code : guint32 { Granted = 0, Cancelled = 1 };  // by the user; others are failures

    explicit PortalResponse(const std::function<void(guint32 code)>& receiver);

    // The request's options, by which the portal knows where to respond.
    GVariantBuilder options() const;

private:
    const std::string m_token;
    const Subscription m_signal;
};

}  // namespace tavlinux

#endif

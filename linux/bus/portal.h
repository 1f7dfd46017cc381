// The desktop portal, which says in a signal what becomes of a request.
#ifndef TAV_LINUX_BUS_PORTAL_H
#define TAV_LINUX_BUS_PORTAL_H

#include <functional>
#include <string>

#include "linux/bus/connection.h"

namespace tavlinux {

inline constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
inline constexpr char kPortalPath[] = "/org/freedesktop/portal/desktop";
inline constexpr char kPortalRequest[] = "org.freedesktop.portal.Request";

enum PortalCode : guint32 { kGranted = 0, kCancelled = 1 };

// Receives the response to one request while it lives. It is made before the request is sent, as
// the response can come before the method's answer.
class PortalResponse {
public:
    PortalResponse(GDBusConnection* connection, const std::function<void(guint32 code)>& receiver);

    // Options for the request, by which the portal knows where to respond.
    GVariantBuilder options() const;

private:
    std::string m_token;
    Subscription m_signal;
};

}  // namespace tavlinux

#endif

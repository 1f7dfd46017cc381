// Position from the desktop portal, which also works for an application in a sandbox.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "linux/bus/portal.h"
#include "linux/bus/subscription.h"
#include "linux/services/position.h"

namespace tavlinux {

// A session with the portal, which asks the user for permission. It ends with the object.
class LocationPortal {
public:
    explicit LocationPortal(PositionListener listener);
    ~LocationPortal();
    LocationPortal(const LocationPortal&) = delete;
    LocationPortal& operator=(const LocationPortal&) = delete;

private:
    void ask(const char* method, GVariant* arguments, const std::function<void()>& next);
    void start();
    void takeResponse(guint32 code);
    void takeUpdate(GVariant* update);
    void fail(GDBusError code, const char* text);

    const PositionListener m_listener;
    const std::shared_ptr<bool> m_life = std::make_shared<bool>();  // gone when the object is
    const std::string m_token;
    std::string m_session;
    std::unique_ptr<Subscription> m_owner;
    std::unique_ptr<PortalResponse> m_response;
    std::unique_ptr<Subscription> m_updates;
};

}  // namespace tavlinux

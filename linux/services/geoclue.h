// Position, heading and speed from GeoClue.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "linux/bus/connection.h"
#include "linux/bus/subscription.h"
#include "linux/services/position.h"

namespace tavlinux {

inline constexpr char kGeoClue[] = "org.freedesktop.GeoClue2";

// A client of GeoClue while the object exists. When GeoClue vanishes, it is used again once it is
// back.
class GeoClue {
public:
    // Where GeoClue is not installed, `onNobody` is called once, and nothing after it.
    GeoClue(PositionListener listener, std::function<void()> onNobody);
    ~GeoClue();
    GeoClue(const GeoClue&) = delete;
    GeoClue& operator=(const GeoClue&) = delete;

private:
    bool start();
    void takeClient(GVariant* result, const GError* problem);
    void useClient(const char* path);
    void setProperty(const char* name, GVariant* value);
    void takeStart(GVariant* result, const GError* problem);
    void failStart(const GError* problem);
    void readLocation(GVariant* update);
    void takeLocation(GVariant* result, const GError* problem);
    void onOwnerChanged(bool hasOwner);
    void giveUp();
    void forgetClient();

    Method ofClient(const char* interface, const char* name) const;
    Result whileSessionLasts(void (GeoClue::*take)(GVariant*, const GError*));

    const PositionListener m_listener;
    const std::function<void()> m_onNobody;
    std::shared_ptr<bool> m_session;  // lasts until the next start or the service's end
    bool m_isStarting = false;
    bool m_hasWorked = false;  // since the last start
    bool m_isAwaited = false;  // the service was there and has gone
    std::string m_client;      // its path
    std::unique_ptr<Subscription> m_updates;
    std::unique_ptr<Subscription> m_owner;
};

}  // namespace tavlinux

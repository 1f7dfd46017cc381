#include "linux/host/inhibitions.h"

#include <string>

#include "linux/application/application.h"
#include "linux/bus/connection.h"

namespace tavlinux {
namespace {

constexpr char kReason[] = "The application asked for it";
constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kPortalPath[] = "/org/freedesktop/portal/desktop";
constexpr char kScreenSaver[] = "org.freedesktop.ScreenSaver";
constexpr char kScreenSaverPath[] = "/org/freedesktop/ScreenSaver";
constexpr char kNotifications[] = "org.freedesktop.Notifications";
constexpr char kNotificationsPath[] = "/org/freedesktop/Notifications";
constexpr guint32 kIdle = 8;

// The portal's handle, or the screen saver's cookie.
Variant g_idlePortal;
Variant g_idleScreenSaver;
Variant g_notifications;

Variant inhibitByPortal() {
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&options, "{sv}", "reason", g_variant_new_string(kReason));
    return callBriefly(
        {Bus::Session, kPortal, kPortalPath, "org.freedesktop.portal.Inhibit", "Inhibit"},
        g_variant_new("(sua{sv})", "", kIdle, &options), "(o)");
}

Variant inhibitScreenSaver() {
    return callBriefly({Bus::Session, kScreenSaver, kScreenSaverPath, kScreenSaver, "Inhibit"},
                       g_variant_new("(ss)", applicationId().c_str(), kReason), "(u)");
}

void closePortalRequest() {
    const char* handle = nullptr;
    g_variant_get(g_idlePortal.get(), "(&o)", &handle);
    call({Bus::Session, kPortal, handle, "org.freedesktop.portal.Request", "Close"}, nullptr,
         nullptr);
    g_idlePortal.reset();
}

}  // namespace

bool enableScreenTimeout(bool enable) {
    if (!enable) {
        if (!g_idlePortal && !g_idleScreenSaver) {
            g_idlePortal = inhibitByPortal();
        }
        if (!g_idlePortal && !g_idleScreenSaver) {
            g_idleScreenSaver = inhibitScreenSaver();
        }
        return g_idlePortal || g_idleScreenSaver;
    }
    if (g_idlePortal) {
        closePortalRequest();
    }
    if (g_idleScreenSaver) {
        call({Bus::Session, kScreenSaver, kScreenSaverPath, kScreenSaver, "UnInhibit"},
             g_idleScreenSaver.get(), nullptr);
        g_idleScreenSaver.reset();
    }
    return true;
}

bool enableNotifications(bool enable) {
    if (!enable && !g_notifications) {
        g_notifications = callBriefly(
            {Bus::Session, kNotifications, kNotificationsPath, kNotifications, "Inhibit"},
            g_variant_new("(ssa{sv})", applicationId().c_str(), kReason, nullptr), "(u)");
        return g_notifications != nullptr;
    }
    if (enable && g_notifications) {
        call({Bus::Session, kNotifications, kNotificationsPath, kNotifications, "UnInhibit"},
             g_notifications.get(), nullptr);
        g_notifications.reset();
    }
    return true;
}

}  // namespace tavlinux

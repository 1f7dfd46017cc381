#include "linux/host/desktop.h"

#include <optional>

#include "linux/application/application.h"
#include "linux/bus/connection.h"
#include "linux/bus/portal.h"
#include "linux/bus/pump.h"

namespace tavlinux {
namespace {

constexpr char kReason[] = "The application asked for it";
constexpr char kPortalInhibit[] = "org.freedesktop.portal.Inhibit";
constexpr char kScreenSaver[] = "org.freedesktop.ScreenSaver";
constexpr char kScreenSaverPath[] = "/org/freedesktop/ScreenSaver";
constexpr char kNotifications[] = "org.freedesktop.Notifications";
constexpr char kNotificationsPath[] = "/org/freedesktop/Notifications";
constexpr guint32 kIdle = 8;

// The portal's handle, or the screen saver's cookie.
Variant g_idlePortal;
Variant g_idleScreenSaver;
Variant g_notifications;

void closePortalRequest(GVariant* answer) {
    const char* handle = nullptr;
    g_variant_get(answer, "(&o)", &handle);
    call({Bus::Session, kPortal, handle, kPortalRequest, "Close"}, nullptr, nullptr);
}

void unInhibitScreenSaver(GVariant* cookie) {
    call({Bus::Session, kScreenSaver, kScreenSaverPath, kScreenSaver, "UnInhibit"}, cookie,
         nullptr);
}

void unInhibitNotifications(GVariant* cookie) {
    call({Bus::Session, kNotifications, kNotificationsPath, kNotifications, "UnInhibit"}, cookie,
         nullptr);
}

void release(Variant* handle, void (*end)(GVariant*)) {
    if (*handle) {
        end(handle->get());
        handle->reset();
    }
}

// The portal's response says whether anything is inhibited.
Variant inhibitByPortal() {
    std::optional<guint32> code;
    const PortalResponse response([&code](guint32 received) { code = received; });
    GVariantBuilder options = response.options();
    g_variant_builder_add(&options, "{sv}", "reason", g_variant_new_string(kReason));
    Variant answer =
        callBriefly({Bus::Session, kPortal, kPortalPath, kPortalInhibit, "Inhibit"},
                    g_variant_new("(sua{sv})", "", kIdle, &options), "(o)", closePortalRequest);
    if (!answer) {
        return nullptr;
    }
    serveUntil([&code] { return code.has_value(); });
    if (code != PortalResponse::Granted) {
        closePortalRequest(answer.get());
        return nullptr;
    }
    return answer;
}

Variant inhibitScreenSaver() {
    return callBriefly({Bus::Session, kScreenSaver, kScreenSaverPath, kScreenSaver, "Inhibit"},
                       g_variant_new("(ss)", applicationId().c_str(), kReason), "(u)",
                       unInhibitScreenSaver);
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
    release(&g_idlePortal, closePortalRequest);
    release(&g_idleScreenSaver, unInhibitScreenSaver);
    return true;
}

bool enableNotifications(bool enable) {
    if (!enable && !g_notifications) {
        g_notifications = callBriefly(
            {Bus::Session, kNotifications, kNotificationsPath, kNotifications, "Inhibit"},
            g_variant_new("(ssa{sv})", applicationId().c_str(), kReason, nullptr), "(u)",
            unInhibitNotifications);
        return g_notifications != nullptr;
    }
    if (enable) {
        release(&g_notifications, unInhibitNotifications);
    }
    return true;
}

bool showKeyboard(bool visible) {
    constexpr char service[] = "sm.puri.OSK0";
    const Method setVisible{Bus::Session, service, "/sm/puri/OSK0", service, "SetVisible"};
    return callBriefly(setVisible, g_variant_new("(b)", visible ? TRUE : FALSE), "()") != nullptr;
}

}  // namespace tavlinux

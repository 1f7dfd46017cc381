#include "linux/services/location_portal.h"

#include <utility>

#include "linux/bus/connection.h"

namespace tavlinux {
namespace {

constexpr char kPortalLocation[] = "org.freedesktop.portal.Location";

}  // namespace

LocationPortal::LocationPortal(PositionListener listener)
    : m_listener(std::move(listener)),
      m_token(newPortalToken()),
      m_session(portalObject("session", m_token)) {
    m_owner = watchOwner(Bus::Session, kPortal, [this](bool isThere) {
        if (!isThere) {
            fail(G_DBUS_ERROR_FAILED, "the desktop portal has ended");
        }
    });
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&options, "{sv}", "session_handle_token",
                          g_variant_new_string(m_token.c_str()));
    ask("CreateSession", g_variant_new("(a{sv})", &options), [this] { start(); });
}

LocationPortal::~LocationPortal() {
    call({Bus::Session, kPortal, m_session, "org.freedesktop.portal.Session", "Close"}, nullptr,
         nullptr);
}

void LocationPortal::ask(const char* method, GVariant* arguments,
                         const std::function<void()>& next) {
    const bool isAsked = call(
        {Bus::Session, kPortal, kPortalPath, kPortalLocation, method}, arguments,
        [this, next, life = std::weak_ptr(m_life)](const GVariant* result, const GError* problem) {
            if (life.expired()) {
                return;
            }
            if (result == nullptr) {
                m_listener.onProblem(problem);
            } else {
                next();
            }
        });
    if (!isAsked) {
        fail(G_DBUS_ERROR_DISCONNECTED, "there is no session bus");
    }
}

void LocationPortal::start() {
    m_updates = std::make_unique<Subscription>(
        Subscription::Match{Bus::Session, kPortal, kPortalPath, kPortalLocation, "LocationUpdated"},
        [this](const char*, GVariant* update) { takeUpdate(update); });
    m_response = std::make_unique<PortalResponse>([this](guint32 code) { takeResponse(code); });
    GVariantBuilder options = m_response->options();
    ask("Start", g_variant_new("(osa{sv})", m_session.c_str(), "", &options), [] {});
}

void LocationPortal::takeResponse(guint32 code) {
    if (code == PortalResponse::Cancelled) {
        fail(G_DBUS_ERROR_ACCESS_DENIED, "the user does not allow it");
    } else if (code != PortalResponse::Granted) {
        fail(G_DBUS_ERROR_FAILED, "the desktop portal could not start it");
    }
}

void LocationPortal::takeUpdate(GVariant* update) {
    const char* session = nullptr;
    if (!isOfType(update, "(oa{sv})")) {
        return;
    }
    g_variant_get_child(update, 0, "&o", &session);
    if (session == m_session) {
        m_listener.onPosition(positionFrom(childOf(update, 1).get()));
    }
}

void LocationPortal::fail(GDBusError code, const char* text) {
    g_autoptr(GError) problem = g_error_new_literal(G_DBUS_ERROR, code, text);
    m_listener.onProblem(problem);
}

}  // namespace tavlinux

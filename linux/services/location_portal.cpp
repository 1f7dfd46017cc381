#include "linux/services/location_portal.h"

#include <algorithm>
#include <utility>

#include "linux/bus/connection.h"

namespace tavlinux {
namespace {

constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kPath[] = "/org/freedesktop/portal/desktop";
constexpr char kLocation[] = "org.freedesktop.portal.Location";
constexpr guint32 kGranted = 0;
constexpr guint32 kCancelledByUser = 1;

std::string nextToken() {
    static int count = 0;
    return "tav_location_" + std::to_string(++count);
}

// The portal names its objects by who asks and the token that it is given.
std::string objectOf(const char* kind, const std::string& token) {
    GDBusConnection* connection = connectionTo(Bus::Session);
    std::string sender =
        connection != nullptr ? g_dbus_connection_get_unique_name(connection) + 1 : "nobody";
    std::replace(sender.begin(), sender.end(), '.', '_');
    return std::string(kPath) + "/" + kind + "/" + sender + "/" + token;
}

GVariant* optionsWith(const char* name, const std::string& token) {
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&options, "{sv}", name, g_variant_new_string(token.c_str()));
    return g_variant_builder_end(&options);
}

}  // namespace

LocationPortal::LocationPortal(OnLocation onLocation, OnProblem onProblem)
    : m_onLocation(std::move(onLocation)),
      m_onProblem(std::move(onProblem)),
      m_token(nextToken()),
      m_session(objectOf("session", m_token)) {
    m_owner = watchOwner(Bus::Session, kPortal, [this](bool isThere) {
        if (!isThere) {
            fail(G_DBUS_ERROR_FAILED, "the desktop portal has ended");
        }
    });
    GVariant* options = optionsWith("session_handle_token", m_token);
    ask("CreateSession", g_variant_new("(@a{sv})", options), [this] { start(); });
}

LocationPortal::~LocationPortal() {
    call({Bus::Session, kPortal, m_session, "org.freedesktop.portal.Session", "Close"}, nullptr,
         nullptr);
}

void LocationPortal::ask(const char* method, GVariant* arguments,
                         const std::function<void()>& next) {
    const bool isAsked = call(
        {Bus::Session, kPortal, kPath, kLocation, method}, arguments,
        [this, next, life = std::weak_ptr(m_life)](const GVariant* result, const GError* problem) {
            if (life.expired()) {
                return;
            }
            if (result == nullptr) {
                m_onProblem(problem);
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
        Subscription::Match{Bus::Session, kPortal, kPath, kLocation, "LocationUpdated"},
        [this](const char*, GVariant* update) { takeUpdate(update); });
    m_response = std::make_unique<Subscription>(
        Subscription::Match{Bus::Session, kPortal, objectOf("request", m_token),
                            "org.freedesktop.portal.Request", "Response"},
        [this](const char*, GVariant* response) { takeResponse(response); });
    GVariant* options = optionsWith("handle_token", m_token);
    ask("Start", g_variant_new("(os@a{sv})", m_session.c_str(), "", options), [] {});
}

void LocationPortal::takeResponse(GVariant* response) {
    guint32 code = kGranted;
    if (g_variant_is_of_type(response, G_VARIANT_TYPE("(ua{sv})")) != FALSE) {
        g_variant_get_child(response, 0, "u", &code);
    }
    if (code == kCancelledByUser) {
        fail(G_DBUS_ERROR_ACCESS_DENIED, "the user does not allow it");
    } else if (code != kGranted) {
        fail(G_DBUS_ERROR_FAILED, "the desktop portal could not start it");
    }
}

void LocationPortal::takeUpdate(GVariant* update) {
    const char* session = nullptr;
    if (g_variant_is_of_type(update, G_VARIANT_TYPE("(oa{sv})")) == FALSE) {
        return;
    }
    g_variant_get_child(update, 0, "&o", &session);
    if (session == m_session) {
        m_onLocation(Variant(g_variant_get_child_value(update, 1)).get());
    }
}

void LocationPortal::fail(GDBusError code, const char* text) {
    GError* problem = g_error_new_literal(G_DBUS_ERROR, code, text);
    m_onProblem(problem);
    g_error_free(problem);
}

}  // namespace tavlinux

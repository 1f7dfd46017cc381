#include "linux/bus/portal.h"

#include <algorithm>

namespace tavlinux {
namespace {

std::string newToken() {
    static unsigned count = 0;
    return "libtav" + std::to_string(++count);
}

// Where the portal responds to the request with this token.
std::string requestPath(GDBusConnection* connection, const std::string& token) {
    std::string sender = g_dbus_connection_get_unique_name(connection) + 1;
    std::replace(sender.begin(), sender.end(), '.', '_');
    return std::string(kPortalPath) + "/request/" + sender + "/" + token;
}

}  // namespace

PortalResponse::PortalResponse(GDBusConnection* connection,
                               const std::function<void(guint32 code)>& receiver)
    : m_token(newToken()),
      m_signal(connection, kPortal, requestPath(connection, m_token).c_str(), kPortalRequest,
               "Response", nullptr, [receiver](const char*, GVariant* arguments) {
                   if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(ua{sv})")) != FALSE) {
                       guint32 code = 0;
                       g_variant_get_child(arguments, 0, "u", &code);
                       receiver(code);
                   }
               }) {
}

GVariantBuilder PortalResponse::options() const {
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(m_token.c_str()));
    return options;
}

}  // namespace tavlinux

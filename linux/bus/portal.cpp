#include "linux/bus/portal.h"

#include <algorithm>

#include "linux/bus/connection.h"

namespace tavlinux {

std::string newPortalToken() {
    static unsigned count = 0;
    return "libtav" + std::to_string(++count);
}

std::string portalObject(const char* kind, const std::string& token) {
    GDBusConnection* connection = connectionTo(Bus::Session);
    std::string sender =
        connection != nullptr ? g_dbus_connection_get_unique_name(connection) + 1 : "nobody";
    std::replace(sender.begin(), sender.end(), '.', '_');
    return std::string(kPortalPath) + "/" + kind + "/" + sender + "/" + token;
}

PortalResponse::PortalResponse(const std::function<void(guint32 code)>& receiver)
    : m_token(newPortalToken()),
      m_signal(
          {Bus::Session, kPortal, portalObject("request", m_token), kPortalRequest, "Response"},
          [receiver](const char*, GVariant* arguments) {
              if (isOfType(arguments, "(ua{sv})")) {
                  guint32 code = Granted;
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

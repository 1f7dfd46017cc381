#include "linux/services/firewall.h"

#include <string_view>

#include "linux/bus/connection.h"
#include "linux/services/members.h"

namespace tavlinux {
namespace {

constexpr char kService[] = "org.fedoraproject.FirewallD1";
constexpr char kPath[] = "/org/fedoraproject/FirewallD1";
constexpr char kZones[] = "org.fedoraproject.FirewallD1.zone";
constexpr int64_t kHighestPort = 65535;

// Whether the rule was as wanted before.
bool isAlreadySo(const GError* problem) {
    const std::string_view text = problem->message;
    return text.find("ALREADY_ENABLED") != std::string_view::npos ||
           text.find("NOT_ENABLED") != std::string_view::npos;
}

}  // namespace

Dispatched setFirewallRule(const simdjson::dom::object& request, const Answer& answer) {
    const std::string named = textMember(request, "protocol");
    const int64_t port = integerMember(request, "port");
    const char* protocol = named == "TCP" ? "tcp" : named == "UDP" ? "udp" : nullptr;
    if (protocol == nullptr || port < 1 || port > kHighestPort) {
        answer(failure("a rule needs the protocol TCP or UDP and a port up to 65535"));
        return Stop();
    }
    const bool enable = flagMember(request, "isEnabled");
    const std::string text = std::to_string(port);
    GVariant* arguments = enable ? g_variant_new("(sssi)", "", text.c_str(), protocol, 0)
                                 : g_variant_new("(sss)", "", text.c_str(), protocol);
    const bool isDispatched =
        call({Bus::System, kService, kPath, kZones, enable ? "addPort" : "removePort"}, arguments,
             [answer](const GVariant* result, const GError* problem) {
                 answer(result != nullptr || isAlreadySo(problem) ? kDone : failure(problem));
             });
    return isDispatched ? Dispatched(Stop()) : std::nullopt;
}

}  // namespace tavlinux

// firewalld's rules at run time.
#include <string_view>

#include "base/json/text.h"
#include "linux/bus/connection.h"
#include "linux/services/services.h"

namespace tavlinux {
namespace {

constexpr char kFirewall[] = "org.fedoraproject.FirewallD1";
constexpr char kFirewallPath[] = "/org/fedoraproject/FirewallD1";
constexpr char kZones[] = "org.fedoraproject.FirewallD1.zone";
constexpr int64_t kHighestPort = 65535;

// Whether the rule was already as requested.
bool isAlreadySo(const GError* problem) {
    const std::string_view text = problem->message;
    return text.find("ALREADY_ENABLED") != std::string_view::npos ||
           text.find("NOT_ENABLED") != std::string_view::npos;
}

}  // namespace

Dispatched setFirewallRule(const simdjson::dom::object& request, const Answer& answer) {
    const std::string named = base::textMember(request, "protocol");
    const int64_t port = base::memberOf<int64_t>(request, "port").value_or(0);
    const char* protocol = named == "TCP" ? "tcp" : named == "UDP" ? "udp" : nullptr;
    if (protocol == nullptr || port < 1 || port > kHighestPort) {
        answer(failure("a rule needs the protocol TCP or UDP and a port up to 65535"));
        return Stop();
    }
    const bool enable = base::flagMember(request, "isEnabled");
    const std::string text = std::to_string(port);
    GVariant* arguments = enable ? g_variant_new("(sssi)", "", text.c_str(), protocol, 0)
                                 : g_variant_new("(sss)", "", text.c_str(), protocol);
    const bool isDispatched =
        call({Bus::System, kFirewall, kFirewallPath, kZones, enable ? "addPort" : "removePort"},
             arguments, [answer](const GVariant* result, const GError* problem) {
                 answer(result != nullptr || isAlreadySo(problem) ? kDone : failure(problem));
             });
    return isDispatched ? Dispatched(Stop()) : std::nullopt;
}

}  // namespace tavlinux

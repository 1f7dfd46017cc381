// The browser and the e-mail application.
#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/json/text.h"
#include "linux/bus/connection.h"
#include "linux/bus/portal.h"
#include "linux/services/services.h"

namespace dom = simdjson::dom;

namespace tavlinux {
namespace {

constexpr char kBrowser[] = "com.vire.app.browser";
constexpr char kEmail[] = "com.vire.app.email";

struct Message {
    std::string subject;
    std::string body;
    std::vector<std::string> recipients;
};

// Whether a port follows the target's first colon, as in "localhost:8080/x". Then a host stands
// before the colon, and not a scheme.
bool hasPort(const std::string& target) {
    const size_t start = target.find(':') + 1;
    const size_t end = std::min(target.find_first_not_of("0123456789", start), target.size());
    return start > 0 && end > start && (end == target.size() || std::strchr("/?#", target[end]));
}

// A page's address, by default with the scheme http. Empty for any other scheme, because the
// browser must not open the user's files or start programs.
std::string pageAddress(const std::string& target) {
    // In lower case.
    const char* scheme = hasPort(target) ? nullptr : g_uri_peek_scheme(target.c_str());
    const std::string_view name = scheme != nullptr ? scheme : "";
    std::string address = name.empty() ? "http://" + target : target;
    const auto flags = static_cast<GUriFlags>(G_URI_FLAGS_PARSE_RELAXED | G_URI_FLAGS_ENCODED);
    g_autofree char* host = nullptr;
    const bool isValid =
        g_uri_split_network(address.c_str(), flags, nullptr, &host, nullptr, nullptr) != FALSE;
    const bool hasHost = isValid && host != nullptr && *host != '\0';
    const bool isOfTheWeb = name.empty() || name == "http" || name == "https";
    return isOfTheWeb && hasHost ? address : "";
}

std::string escaped(const std::string& text) {
    g_autofree char* result = g_uri_escape_string(text.c_str(), nullptr, FALSE);
    return result != nullptr ? result : "";
}

std::string mailAddress(const Message& message) {
    std::string address = "mailto:";
    for (const std::string& recipient : message.recipients) {
        address += (address.back() == ':' ? "" : ",") + escaped(recipient);
    }
    return address + "?subject=" + escaped(message.subject) + "&body=" + escaped(message.body);
}

Message readMessage(const dom::object& parameters) {
    Message message{
        base::textMember(parameters, "summary"), base::textMember(parameters, "text"), {}};
    dom::array recipients;
    if (parameters["recipients"].get(recipients) != simdjson::SUCCESS) {
        return message;
    }
    for (const dom::element recipient : recipients) {
        std::string_view value;
        if (recipient["value"].get(value) == simdjson::SUCCESS) {
            message.recipients.emplace_back(value);
        }
    }
    return message;
}

// xdg-open gets the address as one argument, which starts with a scheme and so cannot be an option.
// Libraries that are preloaded into the application are not preloaded into it.
bool runOpener(const std::string& address) {
    const char* arguments[] = {"xdg-open", address.c_str(), nullptr};
    const auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL |
                                                G_SPAWN_STDERR_TO_DEV_NULL);
    g_auto(GStrv) environment = g_environ_unsetenv(g_get_environ(), "LD_PRELOAD");
    return g_spawn_async(nullptr, const_cast<char**>(arguments), environment, flags, nullptr,
                         nullptr, nullptr, nullptr) != FALSE;
}

struct Opening {
    std::string address;
    Answer answer;
    std::unique_ptr<PortalResponse> response;
};

using Arguments = std::function<GVariant*(GVariantBuilder* options)>;

Dispatched openByPortal(const char* interface, const char* method, const Arguments& arguments,
                        const std::string& address, const Answer& answer) {
    const auto opening = std::make_shared<Opening>(Opening{address, answer, nullptr});
    if (connectionTo(Bus::Session) == nullptr) {
        if (!runOpener(address)) {
            return std::nullopt;
        }
        answer(kDone);
        return Stop();
    }
    opening->response = std::make_unique<PortalResponse>([opening](guint32 code) {
        opening->response.reset();
        if (code == PortalResponse::Granted) {
            opening->answer(kDone);
        } else if (code == PortalResponse::Cancelled) {
            opening->answer(failure("the user does not want it opened"));
        } else {
            const bool isOpen = runOpener(opening->address);
            opening->answer(isOpen ? kDone : failure("nothing opens " + opening->address));
        }
    });
    GVariantBuilder options = opening->response->options();
    call({Bus::Session, kPortal, kPortalPath, interface, method}, arguments(&options),
         [opening](const GVariant* result, const GError* problem) {
             if (result == nullptr) {
                 opening->response.reset();
                 opening->answer(runOpener(opening->address) ? kDone : failure(problem));
             }
         });
    return Stop();
}

Dispatched openPage(const dom::object& parameters, const Answer& answer) {
    const std::string address = pageAddress(base::textMember(parameters, "target"));
    if (address.empty()) {
        answer(failure("the target is no address of a page"));
        return Stop();
    }
    const auto arguments = [&address](GVariantBuilder* options) {
        return g_variant_new("(ssa{sv})", "", address.c_str(), options);
    };
    return openByPortal("org.freedesktop.portal.OpenURI", "OpenURI", arguments, address, answer);
}

Dispatched writeMail(const dom::object& parameters, const Answer& answer) {
    const Message message = readMessage(parameters);
    const auto arguments = [&message](GVariantBuilder* options) {
        g_variant_builder_add(options, "{sv}", "subject",
                              g_variant_new_string(message.subject.c_str()));
        g_variant_builder_add(options, "{sv}", "body", g_variant_new_string(message.body.c_str()));
        if (!message.recipients.empty()) {
            GVariantBuilder addresses;
            g_variant_builder_init(&addresses, G_VARIANT_TYPE_STRING_ARRAY);
            for (const std::string& recipient : message.recipients) {
                g_variant_builder_add(&addresses, "s", recipient.c_str());
            }
            g_variant_builder_add(options, "{sv}", "addresses", g_variant_builder_end(&addresses));
        }
        return g_variant_new("(sa{sv})", "", options);
    };
    return openByPortal("org.freedesktop.portal.Email", "ComposeEmail", arguments,
                        mailAddress(message), answer);
}

}  // namespace

Dispatched launchApplication(const dom::object& request, const Answer& answer) {
    const std::string id = base::textMember(request, "id");
    dom::object parameters;
    const bool hasParameters = request["params"].get(parameters) == simdjson::SUCCESS;
    if (hasParameters && id == kBrowser) {
        return openPage(parameters, answer);
    }
    if (hasParameters && id == kEmail) {
        return writeMail(parameters, answer);
    }
    answer(failure("no such application: " + id));
    return Stop();
}

}  // namespace tavlinux

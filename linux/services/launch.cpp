#include "linux/services/launch.h"

#include <string>
#include <vector>

#include "linux/bus/connection.h"
#include "linux/services/members.h"

namespace dom = simdjson::dom;

namespace tavlinux {
namespace {

constexpr char kBrowser[] = "com.vire.app.browser";
constexpr char kEmail[] = "com.vire.app.email";
constexpr char kService[] = "org.freedesktop.portal.Desktop";
constexpr char kPath[] = "/org/freedesktop/portal/desktop";

struct Message {
    std::string subject;
    std::string body;
    std::vector<std::string> recipients;
};

// A page's address; one without a scheme is of the web. Empty for what is none: a browser is not
// to be a way to files and programs of the user.
std::string pageAddress(const std::string& target) {
    char* scheme = g_uri_parse_scheme(target.c_str());
    const std::string name = scheme != nullptr ? scheme : "";
    g_free(scheme);
    std::string address = name.empty() ? "http://" + target : target;
    const bool isOfTheWeb = name.empty() || name == "http" || name == "https";
    const auto flags = static_cast<GUriFlags>(G_URI_FLAGS_PARSE_RELAXED | G_URI_FLAGS_ENCODED);
    const bool isValid = g_uri_is_valid(address.c_str(), flags, nullptr) != FALSE;
    return isOfTheWeb && isValid ? address : "";
}

std::string escaped(const std::string& text) {
    char* result = g_uri_escape_string(text.c_str(), nullptr, FALSE);
    std::string copy = result != nullptr ? result : "";
    g_free(result);
    return copy;
}

std::string mailAddress(const Message& message) {
    std::string address = "mailto:";
    for (const std::string& recipient : message.recipients) {
        address += (address.back() == ':' ? "" : ",") + escaped(recipient);
    }
    return address + "?subject=" + escaped(message.subject) + "&body=" + escaped(message.body);
}

Message readMessage(const dom::object& parameters) {
    Message message{textMember(parameters, "summary"), textMember(parameters, "text"), {}};
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

// The program gets the address as one argument, which its scheme keeps from being an option. What
// is preloaded into the application is not for it.
bool openWithProgram(const std::string& address) {
    const char* arguments[] = {"xdg-open", address.c_str(), nullptr};
    const auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL |
                                                G_SPAWN_STDERR_TO_DEV_NULL);
    char** environment = g_environ_unsetenv(g_get_environ(), "LD_PRELOAD");
    const bool isStarted = g_spawn_async(nullptr, const_cast<char**>(arguments), environment, flags,
                                         nullptr, nullptr, nullptr, nullptr) != FALSE;
    g_strfreev(environment);
    return isStarted;
}

Dispatched open(const char* interface, const char* method, GVariant* arguments,
                const std::string& address, const Answer& answer) {
    const bool isDispatched =
        call({Bus::Session, kService, kPath, interface, method}, arguments,
             [address, answer](const GVariant* result, const GError* problem) {
                 const bool isOpen = result != nullptr || openWithProgram(address);
                 answer(isOpen ? kDone : failure(problem));
             });
    if (isDispatched) {
        return Stop();
    }
    if (!openWithProgram(address)) {
        return std::nullopt;
    }
    answer(kDone);
    return Stop();
}

Dispatched openPage(const dom::object& parameters, const Answer& answer) {
    const std::string address = pageAddress(textMember(parameters, "target"));
    if (address.empty()) {
        answer(failure("the target is no address of a page"));
        return Stop();
    }
    GVariant* arguments = g_variant_new("(ssa{sv})", "", address.c_str(), nullptr);
    return open("org.freedesktop.portal.OpenURI", "OpenURI", arguments, address, answer);
}

Dispatched writeMail(const dom::object& parameters, const Answer& answer) {
    const Message message = readMessage(parameters);
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&options, "{sv}", "subject",
                          g_variant_new_string(message.subject.c_str()));
    g_variant_builder_add(&options, "{sv}", "body", g_variant_new_string(message.body.c_str()));
    if (!message.recipients.empty()) {
        GVariantBuilder addresses;
        g_variant_builder_init(&addresses, G_VARIANT_TYPE_STRING_ARRAY);
        for (const std::string& recipient : message.recipients) {
            g_variant_builder_add(&addresses, "s", recipient.c_str());
        }
        g_variant_builder_add(&options, "{sv}", "addresses", g_variant_builder_end(&addresses));
    }
    return open("org.freedesktop.portal.Email", "ComposeEmail",
                g_variant_new("(sa{sv})", "", &options), mailAddress(message), answer);
}

}  // namespace

Dispatched launchApplication(const dom::object& request, const Answer& answer) {
    const std::string id = textMember(request, "id");
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

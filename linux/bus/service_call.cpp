#include "linux/bus/service_call.h"

#include <simdjson.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/json/text.h"
#include "linux/bus/dbus_to_json.h"
#include "linux/bus/introspection.h"
#include "linux/bus/json_to_dbus.h"
#include "platform/htracker.h"

namespace tavlinux {
namespace {

constexpr std::string_view kSchemeEnd = "://";
// Every object has these, but not every service lists them.
constexpr char kStandardInterfaces[] =
    "<node><interface name='org.freedesktop.DBus.Properties'>"
    "<method name='Get'><arg type='s' name='interface_name' direction='in'/>"
    "<arg type='s' name='property_name' direction='in'/>"
    "<arg type='v' name='value' direction='out'/></method>"
    "<method name='GetAll'><arg type='s' name='interface_name' direction='in'/>"
    "<arg type='a{sv}' name='properties' direction='out'/></method>"
    "<method name='Set'><arg type='s' name='interface_name' direction='in'/>"
    "<arg type='s' name='property_name' direction='in'/>"
    "<arg type='v' name='value' direction='in'/></method>"
    "<signal name='PropertiesChanged'><arg type='s' name='interface_name'/>"
    "<arg type='a{sv}' name='changed_properties'/>"
    "<arg type='as' name='invalidated_properties'/></signal>"
    "</interface></node>";

constexpr char kBadNumber[] = "the payload has a number that is malformed or too large";
constexpr char kFileDescriptors[] = "the reply holds file descriptors";

struct Request {
    std::string service;
    std::string path;
    std::string interface;  // empty: any that has the member
    std::string member;
    std::string payload;
    bool isSubscription = false;
    Answer answer;

    // The subscription's resources. The stop function shares the request and releases them.
    std::unique_ptr<Subscription> signals;
    const std::unique_ptr<GCancellable, decltype(&g_object_unref)> stopped{g_cancellable_new(),
                                                                           g_object_unref};

    bool isStopped() const { return g_cancellable_is_cancelled(stopped.get()) != FALSE; }

    void reply(const std::string& text) const {
        if (answer && !isStopped()) {
            answer(text);
        }
    }
};

// Returns an empty string, or what is wrong with the URI.
std::string readUri(const std::string& uri, Request* request) {
    std::string unknown = "no such service: " + uri;
    const size_t start = uri.find(kSchemeEnd);
    const size_t nameStart = start + kSchemeEnd.size();
    const size_t firstSlash = start != std::string::npos ? uri.find('/', nameStart) : start;
    if (firstSlash == std::string::npos) {
        return unknown;
    }
    const size_t lastSlash = uri.rfind('/');
    request->service = uri.substr(nameStart, firstSlash - nameStart);
    request->member = uri.substr(lastSlash + 1);
    request->path = uri.substr(firstSlash, lastSlash - firstSlash);
    if (request->path.empty()) {
        request->path = "/" + request->service;
        std::replace(request->path.begin(), request->path.end(), '.', '/');
    }
    const size_t dot = request->member.rfind('.');
    if (dot != std::string::npos) {
        request->interface = request->member.substr(0, dot);
        request->member.erase(0, dot + 1);
    }
    if (g_dbus_is_name(request->service.c_str()) == FALSE ||
        g_dbus_is_member_name(request->member.c_str()) == FALSE) {
        return unknown;
    }
    return g_variant_is_object_path(request->path.c_str()) != FALSE
               ? ""
               : "no object path: " + request->path + "; give one: vire://SERVICE/PATH/METHOD";
}

bool hasMember(const Request& request, GDBusInterfaceInfo* interface) {
    return g_dbus_interface_info_lookup_method(interface, request.member.c_str()) != nullptr ||
           g_dbus_interface_info_lookup_signal(interface, request.member.c_str()) != nullptr;
}

// The named interface. Without a name, the service's own, else the first that has the member.
GDBusInterfaceInfo* findInterface(const Request& request, GDBusNodeInfo* node) {
    static GDBusNodeInfo* standard = g_dbus_node_info_new_for_xml(kStandardInterfaces, nullptr);
    const std::string& own = request.interface.empty() ? request.service : request.interface;
    for (GDBusNodeInfo* described : {standard, node}) {
        GDBusInterfaceInfo* found = g_dbus_node_info_lookup_interface(described, own.c_str());
        if (found != nullptr && hasMember(request, found)) {
            return found;
        }
    }
    if (!request.interface.empty()) {
        return nullptr;
    }
    for (GDBusInterfaceInfo** at = node->interfaces; at != nullptr && *at != nullptr; ++at) {
        if (hasMember(request, *at)) {
            return *at;
        }
    }
    return nullptr;
}

void replyWith(const Request& request, GVariant* values, GDBusArgInfo* const* names) {
    const std::optional<std::string> json = jsonFromResult(values, names);
    request.reply(json ? *json : failure(kFileDescriptors));
}

void subscribe(const std::shared_ptr<Request>& request,
               const std::shared_ptr<Description>& description, const char* interface,
               GDBusSignalInfo* signal) {
    request->signals = std::make_unique<Subscription>(
        Subscription::Match{description->bus, request->service, request->path, interface,
                            signal->name},
        [weak = std::weak_ptr(request), description, signal](const char*, GVariant* arguments) {
            if (const std::shared_ptr<Request> request = weak.lock()) {
                replyWith(*request, arguments, signal->args);
            }
        });
}

void invoke(const std::shared_ptr<Request>& request,
            const std::shared_ptr<Description>& description, const char* interface,
            GDBusMethodInfo* method) {
    // Reused, because creating a parser takes longer than parsing.
    static auto& parser = *new simdjson::dom::parser;
    simdjson::dom::element payload;
    const std::string_view text =
        request->payload.empty() ? std::string_view("{}") : std::string_view(request->payload);
    if (!base::parse(parser, text, false, &payload)) {
        const bool isNumber = parser.parse(text).error() == simdjson::NUMBER_ERROR;
        request->reply(failure(isNumber ? kBadNumber : "the payload is no JSON"));
        return;
    }
    std::string problem;
    const Variant arguments = argumentsFromJson(payload, method->in_args, &problem);
    if (!arguments) {
        request->reply(failure(request->member + ": " + problem));
        return;
    }
    Result result;
    if (request->answer) {
        result = [request, description, method](GVariant* values, const GError* error) {
            if (values != nullptr) {
                replyWith(*request, values, method->out_args);
                return;
            }
            if (g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_METHOD) != FALSE) {
                forgetDescription(request->service, request->path);
            }
            request->reply(failure(error));
        };
    }
    const Method target{description->bus, request->service, request->path, interface, method->name};
    if (!call(target, arguments.get(), std::move(result), request->stopped.get())) {
        request->reply(failure("the bus has gone"));
    }
}

void carryOut(const std::shared_ptr<Request>& request,
              const std::shared_ptr<Description>& description, const GError* problem) {
    if (request->isStopped()) {
        return;
    }
    if (!description) {
        const std::string nobody = "no such service: " + request->service;
        request->reply(isNobodyThere(problem) ? failure(nobody) : failure(problem));
        return;
    }
    GDBusInterfaceInfo* interface = findInterface(*request, description->node.get());
    if (interface == nullptr) {
        forgetDescription(request->service, request->path);
        request->reply(failure("no such method: " + request->member + " of " + request->service +
                               request->path));
        return;
    }
    const char* member = request->member.c_str();
    GDBusSignalInfo* signal = g_dbus_interface_info_lookup_signal(interface, member);
    GDBusMethodInfo* method = g_dbus_interface_info_lookup_method(interface, member);
    if (request->isSubscription && signal != nullptr) {
        subscribe(request, description, interface->name, signal);
    }
    if (method != nullptr) {
        invoke(request, description, interface->name, method);
    } else if (!request->isSubscription) {
        request->reply(failure(request->member + " is a signal: subscribe to it"));
    }
}

}  // namespace

std::string failure(const std::string& text) {
    HTracker_funcTrack("tav_e", "HKSCaller", "%s", text.c_str());
    return base::jsonObject("returnValue", false, "errorCode", -1, "errorText", text);
}

std::string failure(const GError* problem) {
    g_autofree char* name = g_dbus_error_get_remote_error(problem);
    g_autoptr(GError) plain = g_error_copy(problem);
    g_dbus_error_strip_remote_error(plain);
    const std::string prefix = name != nullptr ? std::string(name) + ": " : "";
    return failure(prefix + plain->message);
}

Dispatched callService(const std::string& uri, const std::string& payload, bool isSubscription,
                       Answer answer) {
    const auto request = std::make_shared<Request>();
    request->payload = payload;
    request->isSubscription = isSubscription;
    request->answer = std::move(answer);
    const std::string problem = readUri(uri, request.get());
    if (!problem.empty()) {
        request->reply(failure(problem));
        return Stop();
    }
    const bool isDispatched =
        describe(request->service, request->path,
                 [request](const std::shared_ptr<Description>& description, const GError* problem) {
                     carryOut(request, description, problem);
                 });
    if (!isDispatched) {
        return std::nullopt;
    }
    if (!request->answer) {
        return Stop();
    }
    return [request] {
        g_cancellable_cancel(request->stopped.get());
        request->signals.reset();
    };
}

}  // namespace tavlinux

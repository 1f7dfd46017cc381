// Introspection: the methods and signals that an object on a bus says it has.
#pragma once

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <string>

#include "linux/bus/connection.h"
#include "linux/bus/subscription.h"

namespace tavlinux {

struct Description {
    Bus bus = Bus::Session;
    std::unique_ptr<GDBusNodeInfo, decltype(&g_dbus_node_info_unref)> node{nullptr,
                                                                           g_dbus_node_info_unref};
};

// Receives the description, or null and the error.
using Described = std::function<void(const std::shared_ptr<Description>&, const GError*)>;

// Asks the service on the session bus, or on the system bus when nobody owns its name there. A
// description is cached until the service's name gets another owner. False when there is no bus.
bool describe(const std::string& service, const std::string& path, const Described& described);

// Whether a service has not answered yet.
bool isDescribing();

// Removes the description from the cache. To be called when the object does not match it.
void forgetDescription(const std::string& service, const std::string& path);

}  // namespace tavlinux

// What objects on the buses can do, in their own words.
#ifndef TAV_LINUX_BUS_INTROSPECTION_H
#define TAV_LINUX_BUS_INTROSPECTION_H

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <string>

#include "linux/bus/connection.h"
#include "linux/bus/subscription.h"

namespace tavlinux {

struct Description {
    Bus bus = Bus::Session;
    GDBusNodeInfo* node = nullptr;

    Description() = default;
    ~Description();
    Description(const Description&) = delete;
    Description& operator=(const Description&) = delete;
};

// Receives the description, or null and why there is none.
using Described = std::function<void(const std::shared_ptr<Description>&, const GError*)>;

// Asks the service on the session bus, or where nobody has its name there, on the system bus. What
// is known already is told at once, until the service gets another owner. False when there is no
// bus.
bool describe(const std::string& service, const std::string& path, const Described& described);

// Whether some service has not told yet.
bool isDescribing();

// To be called when an object lacks what its description has.
void forgetDescription(const std::string& service, const std::string& path);

}  // namespace tavlinux

#endif

// The session bus and the system bus, and calls on them.
#pragma once

#include <gio/gio.h>

#include <functional>
#include <string>

#include "linux/bus/variant.h"

namespace tavlinux {

inline constexpr char kBusService[] = "org.freedesktop.DBus";  // the bus itself
inline constexpr char kBusPath[] = "/org/freedesktop/DBus";
inline constexpr char kProperties[] = "org.freedesktop.DBus.Properties";

enum class Bus { Session, System };

// Null when the bus is not there, or on another thread than the application's. Connects again to a
// bus that was lost. While there are subscriptions, that also happens without a call.
GDBusConnection* connectionTo(Bus bus);

// Waits until the buses have handled everything that was sent, for kLongestWaitMs each at most.
void flushConnections();

struct Method {
    Bus bus;
    std::string service;
    std::string path;
    std::string interface;
    std::string name;
};

// Receives the result of a method, or null and the error. Both belong to the caller.
using Result = std::function<void(GVariant* result, const GError* problem)>;

// Takes over the arguments, a tuple or null, even when it fails. The result comes while the context
// is iterated, however long the service takes, or when the call is cancelled. Without a function
// for the result no reply is requested. False when the bus is not there.
bool call(const Method& method, GVariant* arguments, Result result,
          GCancellable* cancellable = nullptr);

// Waits for the answer of a service, for kLongestWaitMs at most. Null when none came in time. An
// answer that comes later goes to `late`, which can undo what the service has done. Until it comes,
// later calls of callBriefly to that service return null at once.
using LateResult = std::function<void(GVariant* result)>;
Variant callBriefly(const Method& method, GVariant* arguments, const char* resultType,
                    LateResult late = nullptr);

Variant propertyOf(Bus bus, const std::string& service, const std::string& path,
                   const std::string& interface, const char* property);

// Whether the service runs, or the bus can start it.
bool isAvailable(Bus bus, const char* service);

// True when the name that was called has no owner.
bool isNobodyThere(const GError* problem);

}  // namespace tavlinux

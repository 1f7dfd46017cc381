// The two message buses, and what is done on them.
#ifndef TAV_LINUX_BUS_CONNECTION_H
#define TAV_LINUX_BUS_CONNECTION_H

#include <gio/gio.h>

#include <functional>
#include <string>

#include "linux/bus/variant.h"

namespace tavlinux {

inline constexpr char kBusService[] = "org.freedesktop.DBus";  // the bus itself
inline constexpr char kBusPath[] = "/org/freedesktop/DBus";
inline constexpr char kProperties[] = "org.freedesktop.DBus.Properties";

enum class Bus { Session, System };

// Null when the bus is not there, or on another thread than the application's. A bus that was lost
// is looked for anew, and as long as somebody subscribes, also without being asked.
GDBusConnection* connectionTo(Bus bus);

// Waits, but not for long, until everything has been sent.
void flushConnections();

struct Method {
    Bus bus;
    std::string service;
    std::string path;
    std::string interface;
    std::string name;
};

// Receives what a method answered, or null and why not. Both are the caller's.
using Result = std::function<void(GVariant* result, const GError* problem)>;

// Takes over the arguments, a tuple or null, also where it fails. The result comes while the
// context is served, however long the service takes, or when the call is cancelled. With an empty
// function nobody wants one. False when the bus is not there.
bool call(const Method& method, GVariant* arguments, Result result,
          GCancellable* cancellable = nullptr);

// Waits for the answer of a service of this machine, but not for long. Null when there was none.
// One that comes later goes to a function, which undoes what nobody knows of. Until then this
// service is called no more.
using LateResult = std::function<void(GVariant* result)>;
Variant callBriefly(const Method& method, GVariant* arguments, const char* resultType,
                    LateResult late = nullptr);

Variant propertyOf(Bus bus, const std::string& service, const std::string& path,
                   const std::string& interface, const char* property);

// Whether the service runs, or is started when it is called.
bool isAvailable(Bus bus, const char* service);

// True when nobody answers to the name that was called.
bool isNobodyThere(const GError* problem);

}  // namespace tavlinux

#endif

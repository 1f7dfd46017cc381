// Signals of services.
#pragma once

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <string>

#include "linux/bus/connection.h"

namespace tavlinux {

using Signal = std::function<void(const char* member, GVariant* arguments)>;

// Receives signals while it exists. After a bus was lost, it is renewed on the next connection.
class Subscription {
public:
    struct Match {
        Bus bus;
        std::string sender;
        std::string path;
        std::string interface;
        std::string member;
        std::string argument = {};  // the first; empty for any
    };
    using BusChanged = std::function<void(bool isThere)>;

    Subscription(Match match, Signal signal, BusChanged busChanged = nullptr);
    ~Subscription();
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;

    void attach();
    void detach();
    Bus bus() const { return m_match.bus; }
    const BusChanged& busChanged() const { return m_busChanged; }

private:
    const Match m_match;
    const Signal m_signal;
    const BusChanged m_busChanged;
    GDBusConnection* m_connection = nullptr;
    guint m_id = 0;
};

// Calls a function with true when the service's name gets an owner, or may have one because the
// bus is connected again, and with false when it has lost its owner.
std::unique_ptr<Subscription> watchOwner(Bus bus, const std::string& service,
                                         const std::function<void(bool)>& changed);

// For connection.cpp only.

bool hasSubscriptions(Bus bus);
void detachSubscriptions(Bus bus);
void attachSubscriptions(Bus bus);

}  // namespace tavlinux

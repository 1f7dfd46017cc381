#include "linux/bus/subscription.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "linux/bus/pump.h"

namespace tavlinux {
namespace {

std::vector<Subscription*>& subscriptions() {
    static auto& all = *new std::vector<Subscription*>;
    return all;
}

std::vector<Subscription*> subscriptionsOn(Bus bus) {
    std::vector<Subscription*> found = subscriptions();
    std::erase_if(found, [bus](const Subscription* one) { return one->bus() != bus; });
    return found;
}

// A called function may end subscriptions, its own included.
void tell(const std::vector<Subscription*>& told, bool isThere) {
    for (const Subscription* one : told) {
        if (std::ranges::count(subscriptions(), one) != 0 && one->busChanged()) {
            const Subscription::BusChanged busChanged = one->busChanged();
            busChanged(isThere);
        }
    }
}

void onSignal(GDBusConnection*, const char*, const char*, const char*, const char* member,
              GVariant* arguments, gpointer signal) {
    // The receiver may end the subscription.
    const Signal receiver = *static_cast<Signal*>(signal);
    receiver(member, arguments);
}

void deleteSignal(gpointer signal) {
    delete static_cast<Signal*>(signal);
}

}  // namespace

Subscription::Subscription(Match match, Signal signal, BusChanged busChanged)
    : m_match(std::move(match)), m_signal(std::move(signal)), m_busChanged(std::move(busChanged)) {
    attach();
    subscriptions().push_back(this);
}

Subscription::~Subscription() {
    std::erase(subscriptions(), this);
    detach();
}

void Subscription::attach() {
    GDBusConnection* connection = m_connection == nullptr ? connectionTo(m_match.bus) : nullptr;
    if (connection == nullptr) {
        return;
    }
    const OnContext here;
    m_connection = G_DBUS_CONNECTION(g_object_ref(connection));
    m_id = g_dbus_connection_signal_subscribe(
        m_connection, m_match.sender.c_str(), m_match.interface.c_str(), m_match.member.c_str(),
        m_match.path.c_str(), m_match.argument.empty() ? nullptr : m_match.argument.c_str(),
        G_DBUS_SIGNAL_FLAGS_NONE, onSignal, new Signal(m_signal), deleteSignal);
}

void Subscription::detach() {
    if (m_connection != nullptr) {
        g_dbus_connection_signal_unsubscribe(m_connection, m_id);
        g_clear_object(&m_connection);
    }
}

std::unique_ptr<Subscription> watchOwner(Bus bus, const std::string& service,
                                         const std::function<void(bool)>& changed) {
    const auto ownerChanged = [changed](const char*, GVariant* arguments) {
        const char* owner = nullptr;
        if (isOfType(arguments, "(sss)")) {
            g_variant_get_child(arguments, 2, "&s", &owner);
            changed(*owner != '\0');
        }
    };
    return std::make_unique<Subscription>(
        Subscription::Match{bus, kBusService, kBusPath, kBusService, "NameOwnerChanged", service},
        ownerChanged, changed);
}

bool hasSubscriptions(Bus bus) {
    return !subscriptionsOn(bus).empty();
}

// All are detached, or attached, before the first is told, because that one may connect again.
void detachSubscriptions(Bus bus) {
    const std::vector<Subscription*> lost = subscriptionsOn(bus);
    std::ranges::for_each(lost, &Subscription::detach);
    tell(lost, false);
}

void attachSubscriptions(Bus bus) {
    const std::vector<Subscription*> found = subscriptionsOn(bus);
    std::ranges::for_each(found, &Subscription::attach);
    tell(found, true);
}

}  // namespace tavlinux

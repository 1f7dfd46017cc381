#include "linux/bus/introspection.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace tavlinux {
namespace {

constexpr size_t kMostKept = 64;
constexpr char kIntrospectable[] = "org.freedesktop.DBus.Introspectable";

using Object = std::pair<std::string, std::string>;  // service and path

struct Entry {
    std::shared_ptr<Description> description;  // null until the reply arrives
    std::vector<Described> waiting;
    std::unique_ptr<Subscription> owner;
};

std::map<Object, Entry>& entries() {
    static auto& known = *new std::map<Object, Entry>;
    return known;
}

void forgetService(const std::string& service) {
    std::erase_if(entries(), [&service](const auto& entry) {
        return entry.first.first == service && entry.second.description != nullptr;
    });
}

void makeRoom() {
    if (entries().size() >= kMostKept) {
        std::erase_if(entries(),
                      [](const auto& entry) { return entry.second.description != nullptr; });
    }
}

void tellWaiting(const Object& object, const std::shared_ptr<Description>& description,
                 const GError* problem) {
    const auto found = entries().find(object);
    if (found == entries().end()) {
        return;
    }
    const std::vector<Described> waiting = std::exchange(found->second.waiting, {});
    if (description) {
        found->second.description = description;
    } else {
        entries().erase(found);
    }
    for (const Described& described : waiting) {
        described(description, problem);
    }
}

void takeXml(const Object& object, Bus bus, GVariant* result) {
    const char* xml = "";
    if (isOfType(result, "(s)")) {
        g_variant_get(result, "(&s)", &xml);
    }
    g_autoptr(GError) problem = nullptr;
    auto description = std::make_shared<Description>();
    description->bus = bus;
    description->node.reset(g_dbus_node_info_new_for_xml(xml, &problem));
    tellWaiting(object, description->node != nullptr ? description : nullptr, problem);
}

bool ask(const Object& object, Bus bus) {
    return call({bus, object.first, object.second, kIntrospectable, "Introspect"}, nullptr,
                [object, bus](GVariant* result, const GError* problem) {
                    if (result != nullptr) {
                        takeXml(object, bus, result);
                        return;
                    }
                    const bool maybeElsewhere = bus == Bus::Session && isNobodyThere(problem);
                    if (!maybeElsewhere || !ask(object, Bus::System)) {
                        tellWaiting(object, nullptr, problem);
                        return;
                    }
                    entries()[object].owner =
                        watchOwner(Bus::System, object.first,
                                   [name = object.first](bool) { forgetService(name); });
                });
}

}  // namespace

bool describe(const std::string& service, const std::string& path, const Described& described) {
    const Object object{service, path};
    const auto found = entries().find(object);
    if (found != entries().end() && found->second.description) {
        const std::shared_ptr<Description> description = found->second.description;
        described(description, nullptr);
        return true;
    }
    if (found != entries().end()) {
        found->second.waiting.push_back(described);
        return true;
    }
    const Bus bus = connectionTo(Bus::Session) != nullptr ? Bus::Session : Bus::System;
    if (connectionTo(bus) == nullptr) {
        return false;
    }
    makeRoom();
    Entry& entry = entries()[object];
    entry.waiting.push_back(described);
    entry.owner = watchOwner(bus, service, [service](bool) { forgetService(service); });
    return ask(object, bus);
}

bool isDescribing() {
    return std::ranges::any_of(
        entries(), [](const auto& entry) { return entry.second.description == nullptr; });
}

void forgetDescription(const std::string& service, const std::string& path) {
    const auto found = entries().find({service, path});
    if (found != entries().end() && found->second.description) {
        entries().erase(found);
    }
}

}  // namespace tavlinux

// Conversion of JSON to D-Bus values, by the rules in dbus_to_json.h.
#pragma once

#include <gio/gio.h>
#include <simdjson.h>

#include <string>

#include "linux/bus/variant.h"

namespace tavlinux {

// A method's arguments as a tuple, from an object whose members name them or a list that
// has them in order. A member "subscribe" that is no argument is left out. Null where the JSON does
// not fit, and then `problem` says why.
//
// A variant without a given type becomes b, s, d, i (x or t where it is too large), av or a{sv}.
// Bytes may also be a list of numbers, and a dictionary a list of pairs.
Variant argumentsFromJson(const simdjson::dom::element& payload, GDBusArgInfo* const* arguments,
                          std::string* problem);

}  // namespace tavlinux

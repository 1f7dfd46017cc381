// Conversion of D-Bus values to JSON.
//
// Nothing is lost: json_to_dbus restores the same D-Bus value from the text.
//   booleans, integers, strings, object paths, signatures    as they are, integers in full
//   doubles      with a fraction or an exponent; "NaN", "Infinity" and "-Infinity" are strings
//   ay           a string in base 64
//   structs, arrays    lists
//   dictionaries       objects whose names are the keys; a list of pairs where keys would clash
//   variants     the plain value. Where JSON does not show its type, a second member NAME:type
//                has the D-Bus signature of the member NAME. Outside objects, the value becomes
//                {"type":SIGNATURE,"value":VALUE}
#pragma once

#include <gio/gio.h>

#include <optional>
#include <string>

namespace tavlinux {

// The name of an argument. One without a name gets one from its position: arg0 and so on.
std::string argumentName(GDBusArgInfo* const* arguments, size_t position);

// An object with "returnValue" true, unless an argument has that name, and a member for each value
// of the tuple. Nothing when it holds file descriptors, which cannot be passed on.
std::optional<std::string> jsonFromResult(GVariant* tuple, GDBusArgInfo* const* arguments);

}  // namespace tavlinux

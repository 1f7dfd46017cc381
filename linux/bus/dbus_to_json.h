// What came over D-Bus, as JSON.
//
// Nothing is lost on the way: json_to_dbus makes the same D-Bus value of the text again.
//   booleans, integers, strings, object paths, signatures    as they are, integers in full
//   doubles      with a fraction or an exponent; "NaN", "Infinity" and "-Infinity" are strings
//   ay           a string in base 64
//   structs, arrays    lists
//   dictionaries       objects whose names spell the keys; a list of pairs where keys would clash
//   variants     the plain value. Where JSON does not tell its type, a member NAME has a member
//                NAME:type beside it with the D-Bus signature, and in any other place stands
//                {"type":SIGNATURE,"value":VALUE}
#pragma once

#include <gio/gio.h>

#include <optional>
#include <string>

namespace tavlinux {

// The name of an argument, which may have none: then it is called by its position, arg0 and so on.
std::string argumentName(GDBusArgInfo* const* arguments, size_t position);

// An object with "returnValue" true, unless an argument bears that name, and a member for each
// value of the tuple. Nothing when it holds file descriptors, which cannot be passed on.
std::optional<std::string> jsonFromResult(GVariant* tuple, GDBusArgInfo* const* arguments);

}  // namespace tavlinux

// D-Bus values of the basic types, from JSON and from the names of members.
#ifndef TAV_LINUX_BUS_BASIC_VALUES_H
#define TAV_LINUX_BUS_BASIC_VALUES_H

#include <gio/gio.h>
#include <simdjson.h>

#include <string_view>

namespace tavlinux {

// A floating value of the type, which is one letter; null where the JSON does not fit.
GVariant* basicFromJson(const simdjson::dom::element& json, char type);

// The same from the spelling of a value, as a dictionary's key has it in an object.
GVariant* basicFromKey(std::string_view spelling, char type);

// A floating ay; null where the text is not exactly what bytes look like in base 64.
GVariant* bytesFromBase64(std::string_view text);

}  // namespace tavlinux

#endif

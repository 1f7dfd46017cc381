// D-Bus values of the basic types, from JSON and from the names of members.
#pragma once

#include <simdjson.h>

#include <string_view>

#include "linux/bus/variant.h"

namespace tavlinux {

// The member NAME:type tells the type of the variant in the member NAME.
inline constexpr std::string_view kTypeSuffix = ":type";

// A value of the type, which is one letter; null where the JSON does not fit.
Variant basicFromJson(const simdjson::dom::element& json, char type);

// The same from the name of a member, which holds a dictionary's key.
Variant basicFromKey(std::string_view spelling, char type);

// A value of type ay; null where the text is not valid base 64.
Variant bytesFromBase64(std::string_view text);

}  // namespace tavlinux

// What an application says about itself, in the file appinfo.json of its folder.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "base/json/reader.h"

namespace base {

inline constexpr char kAppinfo[] = "appinfo.json";

// The application's name on the buses, which must be one of D-Bus.
json::Reader applicationId(std::string* target);

// The members of the file: the content of a string, the JSON text of anything else. No members
// where there is no file. Nothing, with a line that names the file, when it is malformed.
std::optional<std::map<std::string, std::string>> readAppinfo(const std::string& folder,
                                                              std::string* error);

}  // namespace base

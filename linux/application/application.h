// Properties of the application and its machine, and the paths of its files.
#pragma once

#include <optional>
#include <string>

namespace tavlinux {

// The member of appinfo.json in the application's folder, see base/application_folder.h: the
// content of a string, the JSON text of anything else.
std::optional<std::string> appinfoValue(const std::string& key);

// The name by which other programs know the application: its "id", else the executable's name.
const std::string& applicationId();

// The path of a file in the application's folder if there is one, else in its folder below the
// user's data, which is created when needed.
std::string dataFilePath(const std::string& name);

// The value of the key in the environment (TAV_PORTABILITY_KEY), else in libtav/portability.json
// in the user's configuration folder.
std::optional<std::string> portabilityValue(const std::string& key);

// The model as the device tree or the firmware names it.
std::optional<std::string> machineName();

// The version of os-release, with ".0" behind one that is a single number.
std::optional<std::string> systemVersion();

// 40 hexadecimal digits that identify this application on this machine. They are derived from the
// machine's id, but do not reveal it. Nothing where the machine has no id.
std::optional<std::string> uniqueId(const std::string& application);

}  // namespace tavlinux

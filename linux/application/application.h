// The application and its machine: what they say about themselves, and where the files are.
#pragma once

#include <optional>
#include <string>

namespace tavlinux {

// The absolute path of the executable; empty when the kernel does not tell.
std::string executable();

// The member of appinfo.json beside the executable: the content of a string, the JSON text of
// anything else.
std::optional<std::string> appinfoValue(const std::string& key);

// By which other programs know the application: its "id", else the executable's name.
const std::string& applicationId();

// Beside the executable where such a file is, else in the folder of the application's data below
// the user's, which is made when it is first asked for.
std::string dataFilePath(const std::string& name);

// What the environment (TAV_PORTABILITY_KEY) or the file libtav/portability.json in the user's
// folder of configurations says about the key.
std::optional<std::string> portabilityValue(const std::string& key);

// The model as the device tree or the firmware names it.
std::optional<std::string> machineName();

// The version of os-release, with ".0" behind one that is a single number.
std::optional<std::string> systemVersion();

// 40 hexadecimal digits that stand for this application on this machine, and tell nothing about the
// machine's own id, from which they are derived. Nothing where the machine has no id.
std::optional<std::string> uniqueId(const std::string& application);

}  // namespace tavlinux

// The machine and its system.
#pragma once

#include <optional>
#include <string>

namespace tavlinux {

// The model as the device tree or the firmware names it.
std::optional<std::string> machineName();

// The version of os-release, with ".0" behind one that is a single number.
std::optional<std::string> systemVersion();

// 40 hexadecimal digits that stand for this application on this machine, and tell nothing about the
// machine's own id, from which they are derived. Nothing where the machine has no id.
std::optional<std::string> uniqueId(const std::string& applicationId);

}  // namespace tavlinux

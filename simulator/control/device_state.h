// What a device is and does, for programs.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tavsim {

// The members of `state --json`, each with its value as JSON. Nothing on the device changes.
std::vector<std::pair<const char*, std::string>> stateMembers();

inline constexpr char kBatteryUri[] = "vire://com.vire.battery/status";
inline constexpr char kPercent[] = "percent";

std::string batteryReply();

// As JSON; nothing where the device has no battery service that tells it.
std::optional<std::string> batteryPercent();

}  // namespace tavsim

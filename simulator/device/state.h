// The state of the device's parts by name: "keyboard" is "shown", …
#pragma once

#include <map>
#include <string>

namespace tavsim {

// Sets the value; the journal gets the change.
void setState(const std::string& name, const std::string& value);

const std::map<std::string, std::string>& deviceState();

void clearState();

}  // namespace tavsim

// Readers for the services in a profile.
#pragma once

#include <string>

#include "base/json/reader.h"
#include "simulator/device/profile.h"

namespace tavsim {

// The folder is the working directory of programs.
base::json::Reader serviceReader(Service* service, const std::string& folder);

// A string is sent unchanged, null as a null text, anything else as JSON.
base::json::Reader replyReader(Reply* reply);

// Reads the code and the text of an error.
base::json::Reader errorReader(Reply* reply);

// The reply of a service that could not carry out a request.
std::string errorReply(int code, const std::string& text);

}  // namespace tavsim

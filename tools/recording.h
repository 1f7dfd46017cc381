// The run's part of a recording: what the device does not know.
#pragma once

#include <string>

#include "run.h"

namespace tools {

// Creates the file with the header of a scenario; the device appends the steps. False when it
// cannot be written.
bool startRecording(const RunRequest& request, const std::string& root);

// The program has ended with this status.
void endRecording(const RunRequest& request, const std::string& root, int status);

}  // namespace tools

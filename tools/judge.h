// The run's part of a scenario, which can only be checked from outside the program, and of a
// recording, which the device does not know.
#pragma once

#include <string>

#include "output_watch.h"
#include "run.h"
#include "run_folder.h"
#include "simulator/scenario/scenario.h"
#include "supervisor.h"

namespace tools {

// Fills in the options that the command line does not set. A scenario whose page is for a browser
// is played in real time.
void adoptHeader(const tavsim::Scenario& scenario, RunRequest* request);

// Called when the program has ended. Prints unmet expectations on standard error, unless the player
// has done so, and returns the exit status of the run.
int judge(const tavsim::Scenario& scenario, const RunRequest& request, const RunFolder& folder,
          const RunEnd& end, const OutputWatch& output);

// The header of a scenario for this device and program that is in the folder, without its last line
// feed.
std::string recordingHeader(const RunRequest& request, const std::string& folder);

// Creates the file with the header of a scenario; the device appends the steps. False when it
// cannot be written.
bool startRecording(const RunRequest& request, const std::string& root);

// The program has ended with this status.
void endRecording(const RunRequest& request, const std::string& root, int status);

}  // namespace tools

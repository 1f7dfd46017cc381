// Records what happens to the device from outside, as a scenario.
#pragma once

#include <string>

#include "platform/visibility.h"

union SDL_Event;

namespace tavsim {

// Starts to append to the file each command that is carried out and each input, with its time.
// False, with a line in `error`, when it cannot be written. Only the first device of a run is
// recorded.
bool startRecording(const std::string& file, std::string* error);

// The file in the root folder that marks that a device has been recorded.
TAV_PLATFORM_API void removeRecordingMark(const std::string& root);

// The command for the event of a key or a finger; empty for other events.
std::string inputCommand(const SDL_Event& event);

// Called when the application takes this event off its queue.
void recordEvent(const SDL_Event& event);

// Called when the application has ended.
void stopRecording();

}  // namespace tavsim

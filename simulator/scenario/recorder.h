// Writes down what happens to the device from outside, as a scenario.
#ifndef TAV_SIMULATOR_SCENARIO_RECORDER_H
#define TAV_SIMULATOR_SCENARIO_RECORDER_H

#include <string>

#include "platform/visibility.h"

union SDL_Event;

namespace tavsim {

// Appends to the file each command that is carried out and each input, with its time. False, with a
// line in `error`, when it cannot be written. Of the devices of one run only the first is recorded.
bool startRecording(const std::string& file, std::string* error);

// The mark in the root folder that says that a device has been recorded.
TAV_PLATFORM_API void removeRecordingMark(const std::string& root);

// The command that stands for the event of a key or a finger; empty for other events.
std::string inputCommand(const SDL_Event& event);

// The application takes this event off its queue.
void recordEvent(const SDL_Event& event);

// The application has ended.
void stopRecording();

}  // namespace tavsim

#endif

// Starting and stopping the device, also by itself from the environment.
#pragma once

#include <functional>
#include <string>

#include "simulator/device/profile.h"

namespace tavsim {

struct Options {
    std::string root;  // folder of the device's files; empty: a fresh one, removed at the end
    bool virtualTime = false;  // SDL_Delay costs nothing and SDL_GetTicks follows it
    std::string pageFile;      // a script, or a document; needs a profile that is a plug-in
    std::string journalFile;
    std::string scenarioFile;  // what happens to the device, and what is expected
    std::string scenarioRow;   // of the scenario's table
    std::string recordFile;    // of what happens to the device from outside
    bool updatePictures = false;
    std::string differences;  // folder for pictures of differences; empty: beside the stored ones
    bool control = false;     // listen on the control socket in the root folder
};

// Empty when symbol interposition works; otherwise a message that says what to do. Without it, the
// program would reach this machine's files, and nothing would ever be delivered.
std::string whyNotInFront();

// See base/application_folder.h.
const std::string& applicationFolder();

// Whether the device runs. May be called on any thread.
bool isStarted();

// Whether the device runs or should run, because the process uses the library. A shell that merely
// inherited the preloaded simulator is left alone.
bool isWanted();

// The profile of the device. If the device does not run yet, it is started from the environment,
// once, by the thread that asks first. If the environment is wrong, the process ends with status 2
// and a line on standard error. Throws NotInFront, after printing once what to do, when
// interposition does not work.
Profile& running();

// The current profile of the device, whether it runs or not.
Profile& profile();

// Starts or stops the device. The function `change` returns whether it runs afterwards, and so does
// this one. Calls that `change` itself makes see the device as it is so far; other threads wait.
bool changeDevice(const std::function<bool()>& change);

// Starts all rooms of the device; defined where they are put together. False, with a line in
// `error`, on failure. It is not handed in when the library is loaded: the static constructors of a
// program's libraries may run before those of this one, and already use the device.
bool startDevice(Profile newProfile, const Options& options, std::string* error);

}  // namespace tavsim

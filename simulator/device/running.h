// When the device starts by itself, and from what.
#ifndef TAV_SIMULATOR_DEVICE_RUNNING_H
#define TAV_SIMULATOR_DEVICE_RUNNING_H

#include <functional>
#include <string>

#include "simulator/device/profile.h"

namespace tavsim {

struct Options {
    std::string root;  // folder of the device's files; empty: a fresh one, removed at the end
    bool virtualTime = false;  // SDL_Delay costs nothing and SDL_GetTicks follows it
    std::string pageFile;      // script of the page; needs a profile that is a plug-in
    std::string journalFile;
    std::string scenarioFile;  // what happens to the device, and what is expected
    std::string recordFile;    // of what happens to the device from outside
    bool control = false;      // listen on the control socket in the root folder
};

// Behind the functions of SDL and libc, nothing would keep the program off this machine's files,
// and nothing would ever be delivered. Empty where the device is in front, else what to do.
std::string whyNotInFront();

// Whether the device runs. Can be asked on any thread.
bool isStarted();

// True when the device runs or should: the process uses the library. A shell that only inherited
// the preloaded simulator is left alone.
bool isWanted();

// The profile of the device, which is started from the environment if it does not run yet: once,
// whichever thread asks first. Ends the process with status 2 and a line on standard error when
// what the environment asks for cannot be had. Throws NotInFront, having said once what to do,
// where the program's calls reach SDL and libc without passing the simulator.
Profile& running();

// The profile of the device as it is, running or not.
Profile& profile();

// Starts or stops the device: the change tells whether it runs afterwards, and so does the result.
// What the change itself asks of the device finds it as far as it has come; other threads wait.
bool changeDevice(const std::function<bool()>& change);

// Starts all rooms of the device; defined where they are put together. False, with a line in
// `error`, when that is not possible.
bool startDevice(Profile newProfile, const Options& options, std::string* error);

// What TAVSIM_… variables ask for. False, with a line in `error`, when that cannot be had.
bool environmentSetup(Profile* newProfile, Options* options, std::string* error);

}  // namespace tavsim

#endif

// Commands for the device's time.
#include <string>

#include "simulator/control/command.h"
#include "simulator/control/control.h"
#include "simulator/time/clock.h"
#include "simulator/time/pause.h"

namespace tavsim {
namespace {

// Carries a change of a paused time out where time can be paused.
CommandResult changePause(const char* command, void (*change)()) {
    if (!isTimeVirtual()) {
        return failed(std::string(command) +
                      ": the device has real time, which nothing holds; only virtual time and that "
                      "of a recording can be paused");
    }
    if (!isControlled()) {
        return failed(std::string(command) +
                      ": the device has no control socket, over which the time could go on");
    }
    change();
    return {};
}

CommandResult pauseApplication(Words) {
    return changePause("pause", pauseTime);
}

CommandResult resumeApplication(Words) {
    return changePause("resume", resumeTime);
}

CommandResult stepApplication(Words words) {
    return changePause("step", words.isEmpty() ? stepToNextMoment : stepToNextDelivery);
}

CommandResult setSpeed(Words words) {
    if (!isTimePaced()) {
        return failed("speed: only the time of a recording has one");
    }
    double factor = 1;
    words.takeNumbers(&factor);
    setPaceFactor(factor);
    return {};
}

constexpr Command kTimeRows[] = {
    {"pause", "",
     "Hold the application where it handles its events, in virtual time or in a recording.",
     pauseApplication, true},
    {"resume", "", "Let it go on.", resumeApplication, true},
    {"step", "[delivery]",
     "Let it go on until the time has moved on, or until something was delivered; then hold it.",
     stepApplication, true},
    {"speed", "TIMES", "In a recording, let the time pass so many times as fast as real time.",
     setSpeed, true},
};

}  // namespace

constinit const std::span<const Command> kTimeCommands = kTimeRows;

}  // namespace tavsim

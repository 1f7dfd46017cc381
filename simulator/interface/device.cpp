#include "simulator/interface/device.h"

#include <unistd.h>

#include <csignal>
#include <utility>

#include "base/print_line.h"
#include "helper/trace.h"
#include "screen/frames.h"
#include "simulator/bus/services.h"
#include "simulator/control/commands.h"
#include "simulator/control/control.h"
#include "simulator/device/refusals.h"
#include "simulator/device/state.h"
#include "simulator/input/window.h"
#include "simulator/page/plugin.h"
#include "simulator/scenario/player.h"
#include "simulator/scenario/recorder.h"
#include "simulator/time/clock.h"
#include "simulator/time/pause.h"
#include "simulator/time/queue.h"
#include "simulator/time/timers.h"
#include "simulator/world/position.h"

namespace tavsim {
namespace {

pid_t g_startedBy = 0;

// A second program of a run is on a device of its own.
bool isSecond(const Options& options) {
    return !options.root.empty() && isRootFresh();
}

// The journal of a second program is written beside the first one's.
std::string journalFile(const Options& options) {
    return isSecond(options) && !options.journalFile.empty()
               ? options.journalFile + "." + std::to_string(getpid())
               : options.journalFile;
}

// SDL turns SIGTERM into a quit event, but not SIGHUP, which comes when a terminal is closed.
void takeHangUpAsRequestToEnd() {
    struct sigaction action;
    if (sigaction(SIGHUP, nullptr, &action) == 0 && action.sa_handler == SIG_DFL) {
        std::signal(SIGHUP, [](int) { std::raise(SIGTERM); });
    }
}

bool startRooms(const Options& options, std::string* error) {
    g_startedBy = getpid();
    for (const Fault fault :
         {Fault::Allocation, Fault::Dispatch, Fault::HostRequest, Fault::Read}) {
        failNthFault(fault, 0);
    }
    if (!prepareRoot(profile(), options.root, error) ||
        !startJournal(journalFile(options), error) || (options.control && !startControl(error))) {
        return false;
    }
    if (options.control) {
        takeHangUpAsRequestToEnd();
    }
    setPictureOptions({options.updatePictures, options.differences});
    startWorld(announceLocation);
    if (!startPage(options.pageFile, error)) {
        return false;
    }
    startPump();
    if (isSecond(options)) {
        return true;
    }
    const bool isRecorded = options.recordFile.empty() || startRecording(options.recordFile, error);
    return isRecorded && (options.scenarioFile.empty() ||
                          startScenario(options.scenarioFile, options.scenarioRow, error));
}

void stopRooms() {
    stopScenario();
    stopRecording();
    setMeanwhile(nullptr);
    stopPage();
    stopControl();
    resumeTime();
    clearBus();
    clearQueue();
    clearState();
    clearRefusals();
    stopCompass();
    stopWorld();
    screen::stopFrames();
    stopInput();
    stopJournal();
    releaseRoot();
}

}  // namespace

Device& device() {
    // Never destroyed, because libraries that are unloaded later still use it.
    static Device& instance = *new Device;
    return instance;
}

bool Device::start(Profile newProfile, const Options& options, std::string* error) {
    startClock(options.virtualTime           ? Pace::Virtual
               : !options.recordFile.empty() ? Pace::Paced
                                             : Pace::Real);
    removeAllTimers();
    acceptStreams();
    std::string problem;
    return startDevice(std::move(newProfile), options, error != nullptr ? error : &problem);
}

void Device::stop() {
    changeDevice([] {
        stopRooms();
        return false;
    });
}

const std::string& Device::root() const {
    return rootFolder();
}

Milliseconds Device::now() const {
    return tavsim::now();
}

void Device::advance(Milliseconds milliseconds) {
    pumpUntil(tavsim::after(now(), milliseconds));
}

void Device::listen(const std::string& tags) {
    helper::keepTrace(tags);
}

void Device::acceptStreams() {
    base::acceptStreams();
}

std::vector<std::string> Device::takeTrace() {
    return helper::takeTraceLines();
}

bool startDevice(Profile newProfile, const Options& options, std::string* error) {
    return changeDevice([&] {
        stopRooms();
        profile() = std::move(newProfile);
        try {
            if (startRooms(options, error)) {
                return true;
            }
        } catch (...) {
            stopRooms();
            throw;
        }
        stopRooms();
        return false;
    });
}

namespace {

// The device ends with the process: its page, its socket and its fresh root folder. A fork must not
// end it.
__attribute__((destructor)) void stopAtExit() {
    if (getpid() == g_startedBy) {
        device().stop();
    }
}

}  // namespace
}  // namespace tavsim

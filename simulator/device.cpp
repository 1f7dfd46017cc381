#include "simulator/device.h"

#include <utility>

#include "simulator/bus.h"
#include "simulator/clock.h"
#include "simulator/compass.h"
#include "simulator/control.h"
#include "simulator/faults.h"
#include "simulator/journal.h"
#include "simulator/page.h"
#include "simulator/pump.h"
#include "simulator/root.h"
#include "simulator/running.h"
#include "simulator/state.h"
#include "simulator/trace.h"

namespace sim {

Device& device() {
    // Never destroyed: libraries that are unloaded late still use it.
    static Device& instance = *new Device;
    return instance;
}

bool Device::start(Profile newProfile, const Options& options, std::string* error) {
    stop();
    std::string problem;
    std::string& line = error != nullptr ? *error : problem;
    profile = std::move(newProfile);
    startClock(options.virtualTime);
    setStarted(true);
    for (const Fault fault :
         {Fault::StringAllocation, Fault::Dispatch, Fault::HostRequest, Fault::Read}) {
        failNthFault(fault, 0);
    }
    if (!prepareRoot(profile, options.root, &line)) {
        stop();
        return false;
    }
    if (!startJournal(options.journalFile)) {
        line = options.journalFile + ": the journal cannot be written there";
        stop();
        return false;
    }
    if (options.control && !startControl(&line)) {
        stop();
        return false;
    }
    startPage(options.pageFile);
    return true;
}

void Device::stop() {
    stopPage();
    stopControl();
    clearBus();
    clearQueue();
    clearState();
    stopCompass();
    stopJournal();
    releaseRoot();
    setStarted(false);
}

const std::string& Device::root() const {
    return rootFolder();
}

long Device::now() const {
    return sim::now();
}

void Device::advance(int milliseconds) {
    pumpUntil(now() + milliseconds);
}

void Device::pump() {
    pumpNow();
}

void Device::listen(const std::string& tags) {
    keepTrace(tags);
}

std::vector<std::string> Device::takeTrace() {
    return takeTraceLines();
}

const std::deque<std::string>& Device::journal() const {
    return journalLines();
}

std::vector<int> Device::openCalls(const std::string& uri) const {
    return openBusCalls(uri);
}

bool Device::deliver(int token, const Reply& reply) {
    return deliverReply(token, reply);
}

bool Device::deliverCompass(const CompassReading& reading) {
    return deliverCompassReading(reading);
}

void Device::failNth(Fault fault, int n) {
    failNthFault(fault, n);
}

int Device::occurrences(Fault fault) const {
    return faultOccurrences(fault);
}

namespace {

// The device ends with the process: its page, its socket and its fresh root folder.
__attribute__((destructor)) void stopAtExit() {
    device().stop();
}

}  // namespace
}  // namespace sim

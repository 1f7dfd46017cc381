// The simulated device, for test code and for programs that steer it.
//
// There is one device for the process. It starts by itself when the simulator is loaded, from the
// environment that `tavsim run` sets. Test code restarts it with its own profile.
#pragma once

#include "simulator/bus/bus.h"
#include "simulator/device/faults.h"
#include "simulator/device/journal.h"
#include "simulator/device/root.h"
#include "simulator/device/running.h"
#include "simulator/front/pump.h"
#include "simulator/host/compass.h"

namespace tavsim {

class TAV_PLATFORM_API Device {
public:
    // Changes take effect at once, except those that are written to files when the device starts:
    // preferences, unique id and role templates.
    Profile& profile = tavsim::profile();

    // Restarts the device with this data, an empty bus, queue and journal, and the clock at 0.
    // False, with a line in `error`, when the root folder cannot be prepared.
    bool start(Profile newProfile, const Options& options = {}, std::string* error = nullptr);

    // Removes the root folder if the device made it, ends the page, closes the files.
    void stop();

    // Where the device's files are, without a '/' at the end.
    const std::string& root() const;

    // Milliseconds since the start.
    Milliseconds now() const;

    // Lets virtual time pass, and makes all deliveries in the order in which they fall due.
    void advance(Milliseconds milliseconds);

    // Delivers what is due now, as polling SDL's events does.
    void pump() { pumpNow(); }

    // For a test that has redirected standard output or standard error: the device's own lines go
    // to the files to which they refer now.
    void acceptStreams();

    // Trace lines: tag, function and text with a blank between them. Tags as in TAV_TRACE:
    // names with commas between, or "all"; empty stops listening. The lines stay in memory.
    void listen(const std::string& tags);
    std::vector<std::string> takeTrace();

    // The last lines of the journal, each one JSON object.
    const std::deque<std::string>& journal() const { return journalLines(); }

    // The tokens of the open calls and subscriptions of one URI, or of all, in the order of
    // dispatch.
    std::vector<int> openCalls(const std::string& uri = {}) const { return openBusCalls(uri); }

    // Delivers a reply to an open call now; false when there is no open call with this token.
    bool deliver(int token, const Reply& reply) { return deliverReply(token, reply); }

    // Delivers a compass reading now, enabled or not; false when no callback is registered.
    bool deliverCompass(const CompassReading& reading) { return deliverCompassReading(reading); }

    // Lets only the n-th operation from now fail, counting from 1; 0 lets none fail.
    void failNth(Fault fault, int n) { failNthFault(fault, n); }

    // The same for the n-th operation and all after it.
    void failFrom(Fault fault, int n) { failFaultsFrom(fault, n); }

    // The number of operations since one of these two was called, or since the start.
    int occurrences(Fault fault) const { return faultOccurrences(fault); }
};

TAV_PLATFORM_API Device& device();

}  // namespace tavsim

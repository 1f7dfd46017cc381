// The simulated device, for test code and for programs that steer it.
//
// There is one device for the process. It starts by itself when the simulator is loaded, from the
// environment that `tavsim run` sets; test code starts it anew as it wants it.
#ifndef TAV_SIMULATOR_INTERFACE_DEVICE_H
#define TAV_SIMULATOR_INTERFACE_DEVICE_H

#include <deque>
#include <string>
#include <vector>

#include "simulator/device/faults.h"
#include "simulator/device/profile.h"
#include "simulator/device/root.h"
#include "simulator/device/running.h"
#include "simulator/time/clock.h"

namespace tavsim {

class TAV_PLATFORM_API Device {
public:
    // Changes take effect at once, except for what becomes files when the device starts:
    // preferences, unique id and role templates.
    Profile& profile = tavsim::profile();

    // Starts over: these data, an empty bus and queue, an empty journal, the clock at 0. False,
    // with a line in `error`, when the root folder cannot be prepared.
    bool start(Profile newProfile, const Options& options = {}, std::string* error = nullptr);

    // Removes the root folder if the device made it, ends the page, closes the files.
    void stop();

    // Where the device's files are, without a '/' at the end.
    const std::string& root() const;

    // Milliseconds since the start.
    Milliseconds now() const;

    // Virtual time: lets it pass and delivers everything in the order in which it falls due.
    void advance(Milliseconds milliseconds);

    // Delivers what is due now, as polling SDL's events does.
    void pump();

    // Lines of the device's own go where standard output and standard error lead now, as from a
    // start on: a test that catches them has led them elsewhere.
    void acceptStreams();

    // Trace lines: tag, function and text with a blank between them. Tags as in TAV_TRACE:
    // names with commas between, or "all"; empty stops listening. The lines stay in memory.
    void listen(const std::string& tags);
    std::vector<std::string> takeTrace();

    // The last lines of the journal, each one JSON object.
    const std::deque<std::string>& journal() const;

    // Tokens of the open calls and subscriptions, of one URI or of all, in the order of dispatch.
    std::vector<int> openCalls(const std::string& uri = {}) const;

    // Hands a reply to an open call now; false when the token stands for none.
    bool deliver(int token, const Reply& reply);

    // Delivers a compass reading now, enabled or not; false when no callback is registered.
    bool deliverCompass(const CompassReading& reading);

    // Lets the n-th occurrence from now fail, counting from 1, and no other; 0 lets none fail.
    void failNth(Fault fault, int n);

    // The same for the n-th and all after it.
    void failFrom(Fault fault, int n);

    // How often it has occurred since one of them was called, or the start.
    int occurrences(Fault fault) const;
};

TAV_PLATFORM_API Device& device();

}  // namespace tavsim

#endif

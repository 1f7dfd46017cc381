// Services for tests, and what they were asked.
#ifndef TAV_TESTS_SERVICES_H
#define TAV_TESTS_SERVICES_H

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "simulator/device.h"

namespace tavtest {

struct Request {
    std::string uri;
    std::string payload;

    bool operator==(const Request&) const = default;
};

using Requests = std::vector<Request>;

// A service that keeps each request and gives each the same reply.
inline sim::Service keepingService(Requests& requests, sim::Reply reply = "{}") {
    sim::Service service;
    service.compute = [&requests, reply](const std::string& uri, const std::string& payload) {
        requests.push_back({uri, payload});
        return reply;
    };
    return service;
}

// A service with these replies; where `every` is set, a subscription gets them over and over.
inline sim::Service repliesOf(std::vector<sim::Reply> replies, int delay = 0, int every = 0) {
    sim::Service service;
    service.replies = std::move(replies);
    service.repeat = every != 0;
    service.delay = delay;
    service.every = every;
    return service;
}

// The options with which the requests of the journal went out: true in the library's name, false in
// the application's.
inline std::set<bool> optionsSent(const sim::Device& device) {
    std::set<bool> options;
    for (const std::string& line : device.journal()) {
        for (const bool option : {false, true}) {
            if (line.find(option ? "\"option\":true" : "\"option\":false") != std::string::npos) {
                options.insert(option);
            }
        }
    }
    return options;
}

}  // namespace tavtest

#endif

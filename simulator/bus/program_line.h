// What the device and a service's program say to each other: one JSON object a line.
#ifndef TAV_SIMULATOR_BUS_PROGRAM_LINE_H
#define TAV_SIMULATOR_BUS_PROGRAM_LINE_H

#include <optional>
#include <string>

#include "simulator/device/profile.h"

namespace tavsim {

struct ServiceRequest {
    std::string uri;
    std::string payload;
    bool isSubscription = false;
    bool wantsReply = true;
};

// The turn is 1 for a request that is new, more for one that the program wanted to hear again.
std::string requestLine(int token, int turn, const ServiceRequest& request);
std::string cancelLine(int token);

struct ProgramLine {
    int id = 0;  // the request's token
    std::optional<Reply> reply;
    int delay = 0;      // milliseconds until then
    int again = 0;      // milliseconds until the program wants to hear the request again; 0: never
    bool more = false;  // the program has not yet said all that it has to say now
};

// Without a value, `error` says what is wrong with the line.
std::optional<ProgramLine> readProgramLine(const std::string& line, std::string* error);

}  // namespace tavsim

#endif

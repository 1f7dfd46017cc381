// The protocol between the device and a service's program: one JSON object a line.
#pragma once

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

// The turn is 1 for a new request, and more when the program asked for the request again.
std::string requestLine(int token, int turn, const ServiceRequest& request);
std::string cancelLine(int token);

struct ProgramLine {
    int id = 0;  // the request's token
    std::optional<Reply> reply;
    int delay = 0;      // milliseconds until then
    int again = 0;      // milliseconds until the program gets the request again; 0: never
    bool more = false;  // another line about this request follows at once
};

// Without a value, `error` says what is wrong with the line.
std::optional<ProgramLine> readProgramLine(const std::string& line, std::string* error);

}  // namespace tavsim

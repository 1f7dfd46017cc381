// Calls of services by their D-Bus names, and the replies to all requests.
#pragma once

#include <gio/gio.h>

#include <functional>
#include <optional>
#include <string>

namespace tavlinux {

inline constexpr char kDone[] = R"({"returnValue":true})";

// {"returnValue":false,"errorCode":-1,"errorText":…}. The text is also traced, because a one-way
// call has no reply.
std::string failure(const std::string& text);

// The same with the D-Bus error name and message.
std::string failure(const GError* problem);

// Receives each reply to a request.
using Answer = std::function<void(const std::string& reply)>;

// Ends what a request has started. Empty when there is nothing to end.
using Stop = std::function<void()>;

// The result of a request. Without a value it could not be dispatched, and no reply comes.
using Dispatched = std::optional<Stop>;

// vire://SERVICE/METHOD calls the object whose path is the service's name with slashes for dots,
// vire://SERVICE/PATH/METHOD the one at /PATH. METHOD may be INTERFACE.METHOD for an interface that
// does not have the service's name. Without an answer function, no reply is requested.
Dispatched callService(const std::string& uri, const std::string& payload, bool isSubscription,
                       Answer answer);

}  // namespace tavlinux

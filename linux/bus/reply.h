// The replies to an application's requests, as texts.
#ifndef TAV_LINUX_BUS_REPLY_H
#define TAV_LINUX_BUS_REPLY_H

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

}  // namespace tavlinux

#endif

// The replies to an application's requests, as texts.
#ifndef TAV_LINUX_BUS_REPLY_H
#define TAV_LINUX_BUS_REPLY_H

#include <gio/gio.h>

#include <functional>
#include <optional>
#include <string>

namespace tavlinux {

inline constexpr char kDone[] = R"({"returnValue":true})";

// {"returnValue":false,"errorCode":-1,"errorText":…}. Traces the text, too: nobody reads the reply
// to a one-way call.
std::string failure(const std::string& text);

// The same with the name that D-Bus has for the problem and its message.
std::string failure(const GError* problem);

// Receives each reply to a request.
using Answer = std::function<void(const std::string& reply)>;

// Ends what a request has started. Empty where nothing goes on.
using Stop = std::function<void()>;

// What becomes of a request; nothing when it could not be dispatched, and then no reply comes.
using Dispatched = std::optional<Stop>;

// Answers with kDone, or with why not.
std::function<void(GVariant*, const GError*)> doneOrFailure(Answer answer);

}  // namespace tavlinux

#endif

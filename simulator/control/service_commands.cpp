// Commands for what the device's services and its host answer.
#include <vector>

#include "simulator/bus/bus.h"
#include "simulator/bus/profile_services.h"
#include "simulator/control/command.h"
#include "simulator/device/faults.h"
#include "simulator/device/refusals.h"
#include "simulator/device/running.h"
#include "simulator/language/pattern.h"
#include "simulator/time/clock.h"
#include "simulator/time/queue.h"

namespace tavsim {
namespace {

// NAME|URI [for TIME] [request N]
Refusal readRefusal(Words words) {
    Refusal refusal{std::string(words.next())};
    std::string_view word = words.next();
    if (word == "for") {
        refusal.until = after(now(), readTime(words.next()).value_or(0));
        word = words.next();
    }
    if (word == "request") {
        words.takeNumbers(&refusal.nth);
    }
    return refusal;
}

CommandResult reply(Words words) {
    const std::string uri(words.next());
    return replyToAll(uri, std::string(words.rest()));
}

CommandResult answer(Words words) {
    const std::string uri(words.next());
    answerFromNowOn(uri, std::string(words.rest()));
    return {};
}

CommandResult silence(Words words) {
    answerFromNowOn(std::string(words.next()), std::nullopt);
    return {};
}

CommandResult delay(Words words) {
    const std::string uri(words.next());
    const Service* service = profileService(uri);
    if (service != nullptr && service->program) {
        return failed("delay: the program that answers " + uri + " says when");
    }
    delayService(uri, readTime(words.next()).value_or(0));
    return {};
}

CommandResult refuse(Words words) {
    addRefusal(readRefusal(words));
    return {};
}

CommandResult allow(Words words) {
    const std::string request(words.next());
    removeRefusals(request);
    restoreService(request);
    const auto service = profile().services.find(request);
    if (service != profile().services.end()) {
        service->second.refuse = false;
    }
    return {};
}

CommandResult fail(Words words) {
    setFaultFromText(words.rest());
    return {};
}

constexpr Command kServiceRows[] = {
    {"reply", "URI TEXT", "Send a reply to every open call and subscription of the service.",
     reply},
    {"answer", "URI TEXT",
     "Let the service answer this from now on, and its subscriptions at once.", answer},
    {"silence", "URI", "Let the service answer nothing from now on; calls stay open.", silence},
    {"delay", "URI TIME",
     "Let the service take that long from now on for its first reply to a request.", delay},
    {"refuse", "NAME|URI [for TIME] [request N]",
     "Refuse from now on, for a time, or only the N-th request from now: keyboard, minimize,\n"
     "      touch, compass, bridge, orientation, gestures, banners, pauseUi or screenTimeout, or\n"
     "      requests to a service.",
     refuse},
    {"allow", "NAME|URI", "Take refuse, answer, silence and delay back.", allow},
    {"fail", "KIND:N[+]",
     "Let the N-th allocation, dispatch, host request or read from now fail; with + all behind it\n"
     "      too. The kinds are allocation, dispatch, host and read.",
     fail},
};

}  // namespace

constinit const std::span<const Command> kServiceCommands = kServiceRows;

CommandResult replyToAll(const std::string& uri, const std::string& text) {
    const std::vector<int> tokens = openBusCalls(uri);
    if (tokens.empty()) {
        return failed("no open call or subscription of " + uri);
    }
    for (const int token : tokens) {
        schedule(now(), "reply", [token, text] { deliverReply(token, text); });
    }
    return {{}, "replied to " + std::to_string(tokens.size()) + "\n"};
}

}  // namespace tavsim

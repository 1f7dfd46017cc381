// Commands for what the device's services and its host answer.
#include <vector>

#include "base/json/writer.h"
#include "simulator/bus/bus.h"
#include "simulator/bus/profile_services.h"
#include "simulator/control/command_functions.h"
#include "simulator/control/pattern.h"
#include "simulator/device/faults.h"
#include "simulator/device/refusals.h"
#include "simulator/device/running.h"
#include "simulator/time/clock.h"
#include "simulator/time/queue.h"

namespace tavsim {
namespace {

// The only word that is left.
std::optional<std::string> onlyWord(Words words) {
    std::string word(words.next());
    return !word.empty() && words.isEmpty() ? std::optional(word) : std::nullopt;
}

// [for TIME] [request N]
bool readRefusal(Words words, Refusal* refusal) {
    std::string_view word = words.next();
    if (word == "for") {
        const std::optional<Milliseconds> time = readTime(words.next());
        if (!time) {
            return false;
        }
        refusal->until = after(now(), *time);
        word = words.next();
    }
    if (word == "request") {
        return words.areNumbers(&refusal->nth) && refusal->nth > 0;
    }
    return word.empty();
}

CommandResult cannotBeRefused(const std::string& request) {
    return failed(base::quoted(request) + " is no URI and no request that can be refused");
}

}  // namespace

CommandResult replyToAll(const std::string& uri, const std::string& text) {
    const std::vector<int> tokens = openBusCalls(uri);
    if (tokens.empty()) {
        return failed("no open call or subscription of " + uri);
    }
    for (const int token : tokens) {
        schedule(now(), [token, text] { deliverReply(token, text); });
    }
    return {{}, "replied to " + std::to_string(tokens.size()) + "\n", false};
}

CommandOutcome reply(Words words) {
    const std::string uri(words.next());
    if (words.isEmpty()) {
        return std::nullopt;
    }
    return replyToAll(uri, std::string(words.rest()));
}

CommandOutcome answer(Words words) {
    const std::string uri(words.next());
    if (words.isEmpty()) {
        return std::nullopt;
    }
    if (!isUri(uri)) {
        return failed(base::quoted(uri) + " is no URI");
    }
    answerFromNowOn(uri, std::string(words.rest()));
    return CommandResult();
}

CommandOutcome silence(Words words) {
    const std::optional<std::string> uri = onlyWord(words);
    if (!uri) {
        return std::nullopt;
    }
    if (!isUri(*uri)) {
        return failed(base::quoted(*uri) + " is no URI");
    }
    answerFromNowOn(*uri, std::nullopt);
    return CommandResult();
}

CommandOutcome refuse(Words words) {
    Refusal refusal{std::string(words.next())};
    if (refusal.request.empty() || !readRefusal(words, &refusal)) {
        return std::nullopt;
    }
    if (!canBeRefused(refusal.request)) {
        return cannotBeRefused(refusal.request);
    }
    addRefusal(std::move(refusal));
    return CommandResult();
}

CommandOutcome allow(Words words) {
    const std::optional<std::string> request = onlyWord(words);
    if (!request) {
        return std::nullopt;
    }
    if (!canBeRefused(*request)) {
        return cannotBeRefused(*request);
    }
    removeRefusals(*request);
    restoreService(*request);
    const auto service = profile().services.find(*request);
    if (service != profile().services.end()) {
        service->second.refuse = false;
    }
    return CommandResult();
}

CommandOutcome fail(Words words) {
    const bool isSet = setFaultFromText(std::string(words.rest()));
    return isSet ? CommandOutcome(CommandResult()) : std::nullopt;
}

}  // namespace tavsim

#include "simulator/bus/bus.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "platform/hkscaller.h"
#include "platform/napp.h"
#include "simulator/bus/profile_services.h"
#include "simulator/bus/service_program.h"
#include "simulator/bus/services.h"
#include "simulator/device/edge.h"
#include "simulator/device/faults.h"
#include "simulator/device/journal.h"
#include "simulator/device/refusals.h"
#include "simulator/device/running.h"
#include "simulator/time/clock.h"
#include "simulator/time/queue.h"

namespace tavsim {
namespace {

enum class Kind { OneWay, OneReply, Subscription };

constexpr const char* kKindNames[] = {"call", "callWithResponse", "subscribe"};

struct Call {
    std::string uri;
    std::string payload;
    Kind kind;
    HKSReplyFunction replyFunction;
    void* context;
    int version = 0;  // incremented to drop pending replies
};

struct Bus {
    std::unordered_map<int, Call> open;  // by token
    int lastToken = 0;
    bool isPaymentAnswered = false;  // and the library still takes events
    bool isQuitHeld = false;
};

Bus& bus() {
    static Bus& instance = *new Bus;
    return instance;
}

Answer answerTo(const Call& call) {
    const Service* service = profileService(call.uri);
    return service != nullptr
               ? serviceAnswer(*service, call.uri, call.payload, call.kind == Kind::Subscription)
               : deviceServiceAnswer(call.uri, call.payload);
}

// The open call; null when the pending replies of this version are to be dropped.
const Call* findCall(int token, int version) {
    const auto found = bus().open.find(token);
    const bool counts = found != bus().open.end() && found->second.version == version;
    return counts ? &found->second : nullptr;
}

void scheduleReplies(int token, const Call& call, const Answer& answer, Milliseconds first);

void startNextRound(int token, Milliseconds due) {
    const Call call = bus().open.at(token);
    scheduleReplies(token, call, answerTo(call), due);
}

// Queues one round of replies, which share one list. After the last reply to a subscription, the
// next round is queued.
void scheduleReplies(int token, const Call& call, const Answer& answer, Milliseconds first) {
    const size_t count = call.kind == Kind::Subscription
                             ? answer.replies.size()
                             : std::min<size_t>(answer.replies.size(), 1);
    const bool isEndless = call.kind == Kind::Subscription && answer.isEndless;
    for (size_t i = 0; i < count; ++i) {
        const Milliseconds due = after(first, static_cast<Milliseconds>(i) * answer.every);
        const bool startsNext = isEndless && i + 1 == count;
        const Milliseconds next = after(due, answer.every);
        const auto deliver = [token, version = call.version, reply = answer.replies[i],
                              isFilled = answer.isFilled, startsNext, next] {
            const Call* request = findCall(token, version);
            if (request == nullptr) {
                return;
            }
            if (startsNext) {
                startNextRound(token, next);
            }
            deliverReply(token,
                         isFilled ? filledReply(reply, request->uri, request->payload) : reply);
        };
        schedule(due, "reply", deliver);
    }
}

std::optional<ServiceCommand> programOf(const std::string& uri) {
    const Service* service = profileService(uri);
    return service != nullptr ? service->program : std::nullopt;
}

bool refusesDispatch(const std::string& uri) {
    const Service* service = profileService(uri);
    const bool refused = isRefused(uri) || (service != nullptr && service->refuse);
    return faultStrikes(Fault::Dispatch) || refused;
}

int dispatch(Kind kind, const char* uri, const char* payload, bool option,
             HKSReplyFunction replyFunction, void* context) try {
    running();
    Call call{uri != nullptr ? uri : "", payload != nullptr ? payload : "", kind, replyFunction,
              context};
    const bool refuses = refusesDispatch(call.uri);
    const int token = refuses ? -1 : ++bus().lastToken;
    JournalEntry("bus", kKindNames[static_cast<int>(kind)], "uri", uri, "payload", payload,
                 "option", option)
        .outcome(refuses ? "refused" : "token " + std::to_string(token));
    if (refuses) {
        return token;
    }
    if (const auto program = programOf(call.uri)) {
        const bool wantsReply = kind != Kind::OneWay;
        const ServiceRequest request{call.uri, call.payload, kind == Kind::Subscription,
                                     wantsReply};
        if (wantsReply) {
            bus().open.emplace(token, std::move(call));
        }
        askServiceProgram(*program, token, request);
        return token;
    }
    const Answer answer = answerTo(call);
    if (kind == Kind::OneWay) {
        return token;
    }
    const Milliseconds delay = changedDelay(call.uri).value_or(answer.delay);
    scheduleReplies(token, call, answer, after(now(), delay));
    bus().open.emplace(token, std::move(call));
    return token;
} catch (...) {
    return refused(-1);
}

}  // namespace

void clearBus() {
    endServicePrograms();
    bus().open.clear();
    bus().isPaymentAnswered = bus().isQuitHeld = false;
    clearProfileServices();
}

std::vector<int> openBusCalls(const std::string& uri) {
    std::vector<int> tokens;
    for (const auto& [token, call] : bus().open) {
        if (uri.empty() || call.uri == uri) {
            tokens.push_back(token);
        }
    }
    std::sort(tokens.begin(), tokens.end());
    return tokens;
}

bool isPaymentOpen() {
    return std::any_of(bus().open.begin(), bus().open.end(),
                       [](const auto& open) { return open.second.uri.starts_with(kPayment); });
}

bool holdQuit() {
    const bool isDropped = bus().isPaymentAnswered || isPaymentOpen();
    bus().isQuitHeld = bus().isQuitHeld || isDropped;
    return isDropped;
}

bool letQuitGo() {
    bus().isPaymentAnswered = false;
    if (!bus().isQuitHeld || isPaymentOpen()) {
        return false;
    }
    bus().isQuitHeld = false;
    return true;
}

void answerFromNowOn(const std::string& uri, const std::optional<std::string>& text) {
    Service service;
    if (const Service* former = profileService(uri)) {
        service.delay = former->delay;
        service.refuse = former->refuse;
    }
    if (text) {
        service.replies = {*text};
    }
    replaceService(uri, service);
    for (const int token : openBusCalls(uri)) {
        Call& call = bus().open.at(token);
        if (call.uri != uri || (text && call.kind != Kind::Subscription)) {
            continue;
        }
        ++call.version;
        forgetServiceRequest(token);
        scheduleReplies(token, call, {service.replies, 0, 0, false, true}, now());
    }
}

bool deliverReply(int token, const Reply& reply) {
    const auto found = bus().open.find(token);
    if (found == bus().open.end()) {
        return false;
    }
    // The reply function may cancel this call or start others. The record may be dangling
    // afterwards, so it is not used.
    const HKSReplyFunction replyFunction = found->second.replyFunction;
    void* context = found->second.context;
    const char* text = reply ? reply->c_str() : nullptr;
    writeEntry("bus", "reply", "token", token, "uri", found->second.uri, "reply", text);
    if (found->second.uri.starts_with(kPayment)) {
        bus().isPaymentAnswered = true;
    }
    if (found->second.kind == Kind::OneReply) {
        bus().open.erase(found);
        forgetServiceRequest(token);
    }
    replyFunction(token, text, context);
    return true;
}

}  // namespace tavsim

int HKSCaller::ksCall(const char* uri, const char* payload, bool option) {
    return tavsim::dispatch(tavsim::Kind::OneWay, uri, payload, option, nullptr, nullptr);
}

int HKSCaller::ksCallWithResponse(const char* uri, const char* payload, bool option,
                                  HKSReplyFunction replyFunction, void* context) {
    return tavsim::dispatch(tavsim::Kind::OneReply, uri, payload, option, replyFunction, context);
}

int HKSCaller::ksCallWithSubscription(const char* uri, const char* payload, bool option,
                                      HKSReplyFunction replyFunction, void* context) {
    return tavsim::dispatch(tavsim::Kind::Subscription, uri, payload, option, replyFunction,
                            context);
}

void HKSCaller::ksCancelCall(int token) try {
    tavsim::running();
    const bool wasOpen = tavsim::bus().open.erase(token) != 0;
    tavsim::forgetServiceRequest(token);
    tavsim::JournalEntry("bus", "cancel", "token", token)
        .outcome(wasOpen ? "cancelled" : "no such call");
} catch (...) {
    tavsim::refuseOrEnd();
}

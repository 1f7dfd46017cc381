#include "simulator/bus/bus.h"

#include <algorithm>
#include <map>
#include <utility>

#include "helper/faults.h"
#include "platform/hkscaller.h"
#include "platform/napp.h"
#include "simulator/bus/services.h"
#include "simulator/device/edge.h"
#include "simulator/device/journal.h"
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
};

struct Bus {
    std::map<int, Call> open;             // by token, so in the order of dispatch
    std::map<std::string, size_t> turns;  // for services that answer successive calls in turn
    int lastToken = 0;
};

Bus& bus() {
    static Bus& instance = *new Bus;
    return instance;
}

const Service* profileService(const std::string& uri) {
    const auto& services = profile().services;
    const auto found = services.find(uri);
    return found != services.end() ? &found->second : nullptr;
}

// What a service of the profile answers to this call; computing services are asked here.
Answer profileAnswer(const Service& service, const Call& call) {
    Answer answer{{}, service.delay, service.every};
    if (service.compute) {
        answer.replies = {service.compute(call.uri, call.payload)};
    } else if (call.kind == Kind::Subscription) {
        answer.replies = service.replies;
    } else if (!service.replies.empty()) {
        const size_t turn = std::min(bus().turns[call.uri]++, service.replies.size() - 1);
        answer.replies = {service.replies[turn]};
    }
    return answer;
}

Answer answerTo(const Call& call) {
    const Service* service = profileService(call.uri);
    return service != nullptr ? profileAnswer(*service, call)
                              : deviceServiceAnswer(call.uri, call.payload);
}

// A subscription to such a service receives its replies again and again.
bool isEndless(const std::string& uri) {
    const Service* service = profileService(uri);
    return service != nullptr && service->every > 0 && (service->repeat || service->compute);
}

void scheduleReplies(int token, const Call& call, const Answer& answer, Milliseconds first);

void startNextRound(int token, Milliseconds due) {
    const auto found = bus().open.find(token);
    if (found != bus().open.end() && isEndless(found->second.uri)) {
        const Call call = found->second;
        scheduleReplies(token, call, answerTo(call), due);
    }
}

// Queues one round of replies, which share one list, and behind a subscription's last the next.
void scheduleReplies(int token, const Call& call, const Answer& answer, Milliseconds first) {
    const size_t count = call.kind == Kind::Subscription
                             ? answer.replies.size()
                             : std::min<size_t>(answer.replies.size(), 1);
    const bool endless = call.kind == Kind::Subscription && isEndless(call.uri);
    for (size_t i = 0; i < count; ++i) {
        const Milliseconds due = after(first, static_cast<Milliseconds>(i) * answer.every);
        const bool startsNext = endless && i + 1 == count;
        const Milliseconds next = after(due, answer.every);
        schedule(due, [token, reply = answer.replies[i], startsNext, next] {
            if (startsNext) {
                startNextRound(token, next);
            }
            deliverReply(token, reply);
        });
    }
}

bool refusesDispatch(const std::string& uri) {
    const Service* service = profileService(uri);
    const bool refused = profile().refused.contains(uri) || (service != nullptr && service->refuse);
    return helper::faultStrikes(helper::Fault::Dispatch) || refused;
}

int dispatch(Kind kind, const char* uri, const char* payload, bool option,
             HKSReplyFunction replyFunction, void* context) try {
    running();
    Call call{uri != nullptr ? uri : "", payload != nullptr ? payload : "", kind, replyFunction,
              context};
    const bool isRefused = refusesDispatch(call.uri);
    const int token = isRefused ? -1 : ++bus().lastToken;
    JournalEntry("bus", kKindNames[static_cast<int>(kind)])
        .member("uri", uri)
        .member("payload", payload)
        .member("option", option)
        .outcome(isRefused ? "refused" : "token " + std::to_string(token));
    if (isRefused) {
        return token;
    }
    const Answer answer = answerTo(call);
    if (kind == Kind::OneWay) {
        return token;
    }
    scheduleReplies(token, call, answer, after(now(), answer.delay));
    bus().open.emplace(token, std::move(call));
    return token;
} catch (...) {
    return refused(-1);
}

}  // namespace

void clearBus() {
    bus().open.clear();
    bus().turns.clear();
}

std::vector<int> openBusCalls(const std::string& uri) {
    std::vector<int> tokens;
    for (const auto& [token, call] : bus().open) {
        if (uri.empty() || call.uri == uri) {
            tokens.push_back(token);
        }
    }
    return tokens;
}

bool deliverReply(int token, const Reply& reply) {
    const auto found = bus().open.find(token);
    if (found == bus().open.end()) {
        return false;
    }
    // The reply function may cancel this call or start others, so nothing of the record is used
    // after it.
    const HKSReplyFunction replyFunction = found->second.replyFunction;
    void* context = found->second.context;
    const char* text = reply ? reply->c_str() : nullptr;
    JournalEntry("bus", "reply")
        .member("token", token)
        .member("uri", found->second.uri)
        .member("reply", text);
    if (found->second.kind == Kind::OneReply) {
        bus().open.erase(found);
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
    tavsim::JournalEntry("bus", "cancel")
        .member("token", token)
        .outcome(wasOpen ? "cancelled" : "no such call");
} catch (...) {
    tavsim::refuseOrEnd();
}

HKSCaller* NApp_GetKSCaller() {
    static HKSCaller caller;
    return &caller;
}

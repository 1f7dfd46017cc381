#include "services/blocking_call.h"

#include <cstdint>
#include <tuple>
#include <utility>

#include "SDL.h"
#include "platform/htracker.h"
#include "services/bus.h"

namespace {

constexpr int kPollPeriodMs = 50;

// The bus delivers replies during SDL_PollEvent.
void dropEvents() {
    for (SDL_Event event; SDL_PollEvent(&event) != 0;) {}
}

}  // namespace

namespace tav {

void blockingCallCallback(int token, const char* reply, void* context) {
    HTracker_funcTrack("tav_9", __func__, "%d, %s, %p", token, reply, context);
    auto* call = static_cast<BlockingCallContext*>(context);
    const char* text = reply != nullptr ? reply : "";
    if (call->reply != nullptr && !HString_append(call->reply.get(), "%s", text)) {
        call->reply.reset();
    }
    call->done = true;
}

HStringPtr blockingKSCall(const char* uri, const char* payload, bool option, int timeoutMs) {
    BlockingCallContext call{HStringPtr(HString_alloc())};
    if (call.reply == nullptr) {
        return TAV_FAIL(__func__, nullptr, kNoString);
    }
    HKSCaller* bus = NApp_GetKSCaller();
    const int token = bus->ksCallWithResponse(uri, payload, option, blockingCallCallback, &call);
    if (token == kNoCall) {
        return TAV_FAIL(__func__, nullptr, "failed to dispatch call");
    }
    // 64 bits, because a wait without a time-out may last for weeks.
    std::int64_t elapsedMs = 0;
    do {
        if (call.done && call.reply == nullptr) {
            return TAV_FAIL(__func__, nullptr, kNoString);
        }
        if (call.done) {
            return std::move(call.reply);
        }
        dropEvents();
        SDL_Delay(kPollPeriodMs);
        elapsedMs += kPollPeriodMs;
    } while (timeoutMs <= 0 || elapsedMs < timeoutMs);
    std::ignore = TAV_FAIL(__func__, nullptr, "Timed out waiting for response to call");
    bus->ksCancelCall(token);
    return nullptr;
}

}  // namespace tav

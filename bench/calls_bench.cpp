// Calls over the bus, from dispatch to reply function, compared with the bare bus caller.
#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <random>

#include "bench/bench_device.h"
#include "platform/napp.h"

namespace {

using tavbench::BenchDevice;
using tavbench::expect;

constexpr char kAnswering[] = "vire://com.example.bench/answer";
constexpr char kSilent[] = "vire://com.example.bench/silent";
constexpr char kPayload[] = "{}";
constexpr int kOpen = 100000;

tavsim::Profile services() {
    tavsim::Profile profile;
    profile.services[kAnswering].replies = {R"({"returnValue":true})"};
    profile.services[kSilent] = {};
    return profile;
}

std::int64_t g_replies = 0;

void onReply(TAV_ServiceParameters*, void*) {
    ++g_replies;
}

void onBareReply(int, const char*, void*) {
    ++g_replies;
}

void callWithLibtav(const char* uri) {
    TAV_ServiceCallWithCallback(uri, kPayload, onReply, nullptr, SDL_TRUE);
}

void callBare(const char* uri) {
    NApp_GetKSCaller()->ksCallWithResponse(uri, kPayload, false, onBareReply, nullptr);
}

// Makes that many calls, and then delivers the replies.
using Round = void (*)(std::int64_t count, void (*call)(const char*));

void inOrder(std::int64_t count, void (*call)(const char*)) {
    for (std::int64_t i = 0; i < count; ++i) {
        call(kAnswering);
    }
    tavsim::device().pump();
}

// The service does not reply by itself, so that replies can be delivered in any order.
void inAnotherOrder(std::int64_t count, void (*call)(const char*),
                    void (*arrange)(std::vector<int>& tokens)) {
    const tavsim::Reply reply = R"({"returnValue":true})";
    for (std::int64_t i = 0; i < count; ++i) {
        call(kSilent);
    }
    std::vector<int> tokens = tavsim::device().openCalls();
    arrange(tokens);
    for (const int token : tokens) {
        tavsim::device().deliver(token, reply);
    }
}

void inReverse(std::int64_t count, void (*call)(const char*)) {
    inAnotherOrder(count, call,
                   [](std::vector<int>& tokens) { std::reverse(tokens.begin(), tokens.end()); });
}

void atRandom(std::int64_t count, void (*call)(const char*)) {
    inAnotherOrder(count, call, [](std::vector<int>& tokens) {
        // A fixed seed, for the same order each time.
        std::minstd_rand random(20260803);  // NOLINT(cert-msc32-c,cert-msc51-cpp)
        std::shuffle(tokens.begin(), tokens.end(), random);
    });
}

// Measures one round. The first round, which allocates memory, does not count.
void callAndReply(benchmark::State& state, Round round, void (*call)(const char*)) {
    const BenchDevice device(state, services());
    const std::int64_t count = state.range(0);
    round(count, call);
    g_replies = 0;
    for (auto _ : state) {
        round(count, call);
    }
    expect(state, g_replies == static_cast<std::int64_t>(state.iterations()) * count,
           "replies are missing");
}

void outstanding(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1)->Arg(100)->Arg(1000)->Arg(100000);
}

BENCHMARK_CAPTURE(callAndReply, inOrder_libtav, inOrder, callWithLibtav)->Apply(outstanding);
BENCHMARK_CAPTURE(callAndReply, inOrder_bare, inOrder, callBare)->Apply(outstanding);
BENCHMARK_CAPTURE(callAndReply, inReverse_libtav, inReverse, callWithLibtav)->Apply(outstanding);
BENCHMARK_CAPTURE(callAndReply, inReverse_bare, inReverse, callBare)->Apply(outstanding);
BENCHMARK_CAPTURE(callAndReply, atRandom_libtav, atRandom, callWithLibtav)->Apply(outstanding);
BENCHMARK_CAPTURE(callAndReply, atRandom_bare, atRandom, callBare)->Apply(outstanding);

void onOtherReply(TAV_ServiceParameters*, void*) {
}

// The functions take turns in the calls, so that each has as many. The first one is unregistered.
void unregister(benchmark::State& state, std::initializer_list<TAV_ServiceCallback> functions,
                size_t left) {
    const BenchDevice device(state, services());
    for (auto _ : state) {
        state.PauseTiming();
        TAV_UnregisterServiceCallback(onOtherReply);
        for (int i = 0; i < kOpen; ++i) {
            const auto function = functions.begin()[static_cast<size_t>(i) % functions.size()];
            TAV_ServiceCallWithCallback(kSilent, kPayload, function, nullptr, SDL_FALSE);
        }
        const size_t open = tavsim::device().openCalls().size();
        state.ResumeTiming();
        TAV_UnregisterServiceCallback(onReply);
        state.PauseTiming();
        expect(state, open == kOpen && tavsim::device().openCalls().size() == left,
               "subscriptions are missing or left");
        state.ResumeTiming();
    }
}

BENCHMARK_CAPTURE(unregister, noneOf, {onOtherReply}, kOpen);
BENCHMARK_CAPTURE(unregister, everySecondOf, {onReply, onOtherReply}, kOpen / 2);
BENCHMARK_CAPTURE(unregister, allOf, {onReply}, 0);

}  // namespace

// Calls over the bus, from dispatch to reply function, beside the bare bus caller.
#include <algorithm>
#include <cstdint>

#include "bench/bench_device.h"
#include "platform/napp.h"

namespace {

using tavbench::BenchDevice;
using tavbench::expect;

constexpr char kAnswering[] = "vire://com.example.bench/answer";
constexpr char kSilent[] = "vire://com.example.bench/silent";
constexpr char kPayload[] = "{}";
constexpr int kSubscriptions = 10000;

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

void dispatchAll(benchmark::State& state, void (*call)(const char*), const char* uri) {
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        call(uri);
    }
}

// Every iteration has the given number of calls outstanding before the first reply. The time is
// that of one call.
void countCalls(benchmark::State& state) {
    const double calls = static_cast<double>(state.iterations() * state.range(0));
    expect(state, g_replies == static_cast<std::int64_t>(calls), "replies are missing");
    state.counters["per_call"] =
        benchmark::Counter(calls, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void inOrder(benchmark::State& state, void (*call)(const char*)) {
    const BenchDevice device(state, services());
    g_replies = 0;
    for (auto _ : state) {
        dispatchAll(state, call, kAnswering);
        tavsim::device().pump();
    }
    countCalls(state);
}

void inReverse(benchmark::State& state, void (*call)(const char*)) {
    const BenchDevice device(state, services());
    const tavsim::Reply reply = R"({"returnValue":true})";
    g_replies = 0;
    for (auto _ : state) {
        dispatchAll(state, call, kSilent);
        state.PauseTiming();
        std::vector<int> tokens = tavsim::device().openCalls();
        std::reverse(tokens.begin(), tokens.end());
        state.ResumeTiming();
        for (const int token : tokens) {
            tavsim::device().deliver(token, reply);
        }
    }
    countCalls(state);
}

BENCHMARK_CAPTURE(inOrder, libtav, callWithLibtav)->Arg(1)->Arg(100)->Arg(10000);
BENCHMARK_CAPTURE(inOrder, bare, callBare)->Arg(1)->Arg(100)->Arg(10000);
BENCHMARK_CAPTURE(inReverse, libtav, callWithLibtav)->Arg(100)->Arg(10000);
BENCHMARK_CAPTURE(inReverse, bare, callBare)->Arg(100)->Arg(10000);

void unregister(benchmark::State& state) {
    const BenchDevice device(state, services());
    for (auto _ : state) {
        state.PauseTiming();
        for (int i = 0; i < kSubscriptions; ++i) {
            TAV_ServiceCallWithCallback(kSilent, kPayload, onReply, nullptr, SDL_FALSE);
        }
        const size_t open = tavsim::device().openCalls().size();
        state.ResumeTiming();
        TAV_UnregisterServiceCallback(onReply);
        expect(state, open == kSubscriptions && tavsim::device().openCalls().empty(),
               "subscriptions are missing or left");
    }
}
BENCHMARK(unregister);

}  // namespace

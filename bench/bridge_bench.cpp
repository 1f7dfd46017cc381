// A call of a native method from JavaScript, compared with reading and writing the same messages.
#include <cstdint>
#include <cstring>

#include "bench/bench_device.h"
#include "platform/napp.h"

namespace {

NApp_MethodCallback g_methodCall = nullptr;

}  // namespace

// Interposed before the host's function, to keep the callback that the library registers.
extern "C" TAV_PLATFORM_API bool NApp_RegisterKiteHandlers(NApp_MethodListCallback,
                                                           NApp_MethodCallback methodCall) {
    g_methodCall = methodCall;
    return true;
}

namespace {

using tavbench::BenchDevice;
using tavbench::expect;

constexpr char kAnswer[] = "42";

std::string methodName(std::int64_t index) {
    return "method" + std::to_string(index);
}

void writeCall(HDataWriter* writer, const std::string& name) {
    writer->writeStr(name.c_str());
    writer->writeInt(2);
    writer->writeStr("17");
    writer->writeStr("a text of ordinary length");
}

void answer(TAV_JSParameters* parameters) {
    TAV_JSReply(parameters, kAnswer);
}

bool readAndWrite(HDataReader* reader, HDataWriter* writer) {
    char name[256];
    reader->readStr(name, sizeof name);
    for (int count = reader->readInt(); count > 0; --count) {
        delete[] reader->allocReadStr();
    }
    writer->writeBool(false);
    writer->writeStr(kAnswer);
    return reader->isSuccessful();
}

bool isAnswer(const HDataWriter& writer) {
    HDataReader reader(writer.bytes(), writer.size());
    char text[8];
    const bool isException = reader.readBool();
    reader.readStr(text, sizeof text);
    return !isException && std::strcmp(text, kAnswer) == 0;
}

// Calls the method that was registered last.
void performCalls(benchmark::State& state, NApp_MethodCallback perform) {
    HDataWriter call;
    writeCall(&call, methodName(state.range(0) - 1));
    bool successful = true;
    for (auto _ : state) {
        HDataReader reader(call.bytes(), call.size());
        HDataWriter writer;
        benchmark::DoNotOptimize(successful = perform(&reader, &writer));
    }
    HDataReader reader(call.bytes(), call.size());
    HDataWriter writer;
    expect(state, successful && perform(&reader, &writer) && isAnswer(writer), "wrong answer");
}

void methodCallLibtav(benchmark::State& state) {
    const BenchDevice device(state);
    for (std::int64_t index = 0; index < state.range(0); ++index) {
        TAV_RegisterJSHandler(methodName(index).c_str(), answer);
    }
    TAV_JSRegistrationComplete();
    performCalls(state, g_methodCall);
}
BENCHMARK(methodCallLibtav)->Arg(1)->Arg(100)->Arg(1000);

void methodCallBare(benchmark::State& state) {
    const BenchDevice device(state);
    performCalls(state, readAndWrite);
}
BENCHMARK(methodCallBare)->Arg(1)->Arg(100)->Arg(1000);

}  // namespace

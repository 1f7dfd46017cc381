// What the fuzzers share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "simulator/device/journal.h"
#include "simulator/interface/device.h"

namespace tavfuzz {

// Aborts when a promise is broken, which the fuzzer reports as a finding.
inline void expect(bool holds, const char* promise) {
    if (!holds) {
        std::fprintf(stderr, "broken promise: %s\n", promise);
        std::abort();
    }
}

// One device for all inputs, in virtual time.
inline void startDevice() {
    tavsim::Options options;
    options.virtualTime = true;
    expect(tavsim::device().start({}, options), "the device starts");
}

// Every input begins with an empty journal, so that memory still held after it is a leak.
inline void forgetJournal() {
    std::string error;
    tavsim::startJournal({}, &error);
}

// Checks the error message about a refused input.
inline void expectOneLine(const std::string& error, const char* file) {
    expect(error.starts_with(file), "an error names the file");
    expect(error.find_first_of("\n\r") == error.npos, "an error is one line");
}

inline std::string textOf(const std::uint8_t* bytes, std::size_t size) {
    return {reinterpret_cast<const char*>(bytes), size};
}

}  // namespace tavfuzz

extern "C" {
__attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);
int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);
}

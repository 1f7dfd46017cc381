// What the fuzzers share.
#ifndef TAV_TESTS_FUZZ_FUZZ_H
#define TAV_TESTS_FUZZ_FUZZ_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "simulator/device/journal.h"
#include "simulator/interface/device.h"

namespace tavfuzz {

// Ends the run as a finding when a promise is broken.
inline void expect(bool holds, const char* promise) {
    if (!holds) {
        std::fprintf(stderr, "broken promise: %s\n", promise);
        std::abort();
    }
}

// One device for all inputs, in virtual time.
inline void startDevice(tavsim::Profile profile = {}) {
    tavsim::Options options;
    options.virtualTime = true;
    std::string error;
    if (!tavsim::device().start(std::move(profile), options, &error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        std::exit(1);
    }
}

// Every input begins with an empty journal, so that memory that is still held after an input is
// memory that leaked.
inline void forgetJournal() {
    std::string error;
    tavsim::startJournal({}, &error);
}

inline std::string textOf(const std::uint8_t* bytes, std::size_t size) {
    return {reinterpret_cast<const char*>(bytes), size};
}

}  // namespace tavfuzz

extern "C" {
int LLVMFuzzerInitialize(int* argc, char*** argv);
int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);
}

#endif

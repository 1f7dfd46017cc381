// What the fuzzers share.
#ifndef TAV_TESTS_FUZZ_FUZZ_H
#define TAV_TESTS_FUZZ_FUZZ_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

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

// Takes an input apart. Past its end there are zeros and empty texts.
class Input {
public:
    Input(const std::uint8_t* bytes, std::size_t size)
        : m_rest(reinterpret_cast<const char*>(bytes), size) {}

    bool isEmpty() const { return m_rest.empty(); }

    // Up to the next line feed, which is left out, or zero byte.
    std::string line() { return take(m_rest.find_first_of(std::string_view("\n\0", 2))); }

    std::string rest() { return take(m_rest.size()); }

private:
    std::string take(std::size_t end) {
        end = std::min(end, m_rest.size());
        std::string taken(m_rest.substr(0, end));
        m_rest.remove_prefix(std::min(end + 1, m_rest.size()));
        return taken;
    }

    std::string_view m_rest;
};

}  // namespace tavfuzz

extern "C" {
int LLVMFuzzerInitialize(int* argc, char*** argv);
int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);
}

#endif

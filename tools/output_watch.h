// Passes the program's output on, and matches its lines.
#pragma once

#include <string>
#include <thread>
#include <vector>

#include "base/descriptor.h"
#include "simulator/scenario/scenario.h"
#include "tools/process/process.h"

namespace tools {

// Pipes between the program's standard output and error and ours.
class OutputWatch {
public:
    explicit OutputWatch(std::vector<tavsim::ExpectedOutput> expected);
    ~OutputWatch() { stop(); }
    OutputWatch(const OutputWatch&) = delete;
    OutputWatch& operator=(const OutputWatch&) = delete;

    // Creates the pipes; false, with errno, on failure.
    bool open();

    // The program's ends of the pipes, for the start of its process.
    ProcessOutput programEnds() const;

    // Called when the program has started: passes its output on until stop(), which reads the rest.
    void start();
    void stop();

    // Whether a line has matched what is expected with this number. To be called after stop().
    bool hasSeen(size_t expected) const { return m_seen[expected]; }

private:
    struct Stream {
        base::Descriptor ours;
        base::Descriptor programs;
        int target;
        std::string line;  // incomplete so far
    };

    void passOn();
    void take(Stream& stream);
    void look(Stream& stream, std::string_view bytes);
    void lookAt(const std::string& line);

    std::vector<tavsim::ExpectedOutput> m_expected;
    std::vector<bool> m_seen;
    std::vector<Stream> m_streams;
    base::Descriptor m_end;  // becomes readable when it must stop
    std::thread m_thread;
};

}  // namespace tools

// What the program prints, passed on and looked at.
#ifndef TAV_TOOLS_OUTPUT_WATCH_H
#define TAV_TOOLS_OUTPUT_WATCH_H

#include <string>
#include <thread>
#include <vector>

#include "base/descriptor.h"
#include "tools/process/process.h"

namespace tools {

// Stands between the program's standard output and error and ours.
class OutputWatch {
public:
    explicit OutputWatch(std::vector<std::string> globs);
    ~OutputWatch() { stop(); }
    OutputWatch(const OutputWatch&) = delete;
    OutputWatch& operator=(const OutputWatch&) = delete;

    // Makes the pipes; false, with errno, when there are none to be had.
    bool open();

    // The program's ends, for the start of its process.
    ProcessOutput programEnds() const;

    // The program has started: passes on what it prints until stop(), which takes what is left.
    void start();
    void stop();

    // Whether a line has matched the glob with this number. After stop().
    bool hasSeen(size_t glob) const { return m_seen[glob]; }

private:
    struct Stream {
        base::Descriptor ours;
        base::Descriptor programs;
        int target;
        std::string line;  // which is not at its end yet
    };

    void passOn();
    void take(Stream& stream);
    void look(Stream& stream, std::string_view bytes);
    void lookAt(const std::string& line);

    std::vector<std::string> m_globs;
    std::vector<bool> m_seen;
    std::vector<Stream> m_streams;
    base::Descriptor m_end;  // readable when it is time to stop
    std::thread m_thread;
};

}  // namespace tools

#endif

#include "output_watch.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "simulator/language/pattern.h"

namespace tools {
namespace {

constexpr size_t kLongestLine = 64 << 10;  // the rest of a longer line is not matched

}  // namespace

OutputWatch::OutputWatch(std::vector<tavsim::ExpectedOutput> expected)
    : m_expected(std::move(expected)), m_seen(m_expected.size()) {
}

bool OutputWatch::open() {
    m_end = base::Descriptor(eventfd(0, EFD_CLOEXEC));
    for (const int target : {STDOUT_FILENO, STDERR_FILENO}) {
        int ends[2];
        if (m_end.number() < 0 || pipe2(ends, O_CLOEXEC) != 0) {
            return false;
        }
        fcntl(ends[0], F_SETFL, O_NONBLOCK);
        m_streams.push_back({base::Descriptor(ends[0]), base::Descriptor(ends[1]), target, {}});
    }
    return true;
}

ProcessOutput OutputWatch::programEnds() const {
    return {m_streams[0].programs.number(), m_streams[1].programs.number()};
}

void OutputWatch::start() {
    for (Stream& stream : m_streams) {
        stream.programs.close();
    }
    m_thread = std::thread([this] { passOn(); });
}

// Other processes may keep the program's ends of the pipes open, so this does not wait for their
// end.
void OutputWatch::stop() {
    if (!m_thread.joinable()) {
        return;
    }
    eventfd_write(m_end.number(), 1);
    m_thread.join();
    for (Stream& stream : m_streams) {
        take(stream);
        lookAt(stream.line);
    }
}

void OutputWatch::passOn() {
    pollfd waits[] = {{m_end.number(), POLLIN, 0},
                      {m_streams[0].ours.number(), POLLIN, 0},
                      {m_streams[1].ours.number(), POLLIN, 0}};
    while (poll(waits, std::size(waits), -1) < 0 || waits[0].revents == 0) {
        for (size_t n = 0; n < m_streams.size(); ++n) {
            if (waits[n + 1].revents != 0) {
                take(m_streams[n]);
            }
            if ((waits[n + 1].revents & POLLHUP) != 0) {
                waits[n + 1].fd = -1;
            }
        }
    }
}

void OutputWatch::take(Stream& stream) {
    char bytes[16 << 10];
    ssize_t count = 0;
    while ((count = read(stream.ours.number(), bytes, sizeof bytes)) > 0) {
        const std::string_view taken(bytes, static_cast<size_t>(count));
        base::writeAll(stream.target, taken);  // in vain once its reader has closed it
        look(stream, taken);
    }
}

void OutputWatch::look(Stream& stream, std::string_view bytes) {
    while (!bytes.empty()) {
        const size_t length = std::min(bytes.find('\n'), bytes.size());
        const size_t room = kLongestLine - stream.line.size();
        stream.line += bytes.substr(0, std::min(length, room));
        if (length < bytes.size()) {
            lookAt(stream.line);
            stream.line.clear();
        }
        bytes.remove_prefix(std::min(length + 1, bytes.size()));
    }
}

void OutputWatch::lookAt(const std::string& line) {
    for (size_t n = 0; n < m_expected.size(); ++n) {
        m_seen[n] = m_seen[n] || tavsim::matchesGlob(line, m_expected[n].glob);
    }
}

}  // namespace tools

// TAV_TRACE names the tags that are written, with commas between, or "all"; TAV_TRACE_FILE the file
// that they are appended to, standard error when it is unset.
#include "helper/trace.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <sstream>
#include <utility>

#include "platform/htracker.h"

namespace helper {
namespace {

class Tags {
public:
    explicit Tags(const std::string& names) {
        std::istringstream stream(names);
        for (std::string name; std::getline(stream, name, ',');) {
            m_names.insert(name);
        }
        m_all = m_names.contains("all");
    }

    bool empty() const { return m_names.empty(); }
    bool contains(const char* tag) const { return m_all || m_names.contains(tag); }

private:
    std::set<std::string> m_names;
    bool m_all = false;
};

struct Trace {
    Tags kept{""};
    std::vector<std::string> lines;
    Tags written{""};
    FILE* file = stderr;

    Trace() {
        const char* tags = std::getenv("TAV_TRACE");
        if (tags == nullptr) {
            return;
        }
        written = Tags(tags);
        const char* path = std::getenv("TAV_TRACE_FILE");
        if (path == nullptr) {
            return;
        }
        file = std::fopen(path, "ae");
        if (file == nullptr) {
            std::fprintf(stderr, "tavsim: TAV_TRACE_FILE: cannot write %s: %m\n", path);
            file = stderr;
        }
    }
};

// Never destroyed: libraries that are unloaded late still trace.
Trace& trace() {
    static Trace& instance = *new Trace;
    return instance;
}

enum class Listening { Unknown, No, Yes };
Listening g_listening = Listening::Unknown;

void updateListening() {
    const bool nobody = trace().kept.empty() && trace().written.empty();
    g_listening = nobody ? Listening::No : Listening::Yes;
}

std::string formatted(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    if (length > 0) {
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

void record(const char* tag, const char* function, const char* format, va_list arguments) {
    Trace& listeners = trace();
    const bool keep = listeners.kept.contains(tag);
    const bool write = listeners.written.contains(tag);
    if (!keep && !write) {
        return;
    }
    std::string line = std::string(tag) + ' ' + function + ' ' + formatted(format, arguments);
    if (write) {
        std::fprintf(listeners.file, "%s\n", line.c_str());
        std::fflush(listeners.file);
    }
    if (keep) {
        listeners.lines.push_back(std::move(line));
    }
}

}  // namespace

void keepTrace(const std::string& tags) {
    trace().kept = Tags(tags);
    trace().lines.clear();
    updateListening();
}

std::vector<std::string> takeTraceLines() {
    return std::exchange(trace().lines, {});
}

}  // namespace helper

int HTracker_funcTrack(const char* tag, const char* function, const char* format, ...) {
    if (helper::g_listening == helper::Listening::No) {
        return 0;
    }
    if (helper::g_listening == helper::Listening::Unknown) {
        helper::updateListening();
    }
    va_list arguments;
    va_start(arguments, format);
    helper::record(tag, function, format, arguments);
    va_end(arguments);
    return 0;
}

// TAV_TRACE names the tags that are written, with commas between, or "all"; TAV_TRACE_FILE the file
// that they are appended to, standard error when it is unset.
#include "helper/trace.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

#include "base/line_file.h"
#include "base/print_line.h"
#include "platform/htracker.h"

namespace helper {
namespace {

constexpr std::string_view kKnownTags[] = {"tav_f", "tav_e", "tav_1", "tav_2", "tav_9", "all"};

using Tags = std::set<std::string, std::less<>>;

Tags tagsIn(const std::string& names) {
    Tags tags;
    std::istringstream stream(names);
    for (std::string name; std::getline(stream, name, ',');) {
        if (!name.empty()) {
            tags.insert(name);
        }
    }
    return tags;
}

bool has(const Tags& tags, std::string_view tag) {
    return tags.contains(tag) || tags.contains("all");
}

struct Trace {
    Tags kept;
    std::vector<std::string> lines;
    Tags written;
    base::LineFile file;  // standard error when it is not open
};

// Never destroyed, because libraries that are unloaded later still trace.
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

// Starts the trace that the environment asks for.
void startTrace() {
    g_listening = Listening::No;  // valid also at exit, where destructors still trace
    const char* tags = std::getenv("TAV_TRACE");
    const char* path = std::getenv("TAV_TRACE_FILE");
    if (tags == nullptr) {
        return;
    }
    const Tags written = tagsIn(tags);
    const auto unknown = std::ranges::find_if(written, [](const std::string& tag) {
        return std::ranges::find(kKnownTags, tag) == std::end(kKnownTags);
    });
    if (unknown != written.end()) {
        std::string known;
        for (const std::string_view tag : kKnownTags) {
            known += (known.empty() ? "" : ", ") + std::string(tag);
        }
        traceCannotBeHad("TAV_TRACE: \"" + *unknown + "\" is none of " + known);
    }
    if (path != nullptr && !trace().file.open(path)) {
        traceCannotBeHad("TAV_TRACE_FILE: cannot write " + std::string(path) + ": " +
                         std::strerror(errno));
        return;
    }
    trace().written = written;
}

void listen() {
    if (g_listening == Listening::Unknown) {
        startTrace();
        updateListening();
    }
}

void write(const std::string& line) {
    base::LineFile& file = trace().file;
    if (!file.isOpen()) {
        base::printLine(stderr, line);
        return;
    }
    if (!file.append(line)) {
        const std::string problem = file.path() + ": " + std::strerror(errno);
        file.close();
        trace().written.clear();
        updateListening();
        traceCannotBeHad("TAV_TRACE_FILE: cannot write " + problem);
    }
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

// When memory is exhausted, the line is lost.
void record(const char* tag, const char* function, const char* format, va_list arguments) try {
    Trace& listeners = trace();
    const bool isKept = has(listeners.kept, tag);
    const bool isWritten = has(listeners.written, tag);
    if (!isKept && !isWritten) {
        return;
    }
    std::string line = std::string(tag) + ' ' + function + ' ' + formatted(format, arguments);
    if (isWritten) {
        write(line);
    }
    if (isKept) {
        listeners.lines.push_back(std::move(line));
    }
} catch (const std::bad_alloc&) {}

}  // namespace

void keepTrace(const std::string& tags) {
    listen();
    trace().kept = tagsIn(tags);
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
    helper::listen();
    va_list arguments;
    va_start(arguments, format);
    helper::record(tag, function, format, arguments);
    va_end(arguments);
    return 0;
}

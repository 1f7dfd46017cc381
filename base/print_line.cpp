#include "base/print_line.h"

#include <unistd.h>

#include "base/descriptor.h"

namespace base {
namespace {

struct Streams {
    std::optional<FileIdentity> output = identityOf(STDOUT_FILENO);
    std::optional<FileIdentity> error = identityOf(STDERR_FILENO);
};

Streams& streams() {
    static Streams instance;
    return instance;
}

[[maybe_unused]] const Streams& g_whenLoaded = streams();

}  // namespace

bool isStreamKept(FILE* stream) {
    const auto& expected = stream == stdout ? streams().output : streams().error;
    return expected && identityOf(fileno(stream)) == expected;
}

void printLine(FILE* stream, const std::string& line) {
    if (isStreamKept(stream)) {
        std::fflush(stdout);
        std::fprintf(stream, "%s\n", line.c_str());
    }
}

void acceptStreams() {
    streams() = {};
}

}  // namespace base

#include "journal.h"

#include <cstdio>
#include <fstream>

#include "base/child.h"
#include "simulator/language/explanation.h"
#include "tools/process/exit_status.h"

namespace tools {
namespace {

constexpr int kNone = 1;

}  // namespace

int showJournal(const std::vector<std::string>& words, bool withNumbers) {
    if (words.empty()) {
        return complain("journal: no file given");
    }
    const std::string text = base::joined({words.begin() + 1, words.end()});
    std::string error;
    const std::optional<tavsim::Pattern> pattern =
        text.empty() ? tavsim::Pattern() : tavsim::readPattern(text, &error);
    if (!pattern) {
        return complain("journal: " + error);
    }
    std::ifstream file(words[0]);
    if (!file) {
        return complain("journal: " + words[0] + ": cannot be read");
    }
    std::vector<std::string> others;
    bool isFound = false;
    std::string line;
    for (long number = 0; std::getline(file, line); ++number) {
        if (!tavsim::matches(line, *pattern)) {
            others.push_back(line);
            continue;
        }
        isFound = true;
        const std::string place = withNumbers ? std::to_string(number) + ":" : "";
        std::printf("%s%s\n", place.c_str(), line.c_str());
    }
    if (file.bad()) {
        return complain("journal: " + words[0] + ": cannot be read");
    }
    if (isFound) {
        return 0;
    }
    const std::string closest = tavsim::closestTo(*pattern, {others.begin(), others.end()});
    std::fprintf(stderr, "no such entry%s%s\n", closest.empty() ? "" : "; ", closest.c_str());
    return kNone;
}

}  // namespace tools

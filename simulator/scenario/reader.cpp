#include "simulator/scenario/reader.h"

#include <algorithm>
#include <filesystem>

#include "base/file.h"
#include "simulator/control/text_word.h"

namespace fs = std::filesystem;

namespace tavsim {
namespace {

constexpr size_t kMostBytes = 1 << 20;  // of all files together; an included file counts each time
constexpr size_t kMostSteps = 10000;
constexpr int kDeepestInclude = 16;
constexpr char kBlanks[] = " \t\r";

std::string_view trimmed(std::string_view text) {
    const size_t start = std::min(text.find_first_not_of(kBlanks), text.size());
    return text.substr(start, text.find_last_not_of(kBlanks) + 1 - start);
}

class Reader {
public:
    explicit Reader(Scenario* scenario) : m_scenario(scenario) {}

    // False, with a line in problem(), when the file or one that it includes is malformed. The line
    // begins with `prefix` when the file cannot be loaded.
    bool readFile(const std::string& file, const std::string& prefix, int depth);

    const std::string& problem() const { return m_problem; }

private:
    std::optional<std::string> load(const std::string& file, const std::string& prefix);
    bool readStatement(const Line& line, int depth);
    bool include(const Line& line, std::string_view file, int depth);
    bool failAt(const std::string& place, const std::string& problem);

    Scenario* m_scenario;
    std::string m_problem;
    size_t m_bytes = 0;
};

// Nothing, with a line in problem() that begins with `prefix`, when it cannot be loaded.
std::optional<std::string> Reader::load(const std::string& file, const std::string& prefix) {
    std::string error;
    std::optional<std::string> content = base::readFile(file, kMostBytes, &error);
    m_bytes += content ? content->size() : 0;
    if (m_bytes > kMostBytes) {
        error = file + ": more than 1 MiB, with what is included";
    } else if (content && content->find('\0') != std::string::npos) {
        error = file + ": no text: it has a zero byte";
    }
    m_problem = error.empty() ? "" : prefix + error;
    return error.empty() ? content : std::nullopt;
}

bool Reader::readFile(const std::string& file, const std::string& prefix, int depth) {
    const std::optional<std::string> content = load(file, prefix);
    if (!content) {
        return false;
    }
    const std::string folder = fs::path(file).parent_path();
    std::string_view rest = *content;
    for (int number = 1; !rest.empty(); ++number) {
        const std::string_view text = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(text.size() + 1, rest.size()));
        const Line line = {trimmed(text), file + ":" + std::to_string(number), folder};
        if (!line.text.empty() && line.text[0] != '#' && !readStatement(line, depth)) {
            return false;
        }
    }
    return true;
}

bool Reader::readStatement(const Line& line, int depth) {
    std::string_view rest = line.text;
    if (takeWord(&rest) == "include") {
        return include(line, rest, depth);
    }
    std::string error;
    if (!readHeader(line, m_scenario, &error)) {
        readStep(line, m_scenario, &error);
    }
    if (error.empty() && m_scenario->steps.size() + m_scenario->output.size() > kMostSteps) {
        error = "more than " + std::to_string(kMostSteps) + " steps";
    }
    return error.empty() || failAt(line.place, error);
}

bool Reader::include(const Line& line, std::string_view file, int depth) {
    if (file.empty()) {
        return failAt(line.place, "include: the file is missing");
    }
    if (depth >= kDeepestInclude) {
        return failAt(line.place, "include: more than " + std::to_string(kDeepestInclude) +
                                      " files deep; does a file include itself?");
    }
    const std::string path = fs::path(inFolder(line.folder, file)).lexically_normal();
    return readFile(path, line.place + ": include: ", depth + 1);
}

bool Reader::failAt(const std::string& place, const std::string& problem) {
    m_problem = place + ": " + problem;
    return false;
}

}  // namespace

std::optional<Scenario> readScenario(const std::string& file, std::string* error) {
    Scenario scenario;
    Reader reader(&scenario);
    if (!reader.readFile(file, {}, 0)) {
        *error = reader.problem();
        return std::nullopt;
    }
    return scenario;
}

}  // namespace tavsim

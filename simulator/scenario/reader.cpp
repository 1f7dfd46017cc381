#include "simulator/scenario/reader.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>

#include "simulator/control/text_word.h"
#include "simulator/scenario/statements.h"

namespace fs = std::filesystem;

namespace tavsim {
namespace {

constexpr size_t kMostBytes = 1 << 20;  // of all files together, each as often as it is included
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

    // False, with a line in problem(), when the file or one that it includes is malformed. `name`
    // is what the line calls it by.
    bool readFile(const std::string& file, const std::string& name, int depth);

    const std::string& problem() const { return m_problem; }

private:
    std::string load(const std::string& file, std::string* content);
    bool readStatement(const Line& line, int depth);
    bool include(const Line& line, std::string_view file, int depth);
    bool failAt(const std::string& place, const std::string& problem);

    Scenario* m_scenario;
    std::string m_problem;
    size_t m_bytes = 0;
};

// The reason why not; empty when it is loaded.
std::string Reader::load(const std::string& file, std::string* content) {
    std::error_code failure;
    if (!fs::is_regular_file(file, failure)) {
        return failure ? failure.message() : "no file of text";
    }
    const size_t room = kMostBytes - m_bytes + 1;
    const std::uintmax_t size = fs::file_size(file, failure);
    content->resize(static_cast<size_t>(std::min<std::uintmax_t>(size, room)));
    std::ifstream stream(file, std::ios::binary);
    if (!stream.read(content->data(), static_cast<std::streamsize>(content->size()))) {
        return "cannot be read";
    }
    m_bytes += content->size();
    if (m_bytes > kMostBytes) {
        return "more than 1 MiB, with what is included";
    }
    return content->find('\0') == std::string::npos ? "" : "no text: it has a zero byte";
}

bool Reader::readFile(const std::string& file, const std::string& name, int depth) {
    std::string content;
    if (const std::string reason = load(file, &content); !reason.empty()) {
        return failAt(name, reason);
    }
    const std::string folder = fs::path(file).parent_path();
    std::string_view rest = content;
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
    return readFile(path, line.place + ": include: " + path, depth + 1);
}

bool Reader::failAt(const std::string& place, const std::string& problem) {
    m_problem = place + ": " + problem;
    return false;
}

}  // namespace

std::optional<Scenario> readScenario(const std::string& file, std::string* error) {
    Scenario scenario;
    Reader reader(&scenario);
    if (!reader.readFile(file, file, 0)) {
        *error = reader.problem();
        return std::nullopt;
    }
    return scenario;
}

}  // namespace tavsim

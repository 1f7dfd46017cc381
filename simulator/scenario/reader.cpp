#include "simulator/scenario/reader.h"

#include <algorithm>
#include <filesystem>

#include "base/file.h"
#include "base/json/writer.h"
#include "simulator/language/words.h"
#include "simulator/scenario/check.h"
#include "simulator/scenario/parameters.h"

namespace fs = std::filesystem;

namespace tavsim {
namespace {

constexpr size_t kMostBytes = 1 << 20;  // of all files together; an included file counts each time
constexpr size_t kMostSteps = 10000;
constexpr int kDeepestInclude = 16;
constexpr char kEnd[] = "end";
constexpr char kBlanks[] = " \t\r";

std::string_view trimmed(std::string_view text) {
    const size_t start = std::min(text.find_first_not_of(kBlanks), text.size());
    return text.substr(start, text.find_last_not_of(kBlanks) + 1 - start);
}

// A file, while it is read.
struct Source {
    std::string name;
    int depth;
    Parameters parameters;
};

class Reader {
public:
    Reader(Scenario* scenario, std::string row) : m_scenario(scenario), m_row(std::move(row)) {}

    // False, with a line in problem(), when the file or one that it includes is malformed.
    bool readAll(const std::string& file);

    const std::string& problem() const { return m_problem; }

private:
    bool readFile(Source* source, const std::string& prefix);
    std::optional<std::string> load(const std::string& file, const std::string& prefix);
    bool fillIn(std::string* text, Parameters* parameters, std::string* error);
    bool readLine(const Line& line, Source* source);
    void readStatement(const Line& line, std::string* error);
    bool readBlock(const Line& line, Source* source);
    void endTable(Parameters* parameters, std::string* error);
    bool include(const Line& line, std::string_view text, const Source& source);
    bool fail(const std::string& place, const std::string& problem);

    bool isInTable() const { return !m_block.empty() && m_block == m_tablePlace; }

    Scenario* m_scenario;
    std::string m_row;  // of the table; empty: only its rows are wanted
    Table m_table;
    std::string m_tablePlace;  // empty: there is no table
    std::string m_block;       // where the block begins that has not ended
    bool m_hasBegun = false;   // what a table stands in front of
    bool m_isThrough = false;  // what is left is not wanted
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

bool Reader::readFile(Source* source, const std::string& prefix) {
    const std::optional<std::string> content = load(source->name, prefix);
    if (!content) {
        return false;
    }
    const std::string folder = fs::path(source->name).parent_path();
    std::string_view rest = *content;
    for (int number = 1; !rest.empty() && !m_isThrough; ++number) {
        const std::string_view whole = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(whole.size() + 1, rest.size()));
        const std::string_view written = trimmed(whole);
        if (written.empty() || written[0] == '#') {
            continue;
        }
        const std::string place = source->name + ":" + std::to_string(number);
        std::string text(written);
        std::string error;
        if (!isInTable() && !fillIn(&text, &source->parameters, &error)) {
            return fail(place, error);
        }
        if (!readLine({trimmed(text), place, folder}, source)) {
            return false;
        }
    }
    return m_block.empty() || fail(m_block, "the block has no end");
}

bool Reader::fillIn(std::string* text, Parameters* parameters, std::string* error) {
    const size_t before = text->size();
    const bool isDone = parameters->fillIn(text, kMostBytes - std::min(m_bytes, kMostBytes), error);
    m_bytes += std::max(text->size(), before) - before;
    return isDone;
}

bool Reader::readLine(const Line& line, Source* source) {
    if (!m_block.empty()) {
        return readBlock(line, source);
    }
    std::string error;
    std::string_view rest = line.text;
    const std::string_view word = takeWord(&rest);
    if (word == "table") {
        m_block = m_tablePlace = line.place;
        if (m_hasBegun) {
            error = "stands in front of everything else";
        }
        return (error.empty() && m_table.begin(rest, &error)) ||
               fail(line.place, "table: " + error);
    }
    m_hasBegun = true;
    if (word == "include") {
        return include(line, rest, *source);
    }
    if (line.text == kEnd) {
        return fail(line.place, "there is no block to end");
    }
    readStatement(line, &error);
    return error.empty() || fail(line.place, error);
}

void Reader::readStatement(const Line& line, std::string* error) {
    if (readHeader(line, m_scenario, error)) {
        return;
    }
    readStep(line, m_scenario, error);
    if (error->empty() && m_scenario->steps.size() + m_scenario->output.size() > kMostSteps) {
        *error = "more than " + std::to_string(kMostSteps) + " steps";
    }
    m_block = beginsBlock(*m_scenario) ? line.place : "";
}

bool Reader::readBlock(const Line& line, Source* source) {
    std::string error;
    if (line.text != kEnd) {
        isInTable() ? void(m_table.addRow(line.text, &error))
                    : readBlockLine(line, m_scenario, &error);
    } else if (isInTable()) {
        endTable(&source->parameters, &error);
    } else if (beginsBlock(*m_scenario)) {
        error = "the block is empty";
    }
    m_block = line.text == kEnd ? "" : m_block;
    return error.empty() || fail(line.place, error);
}

void Reader::endTable(Parameters* parameters, std::string* error) {
    m_isThrough = m_row.empty();
    if (m_isThrough) {
        m_scenario->rows = m_table.rows();
        *error = m_table.rows().empty() ? "the table is empty" : "";
    } else {
        m_table.choose(m_row, parameters, error);
    }
}

bool Reader::include(const Line& line, std::string_view text, const Source& source) {
    const std::optional<std::string> file = contentOf(takeWord(&text));
    if (!file || file->empty()) {
        return fail(line.place, "include: the file is missing");
    }
    if (source.depth >= kDeepestInclude) {
        return fail(line.place, "include: more than " + std::to_string(kDeepestInclude) +
                                    " files deep; does a file include itself?");
    }
    Source included = {fs::path(inFolder(line.folder, *file)).lexically_normal(), source.depth + 1,
                       Parameters(line.place)};
    std::string error;
    if (!included.parameters.addAll(text, &error)) {
        return fail(line.place, "include: " + error);
    }
    return readFile(&included, line.place + ": include: ") &&
           (included.parameters.areUsed(0, &error) || fail(line.place, "include: " + error));
}

bool Reader::readAll(const std::string& file) {
    Source source = {file, 0, {}};
    std::string error;
    if (!readFile(&source, {})) {
        return false;
    }
    if (m_tablePlace.empty()) {
        return m_row.empty() || fail(file, "no table, and so no row " + base::quoted(m_row));
    }
    return m_isThrough || source.parameters.areUsed(1, &error) ||
           fail(m_tablePlace, "table: " + error);
}

bool Reader::fail(const std::string& place, const std::string& problem) {
    m_problem = place + ": " + problem;
    return false;
}

}  // namespace

std::optional<Scenario> readScenario(const std::string& file, const std::string& row,
                                     std::string* error) {
    Scenario scenario;
    Reader reader(&scenario, row);
    *error = reader.readAll(file) ? whyUnreachable(scenario) : reader.problem();
    // The name of a file can hold anything, but a message is one line.
    std::replace_if(
        error->begin(), error->end(), [](char each) { return each == '\r' || each == '\n'; }, '?');
    return error->empty() ? std::optional(std::move(scenario)) : std::nullopt;
}

std::string whyNoRow(const std::string& file, const Scenario& scenario) {
    std::string names;
    for (const std::string& row : scenario.rows) {
        names += (names.empty() ? "" : ", ") + row;
    }
    return file + ": has a table, of which --row chooses a row: " + base::shortened(names);
}

}  // namespace tavsim

#include "simulator/scenario/parameters.h"

#include <algorithm>
#include <optional>

#include "base/json/writer.h"
#include "base/suggestion.h"
#include "simulator/language/words.h"

namespace tavsim {
namespace {

constexpr size_t kMost = 100;
constexpr size_t kMostRows = 1000;
constexpr std::string_view kOpening = "${";
constexpr std::string_view kNameLetters =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-";

bool fail(std::string problem, std::string* error) {
    *error = std::move(problem);
    return false;
}

bool isControl(char c) {
    return static_cast<unsigned char>(c) < ' ';
}

}  // namespace

std::string unfilled(std::string_view line) {
    std::string written;
    for (size_t at = 0; at < line.size(); ++at) {
        written += line.substr(at).starts_with(kOpening) ? "$" : "";
        written += line[at];
    }
    return written;
}

bool Parameters::add(std::string_view name, std::string_view value, std::string* error) {
    std::optional<std::string> content = contentOf(value);
    if (name.empty() || name.find_first_not_of(kNameLetters) != std::string_view::npos) {
        return fail(base::quoted(name) + ": a name has letters, digits, _ and -", error);
    }
    if (find(name) != nullptr) {
        return fail(base::quoted(name) + " is given twice", error);
    }
    if (!content || std::any_of(content->begin(), content->end(), isControl)) {
        return fail(
            base::quoted(value) +
                ": what begins with a quote must be a JSON string without control characters",
            error);
    }
    if (m_all.size() == kMost) {
        return fail("more than " + std::to_string(kMost) + " parameters", error);
    }
    m_all.push_back({std::string(name), *std::move(content)});
    return true;
}

bool Parameters::addAll(std::string_view text, std::string* error) {
    while (!text.empty()) {
        const std::string_view word = takeWord(&text);
        const size_t equals = word.find('=');
        if (equals == std::string_view::npos) {
            return fail(base::quoted(word) +
                            " is not NAME=VALUE; a file with blanks in its name stands in quotes",
                        error);
        }
        if (!add(word.substr(0, equals), word.substr(equals + 1), error)) {
            return false;
        }
    }
    return true;
}

bool Parameters::fillIn(std::string* text, size_t mostBytes, std::string* error) {
    std::string_view rest = *text;
    std::string filled;
    for (size_t start; (start = rest.find(kOpening)) != std::string_view::npos;) {
        const size_t behind = start + kOpening.size();
        if (start > 0 && rest[start - 1] == '$') {
            filled.append(rest.substr(0, start)).append("{");
            rest.remove_prefix(behind);
            continue;
        }
        const size_t end = std::min(rest.find('}', behind), rest.size());
        const std::string_view name = rest.substr(behind, end - behind);
        Parameter* parameter = find(name);
        if (parameter == nullptr || end == rest.size()) {
            return fail(whyUnknown(name), error);
        }
        parameter->isUsed = true;
        filled.append(rest.substr(0, start)).append(parameter->value);
        rest.remove_prefix(end + 1);
        if (filled.size() > mostBytes) {
            return fail("more than 1 MiB, with what is filled in", error);
        }
    }
    *text = filled.append(rest);
    return true;
}

bool Parameters::areUsed(size_t aside, std::string* error) const {
    const auto unused = std::ranges::find(m_all.begin() + static_cast<std::ptrdiff_t>(aside),
                                          m_all.end(), false, &Parameter::isUsed);
    return unused == m_all.end() ||
           fail("nothing uses the parameter " + base::quoted(unused->name), error);
}

Parameters::Parameter* Parameters::find(std::string_view name) {
    const auto found = std::ranges::find(m_all, name, &Parameter::name);
    return found != m_all.end() ? &*found : nullptr;
}

std::string Parameters::whyUnknown(std::string_view name) const {
    std::vector<std::string> names;
    std::ranges::transform(m_all, std::back_inserter(names), &Parameter::name);
    const std::string meant = base::suggestion(name, names);
    return "no parameter " + base::quoted(name) + " is given" + m_giver +
           (meant.empty() ? "; $${ stands for a literal ${" : meant);
}

bool Table::begin(std::string_view columns, std::string* error) {
    Parameters names;
    while (!columns.empty()) {
        const std::string_view name = takeWord(&columns);
        if (!names.add(name, {}, error)) {
            return false;
        }
        m_columns.emplace_back(name);
    }
    *error = m_columns.empty() ? "the columns are missing" : "";
    return error->empty();
}

bool Table::addRow(std::string_view values, std::string* error) {
    Parameters row;
    size_t count = 0;
    std::string name;
    for (; !values.empty(); ++count) {
        const std::string_view value = takeWord(&values);
        if (count < m_columns.size() && !row.add(m_columns[count], value, error)) {
            return false;
        }
        name = count == 0 ? contentOf(value).value_or("") : name;
    }
    if (count != m_columns.size()) {
        *error = std::to_string(count) + " values for " + std::to_string(m_columns.size()) +
                 " columns; one with blanks stands in double quotes";
    } else if (name.empty()) {
        *error = "the row's name is empty";
    } else if (std::find(m_rows.begin(), m_rows.end(), name) != m_rows.end()) {
        *error = "there are two rows " + base::quoted(name);
    } else if (m_rows.size() == kMostRows) {
        *error = "more than " + std::to_string(kMostRows) + " rows";
    }
    m_rows.push_back(std::move(name));
    m_values.push_back(std::move(row));
    return error->empty();
}

bool Table::choose(const std::string& row, Parameters* values, std::string* error) const {
    const auto found = std::find(m_rows.begin(), m_rows.end(), row);
    if (found == m_rows.end()) {
        *error = m_rows.empty() ? "there are no rows"
                                : "no row " + base::quoted(row) + base::suggestion(row, m_rows);
        return false;
    }
    *values = m_values[static_cast<size_t>(found - m_rows.begin())];
    return true;
}

}  // namespace tavsim

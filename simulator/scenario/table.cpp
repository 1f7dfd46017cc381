#include "simulator/scenario/table.h"

#include <algorithm>

#include "base/json/writer.h"
#include "base/suggestion.h"
#include "simulator/language/text_word.h"

namespace tavsim {
namespace {

constexpr size_t kMostRows = 1000;

}  // namespace

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

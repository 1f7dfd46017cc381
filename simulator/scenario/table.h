// The table of a scenario, whose rows are cases of their own.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "simulator/scenario/parameters.h"

namespace tavsim {

class Table {
public:
    // Each of these is false, with a line in `error`, when the text is malformed.

    // Reads the names of the columns. The first column names the rows.
    bool begin(std::string_view columns, std::string* error);
    bool addRow(std::string_view values, std::string* error);

    // The names of the rows.
    const std::vector<std::string>& rows() const { return m_rows; }

    // The values of the row of that name, under the names of their columns.
    bool choose(const std::string& row, Parameters* values, std::string* error) const;

private:
    std::vector<std::string> m_columns;
    std::vector<std::string> m_rows;
    std::vector<Parameters> m_values;  // of each row
};

}  // namespace tavsim

// The parameters of a scenario's file: names, and the values that stand in their place, of which
// each row of a table has its own.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/visibility.h"

namespace tavsim {

// The line as it is written in a file, so that filling it in gives the line again.
TAV_PLATFORM_API std::string unfilled(std::string_view line);

class Parameters {
public:
    Parameters() = default;
    // Of an included file: where it is included.
    explicit Parameters(const std::string& place) : m_giver(" by " + place) {}

    // Each of these is false, with a line in `error`, when it cannot be done.

    // A value in double quotes has JSON's escapes.
    bool add(std::string_view name, std::string_view value, std::string* error);

    // Reads NAME=VALUE… to the end of the text.
    bool addAll(std::string_view text, std::string* error);

    // Replaces each ${NAME} in the text, which can then have so many bytes at most; $${ stands for
    // a literal ${.
    bool fillIn(std::string* text, size_t mostBytes, std::string* error);

    // Whether each has been used, but for so many at the front.
    bool areUsed(size_t aside, std::string* error) const;

private:
    struct Parameter {
        std::string name;
        std::string value;
        bool isUsed = false;
    };

    Parameter* find(std::string_view name);
    std::string whyUnknown(std::string_view name) const;

    std::string m_giver;  // for messages

    std::vector<Parameter> m_all;
};

// The table of a scenario, whose rows are cases of their own.
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

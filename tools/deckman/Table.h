#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Output.h"

namespace Deckman {

/// Rows of cells, printed in columns that are as wide as they need to be.
class Table
{
public:
    struct Column
    {
        std::string_view heading;
        bool alignRight = false;
        std::string below = {}; ///< a second line of the heading: the unit of what stands in the column
    };

    /// Blanks ahead of a name that lies so deep; beyond what fits a screen all depths look the same.
    static std::string Indent(int depth);

    explicit Table(std::vector<Column> columns);

    /// The next cell of the row; the row is full after as many as there are columns. A `Faint` or `Alert` cell
    /// stands out on a terminal.
    void Add(std::string_view text, Style style = Style::Plain);
    void Add(long long number);

    /// Prints the headings and all rows. Without rows nothing is printed.
    void Print(Output& out) const;

private:
    struct Cell
    {
        std::size_t begin;
        std::size_t size;
        std::size_t width; // in characters
        Style style;
    };

    std::vector<Column> m_columns;
    std::vector<std::size_t> m_widths;
    std::vector<Cell> m_cells;
    std::string m_text;
};

} // namespace Deckman

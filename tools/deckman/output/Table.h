#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "output/Output.h"

namespace Deckman {

/// Rows of cells, printed in columns that are as wide as they need to be.
///
/// On a terminal that is too narrow for them, columns that may are cut first; then the table is printed in pieces one
/// below the other, each with the first column and as many others as there is room for.
class Table
{
public:
    /// What goes where there is no room for a column.
    enum class Cut : unsigned char
    {
        Nothing,
        Head, ///< of the name of a file, whose end tells more, and is a place by itself
        Tail,
    };
    struct Column
    {
        std::string_view heading;
        bool alignRight = false;
        std::string below = {}; ///< a second line of the heading: the unit of what stands in the column
        Cut cut = Cut::Nothing;
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

    std::vector<std::size_t> WidthsWithin(std::size_t width) const;
    void PrintColumns(Output& out, const std::vector<std::size_t>& columns,
                      const std::vector<std::size_t>& widths) const;

    std::vector<Column> m_columns;
    std::vector<std::size_t> m_widths;
    std::vector<Cell> m_cells;
    std::string m_text;
};

} // namespace Deckman

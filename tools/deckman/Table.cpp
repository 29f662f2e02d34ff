#include "Table.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace Deckman {

namespace {

constexpr std::size_t gap = 2;
constexpr int deepestIndent = 30;

/// Characters, not bytes: the bytes that begin a UTF-8 sequence.
std::size_t WidthOf(std::string_view text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

} // namespace

std::string Table::Indent(int depth)
{
    return std::string(2 * static_cast<std::size_t>(std::min(depth, deepestIndent)), ' ');
}

Table::Table(std::vector<Column> columns) : m_columns(std::move(columns))
{
    for (const Column& column : m_columns)
        m_widths.push_back(std::max(column.heading.size(), column.below.size()));
}

void Table::Add(std::string_view text, Style style)
{
    const Cell cell{m_text.size(), text.size(), WidthOf(text), style};
    std::size_t& width = m_widths[m_cells.size() % m_columns.size()];
    width = std::max(width, cell.width);
    m_text.append(text);
    m_cells.push_back(cell);
}

void Table::Add(long long number)
{
    const fmt::format_int digits(number);
    Add(std::string_view(digits.data(), digits.size()));
}

void Table::Print(Output& out) const
{
    if (m_cells.empty()) return;

    std::size_t pending = 0;
    const auto print = [&](std::size_t column, std::string_view text, std::size_t width, Style style) {
        const std::size_t padding = m_widths[column] - width;
        if (m_columns[column].alignRight) pending += padding;
        if (!text.empty()) {
            // Blanks are printed when something follows them: no line ends in blanks.
            out.AppendBlanks(pending);
            pending = 0;
            out.Append(text, style);
        }
        if (!m_columns[column].alignRight) pending += padding;
        pending += gap;
        if (column + 1 == m_columns.size()) {
            out.Append('\n');
            pending = 0;
        }
    };

    for (std::size_t i = 0; i < m_columns.size(); ++i)
        print(i, m_columns[i].heading, m_columns[i].heading.size(), Style::Heading);
    if (std::ranges::any_of(m_columns, [](const Column& column) { return !column.below.empty(); })) {
        for (std::size_t i = 0; i < m_columns.size(); ++i)
            print(i, m_columns[i].below, m_columns[i].below.size(), Style::Faint);
    }
    for (std::size_t i = 0; i < m_cells.size() && !out.Closed(); ++i) {
        const Cell& cell = m_cells[i];
        print(i % m_columns.size(), std::string_view(m_text).substr(cell.begin, cell.size), cell.width, cell.style);
    }
}

} // namespace Deckman

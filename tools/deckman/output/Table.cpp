#include "output/Table.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace Deckman {

namespace {

constexpr std::size_t gap = 2;
constexpr int deepestIndent = 30;
/// No column is cut to less.
constexpr std::size_t narrowest = 12;
constexpr std::string_view leftOut = "..";

/// Characters, not bytes: the bytes that begin a UTF-8 sequence.
std::size_t WidthOf(std::string_view text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

/// `text` of `width` characters without so many at one end that `kept` are left, two dots among them.
std::string CutTo(std::string_view text, std::size_t width, std::size_t kept, bool cutsHead)
{
    const auto isWithin = [&text](std::size_t at) { return at < text.size() && (text[at] & 0xC0) == 0x80; };
    if (cutsHead) {
        std::size_t begin = 0;
        for (std::size_t dropped = width - kept + leftOut.size(); dropped > 0; --dropped) {
            ++begin;
            while (isWithin(begin))
                ++begin;
        }
        return fmt::format("{}{}", leftOut, text.substr(begin));
    }
    std::size_t end = 0;
    for (std::size_t taken = kept - leftOut.size(); taken > 0; --taken) {
        ++end;
        while (isWithin(end))
            ++end;
    }
    return fmt::format("{}{}", text.substr(0, end), leftOut);
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

/// The widths of all columns, with those cut that may be, as far as that is needed.
std::vector<std::size_t> Table::WidthsWithin(std::size_t width) const
{
    std::vector<std::size_t> widths = m_widths;
    std::size_t total = gap * (widths.size() - 1);
    for (const std::size_t column : widths)
        total += column;
    while (width > 0 && total > width) {
        // The widest first, down to the next one: what is short stays whole.
        std::size_t widest = widths.size();
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const bool mayShrink = m_columns[i].cut != Cut::Nothing && widths[i] > narrowest;
            if (mayShrink && (widest == widths.size() || widths[i] > widths[widest])) widest = i;
        }
        if (widest == widths.size()) break;
        --widths[widest];
        --total;
    }
    return widths;
}

void Table::Print(Output& out) const
{
    if (m_cells.empty()) return;
    const std::vector<std::size_t> widths = WidthsWithin(out.Columns());
    std::size_t next = 0;
    while (next < m_columns.size() && !out.Closed()) {
        std::vector<std::size_t> columns;
        std::size_t width = 0;
        if (next > 0) {
            columns.push_back(0);
            width = widths[0];
        }
        const std::size_t begin = next;
        for (; next < m_columns.size(); ++next) {
            const std::size_t wider = width + (columns.empty() ? 0 : gap) + widths[next];
            if (out.Columns() > 0 && wider > out.Columns() && next > std::max<std::size_t>(begin, 1)) break;
            width = wider;
            columns.push_back(next);
        }
        if (begin > 0) out.Append('\n');
        PrintColumns(out, columns, widths);
    }
}

void Table::PrintColumns(Output& out, const std::vector<std::size_t>& columns,
                         const std::vector<std::size_t>& widths) const
{
    std::size_t pending = 0;
    const auto print = [&](std::size_t column, std::string_view text, std::size_t width, Style style) {
        std::string cut;
        if (width > widths[column]) {
            cut = CutTo(text, width, widths[column], m_columns[column].cut == Cut::Head);
            text = cut;
            width = widths[column];
        }
        const std::size_t padding = widths[column] - width;
        if (m_columns[column].alignRight) pending += padding;
        if (!text.empty()) {
            // Blanks are printed when something follows them: no line ends in blanks.
            out.AppendBlanks(pending);
            pending = 0;
            out.Append(text, style);
        }
        if (!m_columns[column].alignRight) pending += padding;
        pending += gap;
        if (column == columns.back()) {
            out.Append('\n');
            pending = 0;
        }
    };

    for (const std::size_t i : columns)
        print(i, m_columns[i].heading, m_columns[i].heading.size(), Style::Heading);
    if (std::ranges::any_of(columns, [this](std::size_t i) { return !m_columns[i].below.empty(); })) {
        for (const std::size_t i : columns)
            print(i, m_columns[i].below, m_columns[i].below.size(), Style::Faint);
    }
    for (std::size_t row = 0; row + m_columns.size() <= m_cells.size() && !out.Closed(); row += m_columns.size()) {
        for (const std::size_t i : columns) {
            const Cell& cell = m_cells[row + i];
            print(i, std::string_view(m_text).substr(cell.begin, cell.size), cell.width, cell.style);
        }
    }
}

} // namespace Deckman

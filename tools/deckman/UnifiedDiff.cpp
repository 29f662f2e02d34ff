#include "UnifiedDiff.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>

namespace Deckman {

namespace {

constexpr std::size_t contextLines = 3;

std::vector<std::string_view> LinesOf(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        lines.push_back(line);
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return lines;
}

/// "12,3"; a stretch without lines counts from the line ahead of it.
std::string Stretch(long long line, std::size_t count)
{
    if (count == 0) --line;
    return count == 1 ? fmt::format("{}", line) : fmt::format("{},{}", line, count);
}

} // namespace

void UnifiedDiff::Add(const std::string& file, int line, std::string_view before, std::string_view after)
{
    const std::vector<std::string_view> old = LinesOf(before);
    const std::vector<std::string_view> changed = LinesOf(after);
    const std::size_t both = std::min(old.size(), changed.size());
    std::size_t head = 0;
    while (head < both && old[head] == changed[head])
        ++head;
    std::size_t tail = 0;
    while (tail < both - head && old[old.size() - 1 - tail] == changed[changed.size() - 1 - tail])
        ++tail;
    if (head == old.size() && head == changed.size()) return;

    if (file != m_file) {
        m_out.Append(fmt::format("--- {0}\n+++ {0}\n", file), Style::Strong);
        m_file = file;
    }
    const std::size_t begin = head - std::min(head, contextLines);
    const std::size_t behind = std::min(tail, contextLines);
    const std::size_t oldEnd = old.size() - tail;
    const std::size_t changedEnd = changed.size() - tail;
    long long& shift = m_shifts[file];
    const long long first = line + static_cast<long long>(begin);
    m_out.Append(fmt::format("@@ -{} +{} @@\n", Stretch(first, oldEnd + behind - begin),
                             Stretch(first + shift, changedEnd + behind - begin)),
                 Style::Faint);
    const auto print = [this](char mark, std::string_view text) {
        m_out.Append(mark);
        m_out.Append(text);
        m_out.Append('\n');
    };
    for (std::size_t i = begin; i < head; ++i)
        print(' ', old[i]);
    for (std::size_t i = head; i < oldEnd; ++i)
        print('-', old[i]);
    for (std::size_t i = head; i < changedEnd; ++i)
        print('+', changed[i]);
    for (std::size_t i = oldEnd; i < oldEnd + behind; ++i)
        print(' ', old[i]);
    shift += static_cast<long long>(changed.size()) - static_cast<long long>(old.size());
}

} // namespace Deckman

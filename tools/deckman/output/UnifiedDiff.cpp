#include "output/UnifiedDiff.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "output/SequenceAlignment.h"

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

std::vector<std::uint64_t> HashesOf(const std::vector<std::string_view>& lines)
{
    std::vector<std::uint64_t> hashes(lines.size());
    std::transform(lines.begin(), lines.end(), hashes.begin(), std::hash<std::string_view>());
    return hashes;
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

    PrintHeading(file);
    const std::size_t begin = head - std::min(head, contextLines);
    const std::size_t behind = std::min(tail, contextLines);
    const std::size_t oldEnd = old.size() - tail;
    const std::size_t changedEnd = changed.size() - tail;
    long long& shift = m_shifts[file];
    const long long first = line + static_cast<long long>(begin);
    m_out.Append(fmt::format("@@ -{} +{} @@\n", Stretch(first, oldEnd + behind - begin),
                             Stretch(first + shift, changedEnd + behind - begin)),
                 Style::Faint);
    for (std::size_t i = begin; i < head; ++i)
        PrintLine(' ', old[i]);
    for (std::size_t i = head; i < oldEnd; ++i)
        PrintLine('-', old[i]);
    for (std::size_t i = head; i < changedEnd; ++i)
        PrintLine('+', changed[i]);
    for (std::size_t i = oldEnd; i < oldEnd + behind; ++i)
        PrintLine(' ', old[i]);
    shift += static_cast<long long>(changed.size()) - static_cast<long long>(old.size());
}

void UnifiedDiff::AddFile(const std::string& file, std::string_view before, std::string_view after)
{
    const std::vector<std::string_view> old = LinesOf(before);
    const std::vector<std::string_view> changed = LinesOf(after);
    const std::vector<std::pair<int, int>> pairs = Align(HashesOf(old), HashesOf(changed));
    const std::vector<Gap> gaps = GapsAround(pairs, static_cast<int>(old.size()), static_cast<int>(changed.size()));
    const auto context = static_cast<int>(contextLines);
    for (std::size_t first = 0; first < gaps.size();) {
        std::size_t behind = first + 1;
        while (behind < gaps.size() && gaps[behind].beginA - gaps[behind - 1].endA <= 2 * context)
            ++behind;
        const Gap& last = gaps[behind - 1];
        const int lead = std::min(gaps[first].beginA, context);
        const int trail = std::min(static_cast<int>(old.size()) - last.endA, context);
        PrintHeading(file);
        const auto stretch = [](int begin, int end) {
            return Stretch(begin + 1, static_cast<std::size_t>(end - begin));
        };
        m_out.Append(fmt::format("@@ -{} +{} @@\n", stretch(gaps[first].beginA - lead, last.endA + trail),
                                 stretch(gaps[first].beginB - lead, last.endB + trail)),
                     Style::Faint);
        int shown = gaps[first].beginA - lead;
        const auto printOld = [&](char mark, int end) {
            for (; shown < end; ++shown)
                PrintLine(mark, old[static_cast<std::size_t>(shown)]);
        };
        for (; first < behind; ++first) {
            printOld(' ', gaps[first].beginA);
            printOld('-', gaps[first].endA);
            for (int i = gaps[first].beginB; i < gaps[first].endB; ++i)
                PrintLine('+', changed[static_cast<std::size_t>(i)]);
        }
        printOld(' ', last.endA + trail);
    }
}

void UnifiedDiff::PrintHeading(const std::string& file)
{
    if (file == m_file) return;
    // Each line by itself: a pager forgets a style at its end.
    for (const std::string_view mark : {"---", "+++"}) {
        m_out.Append(fmt::format("{} {}", mark, file), Style::Strong);
        m_out.Append('\n');
    }
    m_file = file;
}

void UnifiedDiff::PrintLine(char mark, std::string_view text)
{
    const Style style = mark == '+' ? Style::Added : mark == '-' ? Style::Alert : Style::Plain;
    m_out.Append(fmt::format("{}{}", mark, text), style);
    m_out.Append('\n');
}

} // namespace Deckman

#include "output/SequenceAlignment.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>

namespace Deckman {

namespace {

using Tokens = std::span<const std::uint64_t>;
using Pairs = std::vector<std::pair<int, int>>;

/// Stretches up to this product of lengths are solved exactly.
constexpr std::int64_t mostCells = 1 << 20;
constexpr int mostRounds = 24;

std::size_t At(int index)
{
    return static_cast<std::size_t>(index);
}

class Aligner
{
public:
    Aligner(Tokens a, Tokens b) : m_a(a), m_b(b) {}

    Pairs Run()
    {
        std::vector<Job> jobs{{{0, static_cast<int>(m_a.size()), 0, static_cast<int>(m_b.size())}, 0}};
        while (!jobs.empty()) {
            const Job job = jobs.back();
            jobs.pop_back();
            Solve(job, jobs);
        }
        std::ranges::sort(m_pairs);
        return std::move(m_pairs);
    }

private:
    struct Job
    {
        Gap gap;
        int round;
    };

    void Pair(int a, int b) { m_pairs.emplace_back(a, b); }

    void Solve(const Job& job, std::vector<Job>& jobs)
    {
        Gap gap = job.gap;
        while (gap.beginA < gap.endA && gap.beginB < gap.endB && m_a[At(gap.beginA)] == m_b[At(gap.beginB)])
            Pair(gap.beginA++, gap.beginB++);
        while (gap.beginA < gap.endA && gap.beginB < gap.endB && m_a[At(gap.endA - 1)] == m_b[At(gap.endB - 1)])
            Pair(--gap.endA, --gap.endB);
        if (gap.beginA == gap.endA || gap.beginB == gap.endB) return;

        const std::int64_t cells = std::int64_t(gap.endA - gap.beginA + 1) * std::int64_t(gap.endB - gap.beginB + 1);
        if (cells <= mostCells) {
            SolveExactly(gap);
            return;
        }
        const Pairs anchors = job.round < mostRounds ? UniqueInBoth(gap) : Pairs();
        if (anchors.empty()) {
            SolveGreedily(gap);
            return;
        }
        int beginA = gap.beginA, beginB = gap.beginB;
        for (const auto& [a, b] : anchors) {
            Pair(a, b);
            jobs.push_back({{beginA, a, beginB, b}, job.round + 1});
            beginA = a + 1;
            beginB = b + 1;
        }
        jobs.push_back({{beginA, gap.endA, beginB, gap.endB}, job.round + 1});
    }

    /// The longest ascending row of pairs of tokens that occur once on either side.
    Pairs UniqueInBoth(const Gap& gap) const
    {
        struct Count
        {
            int inA = 0;
            int inB = 0;
            int atB = 0;
        };
        std::unordered_map<std::uint64_t, Count> counts;
        for (int i = gap.beginA; i < gap.endA; ++i)
            ++counts[m_a[At(i)]].inA;
        for (int j = gap.beginB; j < gap.endB; ++j) {
            if (const auto found = counts.find(m_b[At(j)]); found != counts.end()) {
                ++found->second.inB;
                found->second.atB = j;
            }
        }
        Pairs candidates;
        for (int i = gap.beginA; i < gap.endA; ++i) {
            const Count& count = counts[m_a[At(i)]];
            if (count.inA == 1 && count.inB == 1) candidates.emplace_back(i, count.atB);
        }
        return LongestAscending(candidates);
    }

    static Pairs LongestAscending(const Pairs& candidates)
    {
        std::vector<std::size_t> tails; // the candidate that ends the best row of each length
        std::vector<std::ptrdiff_t> before(candidates.size(), -1);
        for (std::size_t i = 0; i < candidates.size(); ++i) {
            const auto place = std::ranges::lower_bound(tails, candidates[i].second, {},
                                                        [&](std::size_t tail) { return candidates[tail].second; });
            if (place != tails.begin()) before[i] = static_cast<std::ptrdiff_t>(*(place - 1));
            if (place == tails.end())
                tails.push_back(i);
            else
                *place = i;
        }
        Pairs row;
        for (std::ptrdiff_t i = tails.empty() ? -1 : static_cast<std::ptrdiff_t>(tails.back()); i >= 0;
             i = before[static_cast<std::size_t>(i)])
            row.push_back(candidates[static_cast<std::size_t>(i)]);
        std::ranges::reverse(row);
        return row;
    }

    /// The longest common subsequence by the table of all lengths.
    void SolveExactly(const Gap& gap)
    {
        const auto rows = At(gap.endA - gap.beginA), columns = At(gap.endB - gap.beginB);
        const std::size_t stride = columns + 1;
        m_lengths.assign((rows + 1) * stride, 0);
        for (std::size_t i = rows; i-- > 0;) {
            for (std::size_t j = columns; j-- > 0;) {
                const bool same = m_a[At(gap.beginA) + i] == m_b[At(gap.beginB) + j];
                m_lengths[i * stride + j] =
                    same ? m_lengths[(i + 1) * stride + j + 1] + 1
                         : std::max(m_lengths[(i + 1) * stride + j], m_lengths[i * stride + j + 1]);
            }
        }
        for (std::size_t i = 0, j = 0; i < rows && j < columns;) {
            if (m_a[At(gap.beginA) + i] == m_b[At(gap.beginB) + j])
                Pair(gap.beginA + static_cast<int>(i++), gap.beginB + static_cast<int>(j++));
            else if (m_lengths[(i + 1) * stride + j] >= m_lengths[i * stride + j + 1])
                ++i;
            else
                ++j;
        }
    }

    /// Each token takes the first equal one behind the last that was taken, unless that would leave much behind.
    void SolveGreedily(const Gap& gap)
    {
        std::unordered_map<std::uint64_t, std::vector<int>> places; // descending
        for (int j = gap.endB; j-- > gap.beginB;)
            places[m_b[At(j)]].push_back(j);
        const int farthest = std::max(64, (gap.endB - gap.beginB) / 64);
        int next = gap.beginB;
        for (int i = gap.beginA; i < gap.endA; ++i) {
            const auto found = places.find(m_a[At(i)]);
            if (found == places.end()) continue;
            std::vector<int>& left = found->second;
            while (!left.empty() && left.back() < next)
                left.pop_back();
            if (left.empty() || left.back() - next > farthest) continue;
            next = left.back() + 1;
            Pair(i, left.back());
        }
    }

    Tokens m_a;
    Tokens m_b;
    Pairs m_pairs;
    std::vector<int> m_lengths;
};

} // namespace

std::vector<std::pair<int, int>> Align(Tokens a, Tokens b)
{
    return Aligner(a, b).Run();
}

std::vector<Gap> GapsAround(std::span<const std::pair<int, int>> pairs, int sizeA, int sizeB)
{
    std::vector<Gap> gaps;
    Gap gap{0, 0, 0, 0};
    const auto close = [&](int a, int b) {
        gap.endA = a;
        gap.endB = b;
        if (!gap.IsEmpty()) gaps.push_back(gap);
        gap.beginA = a + 1;
        gap.beginB = b + 1;
    };
    for (const auto& [a, b] : pairs)
        close(a, b);
    close(sizeA, sizeB);
    return gaps;
}

} // namespace Deckman

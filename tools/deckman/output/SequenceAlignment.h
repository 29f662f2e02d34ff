#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace Deckman {

/// Pairs of equal tokens of two sequences, ascending in both: what stayed where it was, as a long common subsequence
/// tells it. Tokens that are unique in both decide first, so that the time grows little faster than the lengths,
/// whatever the sequences hold; small stretches between them are solved exactly.
std::vector<std::pair<int, int>> Align(std::span<const std::uint64_t> a, std::span<const std::uint64_t> b);

/// Two stretches that lie between pairs, ends exclusive.
struct Gap
{
    int beginA;
    int endA;
    int beginB;
    int endB;

    bool IsEmpty() const { return beginA == endA && beginB == endB; }
};

/// The stretches around ascending pairs, the empty ones left out.
std::vector<Gap> GapsAround(std::span<const std::pair<int, int>> pairs, int sizeA, int sizeB);

} // namespace Deckman

#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Deckman {

/// The candidates that are closest to `word` by edit distance (a swap of neighbours counts once), the best first, at
/// most `limit`, and none that has little to do with it. Case doesn't count. Equal distances keep the candidates'
/// order, and a candidate that is there twice comes once.
std::vector<std::string> Nearest(std::string_view word, std::span<const std::string_view> candidates,
                                 std::size_t limit = 3);

/// " Nearest: A, B." for the end of a message; empty when nothing is near.
std::string NearestHint(std::string_view word, std::span<const std::string_view> candidates);

/// The same, of the names that the catalogue knows.
std::string NearestKeywordHint(std::string_view word);

/// The same as `NearestHint`; when nothing is near, " WHAT: A, B, C." with all the names, or how many more there are
/// than can be told. Empty names don't count.
std::string NearestOrAllHint(std::string_view word, std::span<const std::string_view> candidates,
                             std::string_view what);

} // namespace Deckman

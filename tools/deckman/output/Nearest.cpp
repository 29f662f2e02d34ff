#include "output/Nearest.h"

#include <algorithm>
#include <utility>

#include <deckmanager/Environment.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/service/Strings.h>

namespace Deckman {

namespace DeckManager = Tarn::Fjel::Core::DeckManager;
namespace Keywords = Tarn::Fjel::Core::Keywords;

namespace {

std::size_t Distance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> older, previous(b.size() + 1), current(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        previous[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        current[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t change = previous[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            current[j] = std::min({previous[j] + 1, current[j - 1] + 1, change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                current[j] = std::min(current[j], older[j - 2] + 1);
        }
        older = std::exchange(previous, current);
    }
    return previous[b.size()];
}

} // namespace

std::vector<std::string> Nearest(std::string_view word, std::span<const std::string_view> candidates, std::size_t limit)
{
    using Tarn::Fjel::Core::Service::Uppercased;
    const std::string wanted = Uppercased(word);
    std::vector<std::pair<std::size_t, std::string_view>> ranked;
    for (const std::string_view candidate : candidates) {
        const std::size_t distance = Distance(wanted, Uppercased(candidate));
        const std::size_t allowed = std::max<std::size_t>(1, std::max(wanted.size(), candidate.size()) / 3);
        if (distance <= allowed) ranked.emplace_back(distance, candidate);
    }
    std::stable_sort(ranked.begin(), ranked.end(), [](const auto& a, const auto& b) { return a.first < b.first; });

    std::vector<std::string> result;
    for (const auto& entry : ranked) {
        if (result.size() == limit) break;
        if (std::ranges::find(result, entry.second) == result.end()) result.emplace_back(entry.second);
    }
    return result;
}

std::string NearestHint(std::string_view word, std::span<const std::string_view> candidates)
{
    std::string hint;
    for (const std::string& name : Nearest(word, candidates)) {
        hint += hint.empty() ? " Nearest: " : ", ";
        hint += name;
    }
    return hint.empty() ? hint : hint + ".";
}

std::string NearestKeywordHint(std::string_view word)
{
    std::vector<std::string_view> names;
    for (const Keywords::IKeywordSyntax* syntax : DeckManager::Environment::Instance().GetSyntaxTable()->GetSyntaxes())
        names.insert(names.end(), syntax->GetNames().begin(), syntax->GetNames().end());
    return NearestHint(word, names);
}

std::string NearestOrAllHint(std::string_view word, std::span<const std::string_view> candidates, std::string_view what)
{
    constexpr std::size_t mostTold = 16;
    if (std::string near = NearestHint(word, candidates); !near.empty()) return near;
    std::string hint;
    std::size_t names = 0;
    for (const std::string_view name : candidates) {
        if (name.empty() || ++names > mostTold) continue;
        hint += names == 1 ? fmt::format(" {}: ", what) : ", ";
        hint += name;
    }
    if (names > mostTold) hint += fmt::format(" and {} more", names - mostTold);
    return hint.empty() ? hint : hint + ".";
}

} // namespace Deckman

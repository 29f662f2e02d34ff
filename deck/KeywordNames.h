#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;

/// The first keyword of each name, in each stretch of the deck that was asked for: a section, or the whole deck, which
/// stands for every section that the deck lacks.
struct KeywordNames
{
    struct Hash
    {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>()(name); }
    };
    using Firsts = std::unordered_map<std::string, const IKeyword*, Hash, std::equal_to<>>;

    std::array<std::optional<Firsts>, Keywords::SectionCount> sections;
    std::optional<Firsts> deck;

    // The index holds as long as these stand where they stood: a link may come alive without an event.
    unsigned long long links = 0;
    bool endedByEND = false;
};

} // namespace Tarn::Fjel::Core::DeckManager

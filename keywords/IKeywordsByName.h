#pragma once

#include <string_view>

#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;

/// What a deck view may have besides `IDeckKeywords`: it answers from an index where the first keyword of a name
/// stands. Expressions ask it; for a view without it they walk.
class IKeywordsByName
{
public:
    /// The first keyword of that name between the section's begin and its end, or from the deck's first keyword on
    /// where the deck lacks the section. Null when there is none. A loan, good until a file of the deck changes.
    virtual const IKeyword* FirstOfName(Keywords::SectionType section, std::string_view name) const = 0;

protected:
    ~IKeywordsByName() = default;
};

} // namespace Tarn::Fjel::Core::DeckManager

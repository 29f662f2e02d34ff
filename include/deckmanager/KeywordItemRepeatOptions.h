#pragma once

#include <cstdint>

namespace Tarn::Fjel::Core::DeckManager {

/// How long a run of equal tokens may be before a writer joins it into one `n*value` token: with 4, four equal tokens
/// stay as they are and five become a repeat. 0 leaves every run as it is.
struct KeywordItemRepeatOptions
{
    /// A value in a list of items.
    std::int32_t listValueRepeat = 4;
    /// "1*" in a list of items.
    std::int32_t listDefaultRepeat = 4;
    /// A value in a record.
    std::int32_t recordValueRepeat = 4;
    /// "1*" in a record.
    std::int32_t recordDefaultRepeat = 4;
};

} // namespace Tarn::Fjel::Core::DeckManager

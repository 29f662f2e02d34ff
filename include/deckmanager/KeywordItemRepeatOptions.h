#pragma once

#include <cstdint>

namespace Tarn::Fjel::Core::DeckManager {

/// From how many equal neighbours on a writer joins items into one `n*value` token, and how many such tokens it looks
/// for; one pair for lists of items, one for records.
struct KeywordItemRepeatOptions
{
    std::int32_t listRepeatFirst = 4;
    std::int32_t listRepeatSecond = 4;
    std::int32_t recordRepeatFirst = 4;
    std::int32_t recordRepeatSecond = 4;
};

} // namespace Tarn::Fjel::Core::DeckManager

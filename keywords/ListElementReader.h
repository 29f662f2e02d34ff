#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordMD;
}

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;
class ILineReader;

/// Finds one element of a keyword whose data are one list of numbers or strings, and counts the others without reading
/// them.
///
/// It answers only where a read of all data would have nothing to tell: no message but those of a probe, no reference
/// to a variable. For every other text it knows no answer, sends nothing, and the data must be read whole.
class ListElementReader
{
public:
    ListElementReader() = delete;

    struct Found
    {
        std::int64_t count = 0;           ///< elements of the list
        std::optional<std::string> token; ///< of the element, out of its quotes and its repeat; empty for a miss
    };

    /// Data of this shape are such a list.
    static bool Suits(const Keywords::IKeywordMD& md);

    /// The extent is given as to `KeywordDataDeserializer`. Moves the reader. REQUIRES: the shape of the keyword's data
    /// suits.
    static std::optional<Found> Find(std::int64_t index, const IKeyword& keyword, ILineReader& reader, long long start,
                                     long long length, bool firstLineIsKeywordName);
};

} // namespace Tarn::Fjel::Core::DeckManager

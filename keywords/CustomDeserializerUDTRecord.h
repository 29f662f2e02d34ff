#pragma once

#include <array>
#include <cstdint>

#include "keywords/IDeserializer.h"

namespace Tarn::Fjel::Core::Keywords {
class IKeywordListData;
class IKeywordRecordMD;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

/// Reads the table of UDT: a line with its name and the number of its dimensions, a line for each dimension, then rows
/// of reals, where each enclosing dimension ends with a terminator alone. Refuses a table whose rows don't fit the
/// dimensions.
class CustomDeserializerUDTRecord : public IDeserializer
{
public:
    /// Throws DeckManagerException unless the root is a record of that shape.
    explicit CustomDeserializerUDTRecord(const Keywords::IKeywordMD* root);

    bool Deserialize(Keywords::IKeywordData& data, KeywordDataStore& store, const Context& context,
                     DeserializeState& state, KeywordVariables* variables) override;

private:
    static constexpr int maxDimensions = 4;
    using Counts = std::array<std::int64_t, maxDimensions>;

    /// What a read is made with.
    struct Read
    {
        KeywordDataStore& store;
        const Context& context;
        DeserializeState& state;
        KeywordVariables* variables;
    };

    static bool ReadDimension(Keywords::IKeywordListData& dimensions, const Read& read, std::int64_t& count);
    static bool ReadRows(Keywords::IKeywordListData& rows, const Counts& counts, const Read& read);
    static bool ReadRow(Keywords::IKeywordListData& rows, std::int64_t expected, const Read& read);
    static bool ReadEnd(int dimensionCount, const Read& read);

    const Keywords::IKeywordRecordMD* m_record = nullptr;
};

} // namespace Tarn::Fjel::Core::DeckManager

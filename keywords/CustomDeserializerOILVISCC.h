#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "keywords/IDeserializer.h"
#include "keywords/SlotPlaces.h"

namespace Tarn::Fjel::Core::Keywords {
class IKeywordItemMD;
class IKeywordListData;
class IKeywordListMD;
class IKeywordOptionMD;
class IKeywordRecordData;
class IKeywordRecordMD;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

/// Reads the tables of OILVISCC: records of two option names and a run of reals, which is split into one list for each
/// coefficient as the two names say. A terminator alone ends a table.
class CustomDeserializerOILVISCC : public IDeserializer
{
public:
    /// Throws DeckManagerException unless the root is a list of lists of such records.
    explicit CustomDeserializerOILVISCC(const Keywords::IKeywordMD* root);

    /// A pair of names that no split is known for throws DeckManagerException.
    bool Deserialize(Keywords::IKeywordData& data, KeywordDataStore& store, const Context& context,
                     DeserializeState& state, KeywordVariables* variables) override;

private:
    /// A value of the run, and how often it stands there.
    struct Values
    {
        double value;
        bool defaulted;
        std::string variable; ///< the token, where it refers to a variable
        std::int64_t count;
        SlotPlaces::Token place; ///< where it stands, if somebody asks
    };

    bool ReadRecord(Keywords::IKeywordRecordData& record, KeywordDataStore& store, DeserializeState& state,
                    KeywordVariables* variables) const;
    static std::vector<Values> ReadValues(KeywordDataStore& store, SlotPlaces* places);
    static std::vector<std::int64_t> GroupSizes(std::string_view first, std::string_view second, std::int64_t count);

    const Keywords::IKeywordListMD* m_rootList = nullptr;
    const Keywords::IKeywordListMD* m_innerList = nullptr;
    const Keywords::IKeywordRecordMD* m_record = nullptr;
    const Keywords::IKeywordOptionMD* m_firstOption = nullptr;
    const Keywords::IKeywordOptionMD* m_secondOption = nullptr;
    const Keywords::IKeywordListMD* m_outerValues = nullptr;
    const Keywords::IKeywordListMD* m_innerValues = nullptr;
    const Keywords::IKeywordItemMD* m_real = nullptr;
};

} // namespace Tarn::Fjel::Core::DeckManager

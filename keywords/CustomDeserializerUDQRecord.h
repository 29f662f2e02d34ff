#pragma once

#include "keywords/IDeserializer.h"

namespace Tarn::Fjel::Core::Keywords {
class IKeywordOptionMD;
class IKeywordRecordMD;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

/// Reads the DEFINE records of UDQ: one line, in which only the last terminator ends the record, and `*` stands between
/// operands without blanks. Leaves all other records to the generic reader.
class CustomDeserializerUDQRecord : public IDeserializer
{
public:
    /// Throws DeckManagerException unless the root is a list of records of option, string and list of strings.
    explicit CustomDeserializerUDQRecord(const Keywords::IKeywordMD* root);

    /// The record's metadata.
    const Keywords::IKeywordMD* Node() const;

    bool Deserialize(Keywords::IKeywordData& data, KeywordDataStore& store, const Context& context,
                     DeserializeState& state, KeywordVariables* variables) override;

private:
    const Keywords::IKeywordRecordMD* m_record = nullptr;
    const Keywords::IKeywordOptionMD* m_option = nullptr;
};

} // namespace Tarn::Fjel::Core::DeckManager

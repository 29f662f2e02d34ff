#pragma once

#include "keywords/ISerializer.h"

namespace Tarn::Fjel::Core::Keywords {
class IKeywordOptionMD;
class IKeywordRecordMD;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

/// Writes the DEFINE records of UDQ, which a reader takes from one line each. Leaves all other records to the generic
/// writer.
class CustomSerializerUDQRecord : public ISerializer
{
public:
    /// Throws DeckManagerException unless the root is a list of records of option, string and list of strings.
    explicit CustomSerializerUDQRecord(const Keywords::IKeywordMD* root);

    /// The record's metadata.
    const Keywords::IKeywordMD* Node() const;

    /// Throws DeckManagerException, with nothing written, for a record that is too long for a line.
    bool Serialize(const Keywords::IKeywordData& data, ILineWriter& writer, bool useVariables) override;

private:
    const Keywords::IKeywordRecordMD* m_record = nullptr;
    const Keywords::IKeywordOptionMD* m_option = nullptr;
};

} // namespace Tarn::Fjel::Core::DeckManager

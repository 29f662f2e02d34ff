#pragma once

#include "keywords/ISerializer.h"

namespace Tarn::Fjel::Core::Keywords {
class IKeywordRecordMD;
}

namespace Tarn::Fjel::Core::DeckManager {

/// Writes the record of INCLUDE with the file's name in quotes always.
class CustomSerializerINCLUDERecord : public ISerializer
{
public:
    /// Throws DeckManagerException unless the root is a record that begins with a string.
    explicit CustomSerializerINCLUDERecord(const Keywords::IKeywordMD* root);

    bool Serialize(const Keywords::IKeywordData& data, ILineWriter& writer, bool useVariables) override;

private:
    const Keywords::IKeywordRecordMD* m_record = nullptr;
};

} // namespace Tarn::Fjel::Core::DeckManager

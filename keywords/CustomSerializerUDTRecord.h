#pragma once

#include <array>

#include "keywords/ISerializer.h"

namespace Tarn::Fjel::Core::Keywords {
class IKeywordListData;
class IKeywordRecordData;
class IKeywordRecordMD;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

/// Writes the table of UDT in the form that its reader expects. Refuses a tree that this form can't hold, before
/// anything is written.
class CustomSerializerUDTRecord : public ISerializer
{
public:
    /// Throws DeckManagerException unless the root is a record of that shape.
    explicit CustomSerializerUDTRecord(const Keywords::IKeywordMD* root);

    bool Serialize(const Keywords::IKeywordData& data, ILineWriter& writer, bool useVariables) override;

private:
    static constexpr int maxDimensions = 4;
    using Counts = std::array<int, maxDimensions>;

    static bool CheckDimensions(const Keywords::IKeywordRecordData& record, Counts& counts);
    static bool CheckRows(const Keywords::IKeywordListData& rows, const Counts& counts);
    static bool CheckRow(const Keywords::IKeywordListData& rows, int index, int expected);
    static void WriteDimension(const Keywords::IKeywordRecordData& dimension, ILineWriter& writer);

    const Keywords::IKeywordRecordMD* m_record = nullptr;
};

} // namespace Tarn::Fjel::Core::DeckManager

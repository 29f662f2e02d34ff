#include "keywords/CustomSerializerINCLUDERecord.h"

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/keywords/VariablesString.h>

#include "keywords/KeywordDataSerializer.h"
#include "text/ILineWriter.h"

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;

CustomSerializerINCLUDERecord::CustomSerializerINCLUDERecord(const Keywords::IKeywordMD* root)
{
    const bool isRecord = Keywords::KeywordUtils::GetMDType(root) == MDType::Record;
    if (isRecord) m_record = static_cast<const Keywords::IKeywordRecordMD*>(root);
    if (isRecord && m_record->GetItemCount() < 1)
        throw DeckManagerException("DeckManager::CustomSerializerINCLUDERecord: syntax mismatch");
    if (!isRecord || Keywords::KeywordUtils::GetMDType(m_record->GetItemMD(0)) != MDType::String)
        throw DeckManagerException("DeckManager::CustomSerializerINCLUDERecord: unrecognized metadata");
}

bool CustomSerializerINCLUDERecord::Serialize(const Keywords::IKeywordData& data, ILineWriter& writer,
                                              bool useVariables)
{
    if (data.GetMetaData() != m_record) return false;
    const auto& record = static_cast<const Keywords::IKeywordRecordData&>(data);
    const std::string_view name = record.GetItem(0).GetString();
    if (name.empty() || name.starts_with(VeldaneDeckInfo::QUOTE) || name.ends_with(VeldaneDeckInfo::QUOTE) ||
        (useVariables && Keywords::VariablesString::ContainsVariables(name)))
    {
        return false;
    }
    std::string scratch;
    writer.WriteToken(KeywordDataSerializer::Quote(name, scratch), false);
    for (int index = 1; index < record.GetItemCount(); ++index) {
        KeywordDataSerializer::SerializeOptionalItem(record.GetItem(index), m_record->GetItemMD(index), writer, false,
                                                     true);
    }
    writer.WriteToken(VeldaneDeckInfo::TERMINATION_TOKEN, false);
    return true;
}

} // namespace Tarn::Fjel::Core::DeckManager

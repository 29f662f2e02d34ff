#include "keywords/CustomSerializerUDQRecord.h"

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordOptionMD.h>
#include <tarn/keywords/IKeywordRecordData.h>

#include "keywords/CustomDeserializerUDQRecord.h"
#include "keywords/KeywordDataSerializer.h"
#include "keywords/LayoutScope.h"
#include "text/LineStringWriter.h"

namespace Tarn::Fjel::Core::DeckManager {

CustomSerializerUDQRecord::CustomSerializerUDQRecord(const Keywords::IKeywordMD* root)
{
    const CustomDeserializerUDQRecord reader(root); // the shape is that of the reader
    m_record = static_cast<const Keywords::IKeywordRecordMD*>(reader.Node());
    m_option = static_cast<const Keywords::IKeywordOptionMD*>(m_record->GetItemMD(0));
}

const Keywords::IKeywordMD* CustomSerializerUDQRecord::Node() const
{
    return m_record;
}

bool CustomSerializerUDQRecord::Serialize(const Keywords::IKeywordData& data, ILineWriter& writer,
                                          bool /*useVariables*/)
{
    if (data.GetMetaData() != m_record) return false;
    const auto& record = static_cast<const Keywords::IKeywordRecordData&>(data);
    const int define = m_option->GetOptionIndex("DEFINE");
    if (define < 0 || record.GetItem(0).GetOption() != define || !record.GetItem(1).HasValue()) return false;

    const auto& expression = static_cast<const Keywords::IKeywordListData&>(record.GetContainer(2));
    std::string scratch;
    const auto write = [&](ILineWriter& target) {
        const LayoutScope layout(target, false, 0, 0);
        const WholeLineScope wholeLine(target, true);
        for (const int index : {0, 1}) {
            KeywordDataSerializer::SerializeOptionalItem(record.GetItem(index), m_record->GetItemMD(index), target,
                                                         false, false);
        }
        for (int index = 0; index < expression.GetElementCount(); ++index) {
            const Keywords::ConstSlot element = expression.GetElement(index);
            target.WriteToken(element.HasValue()
                                  ? KeywordDataSerializer::QuoteExpressionToken(element.GetString(), true, scratch)
                                  : VeldaneDeckInfo::DEFAULT_TOKEN,
                              false);
        }
        target.WriteToken(VeldaneDeckInfo::TERMINATION_TOKEN, false);
    };
    LineStringWriter trial;
    write(trial);
    trial.FlushLine();
    if (trial.GetText().find('\n') != std::string::npos) {
        throw DeckManagerException("A definition of the keyword UDQ does not fit on a line of 132 characters.");
    }
    write(writer);
    return true;
}

} // namespace Tarn::Fjel::Core::DeckManager

#include <tarn/keywords/IKeywordListMD.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>

#include "keywords/CustomDeserializerOILVISCC.h"
#include "keywords/CustomDeserializerUDQRecord.h"
#include "keywords/CustomDeserializerUDTRecord.h"
#include "keywords/IDeserializer.h"

namespace Tarn::Fjel::Core::DeckManager {

CustomDeserializers::CustomDeserializers(const Keywords::IKeywordSyntaxTable& table)
{
    if (const Keywords::IKeywordSyntax* const syntax = table.FindSyntax("OILVISCC", true)) {
        auto reader = std::make_shared<CustomDeserializerOILVISCC>(syntax->GetMetaData());
        m_forms[syntax->GetMetaData()] = std::move(reader);
    }
    if (const Keywords::IKeywordSyntax* const syntax = table.FindSyntax("UDQ", true)) {
        auto reader = std::make_shared<CustomDeserializerUDQRecord>(syntax->GetMetaData());
        const Keywords::IKeywordMD* const node = reader->Node();
        m_forms[node] = std::move(reader);
    }
    if (const Keywords::IKeywordSyntax* const syntax = table.FindSyntax("UDT", true)) {
        auto reader = std::make_shared<CustomDeserializerUDTRecord>(syntax->GetMetaData());
        m_forms[syntax->GetMetaData()] = std::move(reader);
    }
}

const CustomDeserializers& CustomDeserializers::InForce()
{
    return OfTableInForce<CustomDeserializers>(
        [](const Keywords::IKeywordSyntaxTable& table) { return new CustomDeserializers(table); });
}

} // namespace Tarn::Fjel::Core::DeckManager

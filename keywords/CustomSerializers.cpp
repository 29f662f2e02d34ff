#include <tarn/keywords/IKeywordMD.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>

#include "keywords/CustomSerializerINCLUDERecord.h"
#include "keywords/CustomSerializerUDQRecord.h"
#include "keywords/CustomSerializerUDTRecord.h"
#include "keywords/ISerializer.h"

namespace Tarn::Fjel::Core::DeckManager {

CustomSerializers::CustomSerializers(const Keywords::IKeywordSyntaxTable& table)
{
    if (const Keywords::IKeywordSyntax* const syntax = table.FindSyntax("UDQ", true)) {
        auto writer = std::make_shared<CustomSerializerUDQRecord>(syntax->GetMetaData());
        const Keywords::IKeywordMD* const node = writer->Node();
        m_forms[node] = std::move(writer);
    }
    if (const Keywords::IKeywordSyntax* const syntax = table.FindSyntax("UDT", true))
        m_forms[syntax->GetMetaData()] = std::make_shared<CustomSerializerUDTRecord>(syntax->GetMetaData());
    if (const Keywords::IKeywordSyntax* const syntax = table.FindSyntax("INCLUDE", true))
        m_forms[syntax->GetMetaData()] = std::make_shared<CustomSerializerINCLUDERecord>(syntax->GetMetaData());
}

const CustomSerializers& CustomSerializers::InForce()
{
    return OfTableInForce<CustomSerializers>(
        [](const Keywords::IKeywordSyntaxTable& table) { return new CustomSerializers(table); });
}

} // namespace Tarn::Fjel::Core::DeckManager

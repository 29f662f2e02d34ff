#include <deckmanager/Environment.h>
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
        m_readers[syntax->GetMetaData()] = std::move(reader);
    }
    if (const Keywords::IKeywordSyntax* const syntax = table.FindSyntax("UDQ", true)) {
        auto reader = std::make_shared<CustomDeserializerUDQRecord>(syntax->GetMetaData());
        const Keywords::IKeywordMD* const node = reader->Node();
        m_readers[node] = std::move(reader);
    }
    if (const Keywords::IKeywordSyntax* const syntax = table.FindSyntax("UDT", true)) {
        auto reader = std::make_shared<CustomDeserializerUDTRecord>(syntax->GetMetaData());
        m_readers[syntax->GetMetaData()] = std::move(reader);
    }
}

const CustomDeserializers& CustomDeserializers::InForce()
{
    static std::unique_ptr<const CustomDeserializers> readers;
    static std::uint64_t generation = 0;
    if (!readers || generation != Environment::SyntaxTableGeneration()) {
        const Keywords::IKeywordSyntaxTable* const table = Environment::Instance().GetSyntaxTable();
        readers.reset(new CustomDeserializers(*table));
        generation = Environment::SyntaxTableGeneration();
    }
    return *readers;
}

} // namespace Tarn::Fjel::Core::DeckManager

#include <deckmanager/Environment.h>
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
        m_writers[node] = std::move(writer);
    }
    if (const Keywords::IKeywordSyntax* const syntax = table.FindSyntax("UDT", true))
        m_writers[syntax->GetMetaData()] = std::make_shared<CustomSerializerUDTRecord>(syntax->GetMetaData());
    if (const Keywords::IKeywordSyntax* const syntax = table.FindSyntax("INCLUDE", true))
        m_writers[syntax->GetMetaData()] = std::make_shared<CustomSerializerINCLUDERecord>(syntax->GetMetaData());
}

const CustomSerializers& CustomSerializers::InForce()
{
    static std::unique_ptr<const CustomSerializers> writers;
    static std::uint64_t generation = 0;
    if (!writers || generation != Environment::SyntaxTableGeneration()) {
        const Keywords::IKeywordSyntaxTable* const table = Environment::Instance().GetSyntaxTable();
        writers.reset(new CustomSerializers(*table));
        generation = Environment::SyntaxTableGeneration();
    }
    return *writers;
}

} // namespace Tarn::Fjel::Core::DeckManager

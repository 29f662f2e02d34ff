#include "keywords/CustomDeserializerUDQRecord.h"

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/VariablesString.h>

#include "keywords/KeywordDataDeserializer.h"
#include "keywords/KeywordDataStore.h"
#include "keywords/MetadataShape.h"
#include "keywords/SlotPlaces.h"
#include "text/Tokenizer.h"
#include <deckmanager/KeywordVariables.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;

CustomDeserializerUDQRecord::CustomDeserializerUDQRecord(const Keywords::IKeywordMD* root)
{
    namespace Shape = MetadataShape;
    const Keywords::IKeywordMD* const element = Shape::ElementOf(Shape::AsList(root));
    if (Keywords::KeywordUtils::GetMDType(element) != MDType::Record)
        throw DeckManagerException("DeckManager::CustomDeserializerUDQRecord: unrecognized metadata");
    m_record = Shape::AsRecord(element, 3);
    m_option = Shape::AsOption(Shape::ItemOf(m_record, 0));
    if (!m_option || !Shape::AsItem(Shape::ItemOf(m_record, 1), MDType::String) ||
        !Shape::AsItem(Shape::ElementOf(Shape::AsList(Shape::ItemOf(m_record, 2))), MDType::String))
    {
        throw DeckManagerException("DeckManager::CustomDeserializerUDQRecord: syntax mismatch");
    }
}

const Keywords::IKeywordMD* CustomDeserializerUDQRecord::Node() const
{
    return m_record;
}

bool CustomDeserializerUDQRecord::Deserialize(Keywords::IKeywordData& data, KeywordDataStore& store,
                                              const Context& context, DeserializeState& state,
                                              KeywordVariables* variables)
{
    if (data.GetMetaData() != m_record) return false;
    std::string_view token;
    std::string reason;
    if (!store.PeekTokenView(token, false, nullptr)) return false;
    const int option = m_option->FindOption(token, reason);
    if (option < 0 || option != m_option->GetOptionIndex("DEFINE")) return false;

    const std::string line = store.CurrentLine();
    const std::int64_t linePosition = store.LinePosition();
    store.MarkLineTaken();
    store.TraceCharacters(0, line.size());
    store.AdvanceLine();
    Tokenizer tokenizer;
    tokenizer.SetRepeatAsToken(true);
    tokenizer.SetText(&line);

    const auto note = [&](const Keywords::IKeywordData& container, int index) {
        if (state.places)
            state.places->Note(container, index, linePosition, line, tokenizer.TokenBegin(), tokenizer.TokenEnd());
    };
    auto& record = static_cast<Keywords::IKeywordRecordData&>(data);
    for (const int index : {0, 1}) {
        bool quoted = false;
        if (!tokenizer.NextView(token, &quoted, false)) return index == 1;
        note(record, index);
        KeywordDataDeserializer::DeserializeOptionalData(token, quoted, *m_record->GetItemMD(index), record, index,
                                                         context, state, variables, reason);
    }

    // Only the line's last terminator is the record's; any other is an operator.
    auto& expression = static_cast<Keywords::IKeywordListData&>(record.GetContainer(2));
    const SlotPlaces::Scope scope(state.places, expression, store);
    int count = 0;
    int end = -1;
    for (; tokenizer.NextView(token, nullptr, true); ++count) {
        if (token == VeldaneDeckInfo::TERMINATION_TOKEN) end = count;
    }
    if (end < 0) end = count;
    tokenizer.SetText(&line);
    tokenizer.NextView(token, nullptr, false);
    tokenizer.NextView(token, nullptr, false);
    for (int index = 0; index < end && tokenizer.NextView(token, nullptr, true); ++index) {
        note(expression, index);
        if (variables && Keywords::VariablesString::ContainsVariables(token)) {
            expression.AppendDefaults(1);
            variables->SetListVariable(expression, index, Keywords::VariablesString(token));
        } else {
            expression.AppendStringRun(token, 1);
        }
    }
    return true;
}

} // namespace Tarn::Fjel::Core::DeckManager

// One element of a keyword's data, without the others where these can be passed over.

#include <fmt/format.h>

#include "keywords/Keyword.h"
#include "keywords/KeywordDataDeserializer.h"
#include "keywords/KeywordState.h"
#include "keywords/ListElementReader.h"
#include "text/LineStreamReader.h"
#include "text/Tokenizer.h"
#include <deckmanager/Context.h>
#include <deckmanager/ReadKeywordElement.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordListDataVariables.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/keywords/KeywordUtils.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

using Keywords::IKeywordListData;

std::unique_ptr<IKeywordListData> EmptyList(const Keywords::IKeywordSyntax& syntax)
{
    auto data = Keywords::KeywordDataFactory::Instance().ConstructSafely(syntax);
    return std::unique_ptr<IKeywordListData>(static_cast<IKeywordListData*>(data.release()));
}

/// The element out of a list that is there. `references` are the list's.
KeywordElement Pick(const Keywords::IKeywordSyntax& syntax, const IKeywordListData& list, int index,
                    const KeywordVariables& references, KeywordVariables* variables)
{
    KeywordElement element{EmptyList(syntax), list.GetElementCount()};
    if (index < 0 || index >= element.count) return element;
    if (list.IsElementDefaulted(index)) {
        element.list->AppendDefaults(1);
    } else {
        const Keywords::ConstSlot slot = list.GetElement(index);
        element.list->AddElement(&slot);
    }
    const auto* const ofList =
        static_cast<const Keywords::IKeywordListDataVariables*>(references.GetDataVariables(&list));
    if (variables == nullptr || ofList == nullptr) return element;
    for (const int place : ofList->GetVariableIndices()) {
        if (place == index) variables->SetListVariable(*element.list, 0, ofList->GetVariable(place));
    }
    return element;
}

} // namespace

std::optional<KeywordElement> Keyword::ReadElement(int index, const Context& context, KeywordVariables* variables)
{
    const Keywords::IKeywordMD* const md = m_syntax->GetMetaData();
    if (Keywords::KeywordUtils::GetMDType(md) != Keywords::MDType::List) return std::nullopt;
    if (!Keywords::KeywordUtils::IsItemMDType(static_cast<const Keywords::IKeywordListMD*>(md)->GetElementMD()))
        return std::nullopt;
    if (m_state && m_state->beingRead) return std::nullopt;
    if (TreeIsData())
        return Pick(*m_syntax, static_cast<const IKeywordListData&>(*m_state->data), index, {}, variables);
    if (std::optional<KeywordElement> element = FindElement(index, context)) return element;

    KeywordVariables references;
    const std::unique_ptr<Keywords::IKeywordData> data = ReadData(context, &references);
    if (!data) return std::nullopt;
    return Pick(*m_syntax, static_cast<const IKeywordListData&>(*data), index, references, variables);
}

/// Empty where the data must be read whole.
std::optional<KeywordElement> Keyword::FindElement(int index, const Context& context) const
{
    if (!ListElementReader::Suits(*m_syntax->GetMetaData())) return std::nullopt;
    std::optional<ListElementReader::Found> found;
    if (m_state && m_state->textIsData) {
        const std::shared_ptr<std::string> text = m_state->heldText;
        LineStreamReader lines;
        lines.AttachText(*text);
        found = ListElementReader::Find(index, *this, lines, 0, static_cast<long long>(text->size()), false);
    } else if (!m_dataChanged && HasValidExtent()) {
        if (const std::unique_ptr<ILineReader> lines = OpenForData())
            found = ListElementReader::Find(index, *this, *lines, m_position, m_size, true);
    }
    if (!found) return std::nullopt;

    KeywordElement element{EmptyList(*m_syntax), static_cast<int>(found->count)};
    if (!found->token) return element;
    // Alone, the token means what it means in its place.
    const bool isDefault = *found->token == VeldaneDeckInfo::DEFAULT_TOKEN;
    const std::string text = isDefault ? *found->token + " /" : fmt::format("'{}' /", *found->token);
    if (text.size() > static_cast<std::size_t>(Tokenizer::MaxLineLength)) return std::nullopt;
    LineStreamReader lines;
    lines.AttachText(text);
    KeywordDataDeserializer::Deserialize(*this, *element.list, lines, 0, static_cast<long long>(text.size()), context,
                                         false, nullptr);
    if (element.list->GetElementCount() != 1) return std::nullopt;
    return element;
}

} // namespace Tarn::Fjel::Core::DeckManager

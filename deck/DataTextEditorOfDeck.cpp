#include <deckmanager/DataTextEditor.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IKeyword.h>

#include "files/KeywordFile.h"
#include "keywords/Keyword.h"

namespace Tarn::Fjel::Core::DeckManager {

DataTextEditor DataTextEditor::ForKeyword(const IDeckKeywords& deck, const IKeyword& keyword)
{
    Settings settings;
    settings.keyword = &keyword;
    settings.context = deck.GetDataFile()->AsKeywordFile()->RootContext();
    if (settings.context.Keywords() == nullptr) settings.context.Bind(&deck);
    settings.allowsVariables = static_cast<const Keyword&>(keyword).VariablesAllowed();
    return DataTextEditor(*keyword.GetSyntax(), keyword.GetName(), std::move(settings));
}

} // namespace Tarn::Fjel::Core::DeckManager

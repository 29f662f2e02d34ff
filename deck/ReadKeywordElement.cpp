#include <deckmanager/ReadKeywordElement.h>

#include <deckmanager/Context.h>
#include <deckmanager/IDeckKeywords.h>

#include "files/KeywordFile.h"
#include "keywords/Keyword.h"

namespace Tarn::Fjel::Core::DeckManager {

std::optional<KeywordElement> ReadKeywordElement(const IDeckKeywords& deck, const IKeyword& keyword, int index,
                                                 KeywordVariables* variables)
{
    Keyword& read = static_cast<Keyword&>(const_cast<IKeyword&>(keyword));
    const Context& root = deck.GetDataFile()->AsKeywordFile()->RootContext();
    if (root.Keywords() != nullptr) return read.ReadElement(index, root, variables);
    Context context = root;
    context.Bind(&deck);
    return read.ReadElement(index, context, variables);
}

} // namespace Tarn::Fjel::Core::DeckManager

#include <deckmanager/ReadKeywordData.h>

#include <deckmanager/Context.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/KeywordVariables.h>
#include <tarn/keywords/IKeywordData.h>

#include "files/KeywordFile.h"
#include "keywords/Keyword.h"

namespace Tarn::Fjel::Core::DeckManager {

std::unique_ptr<Keywords::IKeywordData> ReadKeywordData(const IDeckKeywords& deck, const IKeyword& keyword,
                                                        KeywordVariables* variables)
{
    Keyword& read = static_cast<Keyword&>(const_cast<IKeyword&>(keyword));
    const Context& root = deck.GetDataFile()->AsKeywordFile()->RootContext();
    if (root.Keywords() != nullptr) return read.ReadData(root, variables);
    Context context = root;
    context.Bind(&deck);
    return read.ReadData(context, variables);
}

} // namespace Tarn::Fjel::Core::DeckManager

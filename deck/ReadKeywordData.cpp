#include <deckmanager/ReadKeywordData.h>

#include <deckmanager/Context.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/KeywordVariables.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordDataFactory.h>

#include "files/KeywordFile.h"
#include "keywords/Keyword.h"
#include "keywords/KeywordDataDeserializer.h"
#include "keywords/KeywordGeneric.h"
#include "text/LineStringReader.h"

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

std::unique_ptr<Keywords::IKeywordData> ReadKeywordData(const Keywords::IKeywordSyntax& syntax, const std::string& name,
                                                        const std::string& text, KeywordVariables* variables)
{
    if (syntax.GetMetaData() == nullptr) return nullptr;
    const KeywordGeneric keyword(syntax, variables != nullptr, nullptr, nullptr, 0, 0, name, nullptr);
    std::unique_ptr<Keywords::IKeywordData> data = Keywords::KeywordDataFactory::Instance().ConstructSafely(syntax);
    LineStringReader lines(text);
    KeywordDataDeserializer::Deserialize(keyword, *data, lines, 0, static_cast<long long>(text.size()), Context(),
                                         false, variables);
    return data;
}

} // namespace Tarn::Fjel::Core::DeckManager

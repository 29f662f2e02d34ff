// Cuts any text into keywords without a deck, and splits it as the text of one keyword. The first byte chooses the
// settings.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include <deckmanager/DeckUtils.h>
#include <deckmanager/Environment.h>

#include "keywords/KeywordTextSplitter.h"

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;

namespace {

void Require(bool condition)
{
    if (!condition) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    const unsigned settings = data[0];
    Environment& environment = Environment::Instance();
    environment.EnableKeywordSuppression((settings & 1) == 0);
    environment.LogWarningForPossibleIndentedKeywords((settings & 2) != 0);
    environment.SetCustomKeywordGeneratedTag((settings & 4) != 0 ? "X" : "");
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);

    std::vector<std::string> keywords;
    std::vector<std::string> texts;
    std::vector<const Keywords::IKeywordSyntax*> syntaxes;
    std::string errors;
    const bool result = DeckUtils::getKeywordsAndDataFromString(text, keywords, texts, syntaxes, errors);
    Require(result == (!keywords.empty() && errors.empty()));
    Require(keywords.size() == texts.size() && keywords.size() == syntaxes.size());

    // Each text is a stretch of the given one, behind the one before it.
    std::size_t begin = 0;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        Require(syntaxes[i] != nullptr && !keywords[i].empty());
        begin = text.find(texts[i], begin);
        Require(begin != std::string::npos);
        begin += texts[i].size();
    }

    std::string name;
    std::string dataText;
    std::string tagText;
    const bool found = SplitKeywordText(text, name, dataText, tagText);
    Require(found == !name.empty());
    Require(found || (dataText.empty() && tagText.empty()));
    Require(text.find(dataText) != std::string::npos);
    return 0;
}

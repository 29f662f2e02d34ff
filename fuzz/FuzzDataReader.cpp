// Reads any text as the data of any keyword of the catalogue. The first line names the keyword; where it names none,
// its first bytes choose one. The rest is the text.

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include <deckmanager/Context.h>
#include <deckmanager/DeckManagerException.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/KeywordDataFactory.h>

#include "fuzz/LooseData.h"
#include "keywords/KeywordDataDeserializer.h"
#include "text/LineStringReader.h"
#include <deckmanager/KeywordVariables.h>

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;
using Fuzz::ChooseSyntax;
using Fuzz::EmptyDeck;
using Fuzz::LooseKeyword;

namespace {

void Require(bool condition)
{
    if (!condition) std::abort();
}

void Read(const IKeyword& keyword, const std::string& text, bool isFile, bool withVariables)
{
    const auto data = Keywords::KeywordDataFactory::Instance().ConstructSafely(keyword.GetSyntax());
    if (!data) return;
    const EmptyDeck deck;
    const Context context(&deck);
    KeywordVariables variables;
    LineStringReader reader(text);
    const long long size = static_cast<long long>(text.size());
    ReadReport report;
    try {
        KeywordDataDeserializer::Deserialize(keyword, *data, reader, 0, size, context, isFile,
                                             withVariables ? &variables : nullptr, &report);
    } catch (const DeckManagerException&) {
        return;
    }
    Require(report.takenEnd >= -1 && report.takenEnd <= size);
    KeywordDataDeserializer::IsEmptyContainer(data.get());
    data->CloneSafely();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    DeserializeState::DefaultLimits() = {1000, 1000, 100000, 10};
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const Keywords::IKeywordSyntax* const syntax = ChooseSyntax(input);
    const std::string text(input);
    const LooseKeyword keyword(*syntax);
    Read(keyword, text, false, true);
    Read(keyword, syntax->GetName() + "\n" + text, true, false);
    return 0;
}

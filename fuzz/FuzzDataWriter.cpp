// Reads any text as the data of any keyword of the catalogue, as the data reader's target does, and writes the tree.
// The text that comes out reads as the same tree, and is written as the same text.

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
#include "keywords/KeywordDataSerializer.h"
#include "text/LineStringReader.h"
#include "text/LineStringWriter.h"

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;

namespace {

std::string Rewritten(const IKeyword& keyword, const std::string& text)
{
    const auto data = Keywords::KeywordDataFactory::Instance().ConstructSafely(keyword.GetSyntax());
    const Fuzz::EmptyDeck deck;
    const Context context(&deck);
    LineStringReader reader(text);
    KeywordDataDeserializer::Deserialize(keyword, *data, reader, 0, static_cast<long long>(text.size()), context, false,
                                         nullptr);
    LineStringWriter writer;
    KeywordDataSerializer::Serialize(*data, writer, false, Keywords::SimulatorType::Any);
    return writer.GetText();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    DeserializeState::DefaultLimits() = {1000, 1000, 100000, 10};
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const Keywords::IKeywordSyntax* const syntax = Fuzz::ChooseSyntax(input);
    if (!syntax->GetMetaData()) return 0;
    const Fuzz::LooseKeyword keyword(*syntax);
    try {
        const std::string once = Rewritten(keyword, std::string(input));
        const std::string twice = Rewritten(keyword, once);
        // A quote inside a string has no form that reads as it was; neither have a group of OILVISCC without values, a
        // table of UDT that isn't whole, and a definition of UDQ without a name.
        const bool comesBack = input.find('\'') == std::string_view::npos && syntax->GetName() != "OILVISCC" &&
                               syntax->GetName() != "UDT" && once.find("DEFINE /") == std::string::npos;
        if (comesBack && once != twice) std::abort();
    } catch (const DeckManagerException&) {
    }
    return 0;
}

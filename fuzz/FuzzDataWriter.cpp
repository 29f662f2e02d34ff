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
#include <tarn/keywords/IKeywordListMD.h>
#include <tarn/keywords/IKeywordRecordMD.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/service/Strings.h>

#include "fuzz/LooseData.h"
#include "keywords/KeywordDataDeserializer.h"
#include "keywords/KeywordDataSerializer.h"
#include "text/LineStringReader.h"
#include "text/LineStringWriter.h"

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;

namespace {

/// Whether only a deck tells where a list within a record ends. Without one, what follows in the record is taken for
/// more of the list.
bool NeedsDeck(const Keywords::IKeywordMD& md)
{
    if (md.GetType() == Keywords::MDType::List)
        return NeedsDeck(*static_cast<const Keywords::IKeywordListMD&>(md).GetElementMD());
    if (md.GetType() != Keywords::MDType::Record) return false;
    const auto& record = static_cast<const Keywords::IKeywordRecordMD&>(md);
    for (int i = 0; i < record.GetItemCount(); ++i) {
        const Keywords::IKeywordMD& item = *record.GetItemMD(i);
        if (item.GetType() == Keywords::MDType::List) {
            const auto& list = static_cast<const Keywords::IKeywordListMD&>(item);
            const std::string* const size = list.GetSizeExpression();
            if (list.GetTermination() == Keywords::Termination::None && size && !Service::AllDigits(*size)) return true;
        }
        if (NeedsDeck(item)) return true;
    }
    return false;
}

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
    // Only what is written as a block has CR LF in a string.
    std::string written = writer.GetText();
    Service::StringReplace(written, "\r\n", "\n");
    return written;
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
        // table of UDT that isn't whole, a definition of UDQ without a name, and a list whose size nobody tells.
        const bool comesBack = input.find('\'') == std::string_view::npos && syntax->GetName() != "OILVISCC" &&
                               syntax->GetName() != "UDT" && once.find("DEFINE /") == std::string::npos &&
                               !NeedsDeck(*syntax->GetMetaData());
        if (comesBack && once != twice) std::abort();
    } catch (const DeckManagerException&) {
    }
    return 0;
}

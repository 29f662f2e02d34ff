// Reads any text as the data of the keywords that have readers of their own: the first line names one of them, else its
// first byte chooses. Asks whether references that OILVISCC's reader has found stand at elements that hold their place.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <list>
#include <memory>
#include <string>
#include <string_view>

#include <deckmanager/Context.h>
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/KeywordVariables.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordListDataVariables.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/keywords/KeywordSyntaxTable.h>

#include "fuzz/LooseData.h"
#include "keywords/DeserializeState.h"
#include "keywords/KeywordDataDeserializer.h"
#include "text/LineStringReader.h"

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;

namespace {

void Require(bool condition)
{
    if (!condition) std::abort();
}

void CheckReferences(const Keywords::IKeywordData& data, const KeywordVariables& variables)
{
    if (data.GetType() == Keywords::MDType::Record) {
        const auto& record = static_cast<const Keywords::IKeywordRecordData&>(data);
        for (int i = 0; i < record.GetItemCount(); ++i)
            if (const auto* const child = record.GetItem(i).GetContainer()) CheckReferences(*child, variables);
    } else if (data.GetType() == Keywords::MDType::List) {
        const auto& list = static_cast<const Keywords::IKeywordListData&>(data);
        for (int i = 0; i < list.GetElementCount(); ++i)
            if (const auto* const child = list.GetElement(i).GetContainer()) CheckReferences(*child, variables);
        auto* const references = dynamic_cast<Keywords::IKeywordListDataVariables*>(variables.GetDataVariables(&data));
        if (!references) return;
        for (const int index : references->GetVariableIndices())
            Require(index < list.GetElementCount() && list.IsElementDefaulted(index));
    }
}

void Read(const IKeyword& keyword, const std::string& text, bool withVariables)
{
    const auto data = Keywords::KeywordDataFactory::Instance().ConstructSafely(keyword.GetSyntax());
    KeywordVariables variables;
    LineStringReader reader(text);
    const long long size = static_cast<long long>(text.size());
    ReadReport report;
    try {
        KeywordDataDeserializer::Deserialize(keyword, *data, reader, 0, size, Context(), false,
                                             withVariables ? &variables : nullptr, &report);
    } catch (const DeckManagerException&) {
        return;
    }
    Require(report.takenEnd >= -1 && report.takenEnd <= size);
    // What the generic reader goes on with counts elements that it has removed.
    if (keyword.GetName() == "OILVISCC") CheckReferences(*data, variables);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static constexpr std::array<std::string_view, 3> names{"OILVISCC", "UDQ", "UDT"};
    DeserializeState::DefaultLimits() = {1000, 1000, 100000, 10};
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t end = input.find('\n');
    const std::string_view first = input.substr(0, end);
    input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
    const auto* name = std::find(names.begin(), names.end(), first);
    if (name == names.end()) name = names.begin() + (first.empty() ? 0 : static_cast<unsigned char>(first[0]) % 3);

    const Fuzz::LooseKeyword keyword(*Environment::Instance().GetSyntaxTable()->FindSyntax(*name, true));
    const std::string text(input);
    Read(keyword, text, true);
    Read(keyword, text, false);
    return 0;
}

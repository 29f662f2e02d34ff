// Reads any text as the data of any keyword of the catalogue, and one element of a list alone. The first line names the
// keyword; where it names none, its first bytes choose one. The rest is the text.

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <deckmanager/Context.h>
#include <deckmanager/DeckManagerException.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/KeywordDataFactory.h>

#include "fuzz/LooseData.h"
#include "keywords/KeywordDataDeserializer.h"
#include "keywords/KeywordGeneric.h"
#include "text/LineStringReader.h"
#include <deckmanager/KeywordVariables.h>
#include <deckmanager/ReadKeywordElement.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordListDataVariables.h>
#include <tarn/service/Log.h>
#include <tarn/service/MessageCapper.h>

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

/// What a read tells of an element: its value, mark and reference, the count of the others, and the messages.
struct Told
{
    int count = 0;
    bool isThere = false;
    bool isDefault = false;
    std::string value;
    std::string reference;
    std::string messages;

    bool operator==(const Told&) const = default;
};

void Describe(const Keywords::IKeywordListData& list, int index, const KeywordVariables& variables, Told& told)
{
    told.isThere = index >= 0 && index < list.GetElementCount();
    if (!told.isThere) return;
    told.isDefault = list.IsElementDefaulted(index);
    const Keywords::ConstSlot slot = list.GetElement(index);
    if (slot.HasValue()) {
        switch (slot.Kind()) {
        case Keywords::MDType::YesNo:
            told.value = std::to_string(slot.GetYesNo());
            break;
        case Keywords::MDType::Option:
            told.value = std::to_string(slot.GetOption());
            break;
        case Keywords::MDType::Integer:
            told.value = std::to_string(slot.GetInteger());
            break;
        case Keywords::MDType::Real: {
            const double value = slot.GetReal();
            told.value.assign(reinterpret_cast<const char*>(&value), sizeof value);
            break;
        }
        default:
            told.value = slot.GetString();
        }
    }
    const auto* const references =
        static_cast<const Keywords::IKeywordListDataVariables*>(variables.GetDataVariables(&list));
    if (references == nullptr) return;
    for (const int place : references->GetVariableIndices())
        if (place == index) told.reference = references->GetVariable(place).GetString();
}

/// One element read alone is that of the whole list, with the messages of the whole list.
void ReadElement(const Keywords::IKeywordSyntax& syntax, const std::string& text)
{
    KeywordGeneric keyword(syntax, true, nullptr, nullptr, 0, 0, syntax.GetName(), nullptr);
    if (!keyword.SetDataText(text, false)) return;
    const EmptyDeck deck;
    const Context context(&deck);
    std::string messages;
    const auto previous = Service::Log::SetHandler([&messages](std::string_view message, int severity) {
        if (!Service::Log::IsProbing()) messages.append(message).append(1, static_cast<char>('0' + severity));
    });
    const auto wanted = static_cast<int>(text.size() / 4);
    const std::optional<KeywordElement> sized = keyword.ReadElement(-1, context, nullptr);
    if (sized) {
        for (const int index : {0, sized->count > 0 ? wanted % sized->count : 0, sized->count - 1, sized->count}) {
            Told alone;
            Told ofAll;
            KeywordVariables reference;
            Service::MessageCapper::instance().reset();
            messages.clear();
            const auto element = keyword.ReadElement(index, context, &reference);
            Require(element && element->list->GetElementCount() <= 1);
            alone.count = element->count;
            Describe(*element->list, 0, reference, alone);
            alone.messages = messages;
            KeywordVariables references;
            Service::MessageCapper::instance().reset();
            messages.clear();
            const auto data = keyword.ReadData(context, &references);
            const auto& list = static_cast<const Keywords::IKeywordListData&>(*data);
            ofAll.count = list.GetElementCount();
            Describe(list, index, references, ofAll);
            ofAll.messages = messages;
            Require(alone == ofAll);
        }
    }
    Service::Log::SetHandler(previous);
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
    ReadElement(*syntax, text);
    return 0;
}

// Records, lists, maps and raw text: the containers of a tree.

#include "keywords/KeywordDataSerializer.h"

#include <typeinfo>

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordItemMD.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordRawTextData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordRecordMDUtil.h>
#include <tarn/keywords/KeywordUtils.h>

#include "keywords/ISerializer.h"
#include "keywords/LayoutScope.h"
#include "text/LineStreamWriter.h"

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;
using Keywords::Termination;

namespace {

constexpr std::string_view terminator = VeldaneDeckInfo::TERMINATION_TOKEN;
constexpr std::string_view defaultToken = VeldaneDeckInfo::DEFAULT_TOKEN;

/// Whether nothing but lists of items that end by themselves stands in a record: without elements they have no text.
bool HoldsBareListsAlone(const Keywords::IKeywordRecordMD& md)
{
    for (int index = 0; index < md.GetItemCount(); ++index) {
        if (md.GetItemMD(index)->GetType() != MDType::List) return false;
        const auto& list = static_cast<const Keywords::IKeywordListMD&>(*md.GetItemMD(index));
        if (list.GetTermination() == Termination::Slash || !Keywords::KeywordUtils::IsItemMDType(list.GetElementMD()))
            return false;
    }
    return true;
}

} // namespace

void KeywordDataSerializer::Serialize(const Keywords::IKeywordData& data, ILineWriter& writer, bool useVariables,
                                      Keywords::SimulatorType simulator)
{
    ILineWriter& target = writer.Stream() ? *writer.Stream() : writer;
    const bool isUnset =
        data.GetType() == MDType::Record && IsDefaultRecord(static_cast<const Keywords::IKeywordRecordData&>(data));
    const Write write{target,
                      CustomSerializers::InForce(),
                      Environment::Instance().GetKeywordItemRepeatOptions(),
                      useVariables,
                      simulator,
                      isUnset};
    switch (data.GetType()) {
    case MDType::List:
        SerializeList(static_cast<const Keywords::IKeywordListData&>(data), write, false, false);
        break;
    case MDType::Map:
        SerializeMap(static_cast<const Keywords::IKeywordMapData&>(data), write);
        break;
    case MDType::RawText:
        SerializeRawText(static_cast<const Keywords::IKeywordRawTextData&>(data), write);
        break;
    case MDType::Record:
        SerializeRecord(static_cast<const Keywords::IKeywordRecordData&>(data), write, false, false, Place::Root);
        break;
    default:
        throw DeckManagerException(fmt::format("DeckManager::KeywordDataSerializer::Serialize(IKeywordData &, ...): "
                                               "unhandled keyword data type \"{}\"",
                                               typeid(data).name()));
    }
    target.FlushLine();
}

bool KeywordDataSerializer::SerializeContainer(const Keywords::IKeywordData& data, const Write& write, bool newLine,
                                               bool skip, Place place)
{
    return data.GetType() == MDType::Record
               ? SerializeRecord(static_cast<const Keywords::IKeywordRecordData&>(data), write, newLine, skip, place)
               : SerializeList(static_cast<const Keywords::IKeywordListData&>(data), write, newLine, skip);
}

/// Whether a record with everything unset needs a default token: a terminator alone would end what is around a record
/// whose first item can't be left to its default, or repeat the element before, and a line alone would be no record.
bool KeywordDataSerializer::NeedsText(const Keywords::IKeywordRecordMD& md, Place place)
{
    if (place == Place::Root || md.GetTermination() == Termination::None) return false;
    if (place == Place::BehindElement || md.GetTermination() == Termination::EndOfLine) return true;
    const Keywords::IKeywordMD* const first = md.GetItemMD(0);
    return !md.IsItemDefaultable(0) &&
           !(Keywords::KeywordUtils::IsItemMDType(first) &&
             static_cast<const Keywords::IKeywordItemMD*>(first)->HasDefaultFor(Keywords::SimulatorType::Any));
}

/// True when the last thing written is a terminator that ends its line.
bool KeywordDataSerializer::SerializeRecord(const Keywords::IKeywordRecordData& record, const Write& write,
                                            bool newLine, bool skipIfDefault, Place place)
{
    ILineWriter& writer = write.writer;
    const Keywords::IKeywordRecordMD& md = *record.GetRecordMD();
    const int count = md.GetItemCount();
    const bool slash = md.GetTermination() == Termination::Slash;
    const bool endOfLine = md.GetTermination() == Termination::EndOfLine;
    if (skipIfDefault && IsDefaultRecord(record)) {
        if (newLine) writer.NewLine();
        return false;
    }
    if (record.GetItemCount() != count) {
        throw "KeywordDataSerializer::Serialize: mismatch number of item records between data & metadata";
    }
    if (newLine && (count > 0 || slash)) writer.NewLine();
    if (ISerializer* const custom = write.customs.Find(&md)) {
        if (custom->Serialize(record, writer, write.useVariables)) return true;
    }

    const LayoutScope layout(writer, md.GetTermination() != Termination::None, write.repeats.recordValueRepeat,
                             write.repeats.recordDefaultRepeat);
    const WholeLineScope wholeLine(writer, endOfLine);
    const Keywords::IRecordItemTraits* const traits = md.GetItemTraits();
    const bool showItem = count > 0 && !write.isUnset && NeedsText(md, place) && IsDefaultRecord(record);
    bool terminated = false;
    bool lastWasContainer = false;
    // What has no text at all would not be read as a record. One default is enough, unless containers follow that have
    // some. A list without elements may come back with one that is defaulted; without it, all rows below would be lost.
    const bool oneDefault =
        showItem && (!Keywords::KeywordRecordMDUtil::HasNestedContainer(md) || HoldsBareListsAlone(md));
    if (showItem) writer.SetDropTrailingDefaults(false);
    if (oneDefault) writer.WriteToken(defaultToken, true);
    for (int index = 0; index < count && !oneDefault; ++index) {
        const bool optional = traits && traits->IsOptionalOnWrite(index);
        const Keywords::IKeywordMD* const itemMD = md.GetItemMD(index);
        const MDType type = itemMD->GetType();
        if (type == MDType::Record || type == MDType::List) {
            terminated = SerializeContainer(record.GetContainer(index), write, index > 0, optional, Place::Inside);
            lastWasContainer = true;
        } else {
            SerializeOptionalItem(record.GetItem(index), itemMD, writer, lastWasContainer, optional);
            terminated = lastWasContainer = false;
        }
    }
    if (!slash) {
        writer.FlushItems();
        return terminated;
    }
    if (terminated) writer.NewLine();
    writer.FlushItems();
    writer.WriteToken(terminator, true);
    return true;
}

bool KeywordDataSerializer::IsDefaultRecord(const Keywords::IKeywordRecordData& record)
{
    const Keywords::IKeywordRecordMD& md = *record.GetRecordMD();
    if (record.GetItemCount() != md.GetItemCount()) return false; // to be told where it is written
    for (int index = 0; index < record.GetItemCount(); ++index) {
        const Keywords::IKeywordMD* const itemMD = md.GetItemMD(index);
        switch (Keywords::KeywordUtils::GetMDType(itemMD)) {
        case MDType::Record:
            if (!IsDefaultRecord(static_cast<const Keywords::IKeywordRecordData&>(record.GetContainer(index))))
                return false;
            break;
        case MDType::List:
            if (static_cast<const Keywords::IKeywordListData&>(record.GetContainer(index)).GetElementCount() > 0)
                return false;
            break;
        default:
            if (!IsDefaultItem(record.GetItem(index), itemMD)) return false;
        }
    }
    return true;
}

bool KeywordDataSerializer::SerializeList(const Keywords::IKeywordListData& list, const Write& write, bool newLine,
                                          bool skipIfEmpty)
{
    ILineWriter& writer = write.writer;
    const Keywords::IKeywordListMD& md = *list.GetListMD();
    const int count = list.GetElementCount();
    const bool slash = md.GetTermination() == Termination::Slash;
    if (skipIfEmpty && count == 0) return false;
    const bool terminatorOnNewLine = md.TerminatorOnNewLine() != 0;
    const bool startsOnNewLine = md.StartsOnNewLine() != 0 && newLine;
    if (startsOnNewLine && (count > 0 || (slash && terminatorOnNewLine))) {
        writer.NewLine();
    } else if (newLine && (count > 0 || slash)) {
        // Defaults ahead of it on its line aren't the last of what is around.
        const bool drop = writer.SetDropTrailingDefaults(false);
        writer.FlushItems();
        writer.SetDropTrailingDefaults(drop);
    }
    if (ISerializer* const custom = write.customs.Find(&md)) {
        if (custom->Serialize(list, writer, write.useVariables)) return true;
    }

    const MDType elementType = list.GetElementType();
    const bool ofContainers = elementType == MDType::Record || elementType == MDType::List;
    bool terminated = false;
    if (ofContainers) {
        for (int index = 0; index < count; ++index)
            terminated =
                SerializeContainer(list.GetContainer(index), write, index > 0, false,
                                   index > 0 && md.AutoFillsEmptyElements() ? Place::BehindElement : Place::Inside);
        if (slash && count > 0 && terminatorOnNewLine) writer.NewLine();
    } else {
        // The number of elements is part of the data, so defaults at their end stay, whatever the record around does.
        const LayoutScope layout(writer, false, write.repeats.listValueRepeat, write.repeats.listDefaultRepeat);
        SerializeItemList(list, write);
        if (count > 0) writer.FlushItems();
    }
    if (!slash) return terminated;
    writer.FlushItems();
    writer.WriteToken(terminator, true);
    return true;
}

void KeywordDataSerializer::SerializeMap(const Keywords::IKeywordMapData& map, const Write& write)
{
    ILineWriter& writer = write.writer;
    std::string text;
    for (int index = 0; index < map.GetEntryCount(); ++index) {
        const int value = map.GetEntryValue(index);
        if ((value & 0x7FFFFFFF) == 0) continue;
        const Keywords::IKeywordMapEntryMD& entry = *map.GetEntryMD(index);
        if (write.simulator != Keywords::SimulatorType::Any && !entry.IsSupportedBy(write.simulator)) continue;
        const std::vector<std::string>& names = entry.GetEntryNames(value);
        if (names.empty()) continue;
        text = names.front();
        if (text.ends_with('*')) text.pop_back();
        if (value != 1) text += fmt::format("={}", value);
        writer.Write(text, true);
    }
    if (map.GetMapMD()->GetTermination() == Termination::Slash) {
        writer.FlushItems();
        writer.WriteToken(terminator, true);
    }
}

void KeywordDataSerializer::SerializeRawText(const Keywords::IKeywordRawTextData& data, const Write& write)
{
    write.writer.WriteText(data.GetText());
    std::string end;
    if (data.GetRawTextMD()->GetTerminator(end)) write.writer.Write(end, false);
}

} // namespace Tarn::Fjel::Core::DeckManager

// Lists: of containers, and which way a list goes.

#include <algorithm>
#include <typeinfo>

#include <deckmanager/DeckManagerException.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordUtils.h>

#include "keywords/IDeserializer.h"
#include "keywords/KeywordDataDeserializer.h"
#include "keywords/SlotPlaces.h"

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;
using Keywords::Termination;

namespace {

/// What lies in the metadata of a list's elements, at whatever depth.
struct NestedMarks
{
    bool slash = false;    ///< a container that a "/" terminates
    bool autoFill = false; ///< a list whose empty elements repeat the one before

    void Note(const Keywords::IKeywordMD& md)
    {
        if (md.GetType() == MDType::List) {
            const auto& list = static_cast<const Keywords::IKeywordListMD&>(md);
            slash = slash || list.GetTermination() == Termination::Slash;
            autoFill = autoFill || list.AutoFillsEmptyElements();
            Note(*list.GetElementMD());
        } else if (md.GetType() == MDType::Record) {
            const auto& record = static_cast<const Keywords::IKeywordRecordMD&>(md);
            slash = slash || record.GetTermination() == Termination::Slash;
            for (int index = 0; index < record.GetItemCount(); ++index)
                Note(*record.GetItemMD(index));
        }
    }
};

/// An element without data stands for a repeat of the one before, which is filled in later.
bool KeepsElementsWithoutData(const Keywords::IKeywordListMD& md, bool autoFill)
{
    if (md.GetTermination() != Termination::None || !autoFill) return false;
    NestedMarks marks;
    marks.Note(*md.GetElementMD());
    return marks.slash && !marks.autoFill;
}

} // namespace

DeserializeResult KeywordDataDeserializer::Deserialize(Keywords::IKeywordListData& list, KeywordDataStore& store,
                                                       const Context& context, DeserializeState& state,
                                                       KeywordVariables* variables, bool nestedInSlashList)
{
    const SlotPlaces::Scope scope(state.places, list, store);
    const Keywords::IKeywordListMD& md = *list.GetListMD();
    if (IDeserializer* const custom = state.customs.Find(&md)) {
        if (custom->Deserialize(list, store, context, state, variables)) return {true, false, false};
        state.customRefused = true;
    }
    const std::int64_t size = ListSize(md, context, state);
    if (size == 0) return {};
    const Keywords::IKeywordMD* const element = md.GetElementMD();
    if (Keywords::KeywordUtils::IsItemMDType(element))
        return DeserializeItemList(list, size, md.AllowsDefaultElements(), store, state, variables);
    if (element->GetType() == MDType::Record || element->GetType() == MDType::List)
        return DeserializeContainerList(list, size, store, context, state, variables, nestedInSlashList);
    throw DeckManagerException(fmt::format("DeckManager::KeywordDataDeserializer::Deserialize(IKeywordListData): "
                                           "unhandled metadata type \"{}\"",
                                           typeid(*element).name()));
}

DeserializeResult KeywordDataDeserializer::DeserializeContainerList(Keywords::IKeywordListData& list, std::int64_t size,
                                                                    KeywordDataStore& store, const Context& context,
                                                                    DeserializeState& state,
                                                                    KeywordVariables* variables, bool nestedInSlashList)
{
    const Keywords::IKeywordListMD& md = *list.GetListMD();
    const bool slash = md.GetTermination() == Termination::Slash;
    const bool autoFill = md.AutoFillsEmptyElements() && state.autoFill;
    const bool keepsWithoutData = KeepsElementsWithoutData(md, autoFill);
    const Keywords::IListEndDetector* const detector = md.GetListEndDetector();
    const RecordPlan* const plan =
        md.GetElementMD()->GetType() == MDType::Record
            ? &state.PlanOf(static_cast<const Keywords::IKeywordRecordMD&>(*md.GetElementMD()))
            : nullptr;

    const int filledBefore = list.GetElementCount(); // by a reader of its own that then refused
    std::vector<bool> firstOfElements;               // of the elements that stay, for the fill
    bool sawSlash = false;
    bool lastEmpty = false;
    bool first = false;
    for (std::int64_t index = 0; !store.IsAtEnd(); ++index) {
        if (size >= 0 && index >= size) break;
        if (store.AtListEnd(detector)) break;
        if (list.GetRoom() <= 0) {
            state.ReportTruncation();
            break;
        }
        const std::uint64_t taken = store.TakenCount();
        list.AddElement();
        const int last = list.GetElementCount() - 1;
        Keywords::IKeywordData& element = list.GetContainer(last);
        const DeserializeResult result = plan ? Deserialize(static_cast<Keywords::IKeywordRecordData&>(element), *plan,
                                                            store, context, state, variables)
                                              : Deserialize(static_cast<Keywords::IKeywordListData&>(element), store,
                                                            context, state, variables, slash);
        if (store.TakenCount() == taken) {
            // Nothing was taken, and nothing would be taken the next time.
            list.RemoveElement(last);
            break;
        }
        state.NoteContainer(store);
        if (result.hasData) lastEmpty = result.firstWasTerminator;
        if (!result.hasData && !keepsWithoutData)
            list.RemoveElement(last);
        else if (autoFill)
            firstOfElements.push_back(result.firstWasTerminator);
        first = index == 0 && result.firstWasTerminator;
        if (result.terminated) {
            sawSlash = true;
            break;
        }
        if (!result.hasData && !result.firstWasTerminator) break;
    }

    if (lastEmpty && slash && !sawSlash && list.GetElementCount() > 0) {
        // The record of defaults at the end was the list's own terminator.
        list.RemoveElement(list.GetElementCount() - 1);
        if (!firstOfElements.empty()) firstOfElements.pop_back();
        sawSlash = true;
    }

    DeserializeResult listResult;
    listResult.firstWasTerminator = first;
    listResult.hasData = list.GetElementCount() > 0 || (slash && sawSlash);
    if (!slash) {
        listResult.terminated = sawSlash;
    } else if (nestedInSlashList && list.GetElementCount() == 0) {
        listResult.hasData = false;
        listResult.terminated = sawSlash;
    } else {
        CheckListEnd(store, state, sawSlash);
    }
    if (autoFill) FillEmptyElements(list, filledBefore, firstOfElements);
    return listResult;
}

/// Repeats the element before wherever an element was given by its terminator alone. What each began with is known from
/// the element `begin` on.
void KeywordDataDeserializer::FillEmptyElements(Keywords::IKeywordListData& list, int begin,
                                                const std::vector<bool>& firstWasTerminator)
{
    const Keywords::IKeywordListData& elements = list;
    for (int index = std::max(begin, 1); index < list.GetElementCount(); ++index) {
        if (firstWasTerminator[static_cast<std::size_t>(index - begin)] &&
            IsEmptyContainer(&elements.GetContainer(index))) {
            list.SetElement(index, elements.GetContainer(index - 1));
        }
    }
}

} // namespace Tarn::Fjel::Core::DeckManager

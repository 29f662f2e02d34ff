// Elements that come and go: records on lines of their own, and what is taken out of lists.

#include <algorithm>

#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/service/Strings.h>

#include "keywords/DataLine.h"
#include "keywords/DataTextEdit.h"

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;
using Keywords::Termination;

namespace {

/// Blanks up to the column, at least one where something stands ahead.
void PadTo(std::string& line, std::size_t column)
{
    if (line.size() < column)
        line.append(column - line.size(), ' ');
    else if (!line.empty() && !VeldaneDeckInfo::IsSpace(line.back()))
        line += ' ';
}

} // namespace

/// A record, as its neighbour is written if there is one: with its indent, and its tokens in the neighbour's columns
/// where that stands on one line and they have room there.
std::string DataTextEdit::RecordLine(const Reading& reading, const Keywords::IKeywordMD& recordMD,
                                     const std::vector<ItemToken>& tokens, bool hasNeighbour) const
{
    const auto& md = static_cast<const Keywords::IKeywordRecordMD&>(recordMD);
    const SlotPlaces& places = *reading.places;
    const auto column = [](std::int64_t position, std::size_t origin) {
        return static_cast<std::size_t>(position) - origin;
    };
    std::string indent = " ";
    std::size_t origin = 0; // of the columns
    bool hasColumns = false;
    if (hasNeighbour && places.WasMet() && places.First().IsKnown()) {
        const std::size_t lineBegin = TextLines::Begin(m_text, static_cast<std::size_t>(places.First().begin));
        const std::size_t first = TextLines::FirstOfLine(m_text, lineBegin);
        const std::string_view line = m_text.substr(lineBegin, first - lineBegin);
        origin = first - VeldaneDeckInfo::SkipSuppressMarker(line).size();
        if (static_cast<std::int64_t>(first) == places.First().begin) indent = m_text.substr(origin, first - origin);
        hasColumns = static_cast<std::int64_t>(first) == places.First().begin &&
                     places.Last().end <= static_cast<std::int64_t>(TextLines::End(m_text, lineBegin));
    }
    const auto compose = [&](bool quotesFirst) {
        std::string line = indent;
        for (std::size_t item = 0; item < tokens.size(); ++item) {
            const SlotPlaces::Token beside = hasColumns ? places.Find(static_cast<int>(item)) : SlotPlaces::Token();
            PadTo(line, beside.IsKnown() && beside.copies == 1 ? column(beside.begin, origin) : 0);
            line += item == 0 && quotesFirst ? tokens[item].Quoted() : tokens[item].Text();
        }
        return line;
    };
    std::string line = compose(false);
    if (TextLines::LooksLikeKeyword(line, 0)) {
        line = compose(true);
        if (TextLines::LooksLikeKeyword(line, 0)) line.insert(0, 1, ' ');
    }
    if (md.GetTermination() == Termination::Slash) {
        PadTo(line, hasColumns && places.EndsWithTerminator() ? column(places.Last().begin, origin) : 0);
        line += VeldaneDeckInfo::TERMINATION;
    }
    return line;
}

/// A line for a record ahead of or behind the one whose places are known; of an empty list, ahead of its terminator.
TextSplice DataTextEdit::InsertLine(const Reading& reading, std::string line, bool isAhead, bool closesList) const
{
    const SlotPlaces& places = *reading.places;
    if (reading.report.takenEnd < 0) {
        if (closesList) line.append(TextLines::LineEndAt(m_text, 0)) += VeldaneDeckInfo::TERMINATION;
        return AppendLine(line);
    }
    if (!places.WasMet() || !places.Last().IsKnown()) Stop(Outcome::NotInText, "The text has no place for the record.");
    if (isAhead) {
        const auto first = static_cast<std::size_t>(places.First().begin);
        const std::size_t begin = TextLines::Begin(m_text, first);
        line.append(TextLines::LineEndAt(m_text, begin));
        if (TextLines::FirstOfLine(m_text, begin) == first) return {begin, begin, std::move(line)};
        // It begins in a line that holds something else: that stays where it is.
        return {first, first, line.substr(line.find_first_not_of(" \t")) + ' '};
    }
    const auto last = static_cast<std::size_t>(places.Last().end);
    const std::string lineEnd(TextLines::LineEndAt(m_text, last));
    const std::string_view behind = Service::TrimmedLeft(m_text.substr(last, TextLines::End(m_text, last) - last));
    if (!places.EndsWithTerminator() && !behind.empty() && !behind.starts_with(VeldaneDeckInfo::COMMENT_MARKER))
        return {last, last, lineEnd + line};
    const std::size_t at = TextLines::Next(m_text, last);
    const bool isEnded = at > 0 && m_text[at - 1] == '\n';
    return {at, at, isEnded ? line + lineEnd : lineEnd + line};
}

std::string DataTextEdit::InsertRecord(const Path& list, int index, const std::vector<Value>& values)
{
    const Way way = Follow(list);
    const auto* const listMD = way.target && way.target->GetType() == MDType::List
                                   ? static_cast<const Keywords::IKeywordListMD*>(way.target)
                                   : nullptr;
    if (!listMD || listMD->GetElementMD()->GetType() != MDType::Record)
        Stop(Outcome::NoSuchItem, fmt::format("{} is no list of records.", Describe(way.steps)));
    const auto& md = static_cast<const Keywords::IKeywordRecordMD&>(*listMD->GetElementMD());

    std::vector<ItemToken> tokens;
    for (const Value& value : values) {
        const int item = static_cast<int>(tokens.size());
        if (item >= md.GetItemCount())
            Stop(Outcome::BadValue,
                 fmt::format("A record of {} has {} items.", Describe(way.steps), md.GetItemCount()));
        Way itemWay = way;
        itemWay.parent = &md;
        itemWay.target = md.GetItemMD(item);
        itemWay.steps.push_back(item);
        tokens.push_back(Token(value, itemWay));
    }
    const Value unset = Value::Default();
    const auto addDefault = [&] {
        Way itemWay = way;
        itemWay.parent = &md;
        itemWay.target = md.GetItemMD(static_cast<int>(tokens.size()));
        tokens.push_back(Token(unset, itemWay));
    };
    if (md.GetTermination() == Termination::None) {
        // Nothing ends such a record but its last item.
        while (static_cast<int>(tokens.size()) < md.GetItemCount() &&
               Keywords::KeywordUtils::IsItemMDType(md.GetItemMD(static_cast<int>(tokens.size()))))
            addDefault();
    } else {
        while (!tokens.empty() && tokens.back().IsDefault())
            tokens.pop_back();
        if (tokens.empty() && md.GetItemCount() > 0) addDefault();
    }

    const Reading counted = Read(m_text, nullptr, -1);
    const int count = List(counted, way.steps).GetElementCount();
    if (index < 0) index = count;
    if (index > count) {
        Stop(Outcome::NoSuchItem,
             fmt::format("There is no element {} in {}, which has {}.", index, Describe(way.steps), count));
    }
    std::vector<int> beside = way.steps;
    if (count > 0) beside.push_back(std::max(index - 1, 0));
    const Reading reading = ReadPlaces(beside, -1);
    const std::string line = RecordLine(reading, md, tokens, count > 0);
    const TextSplice splice = InsertLine(reading, line, index == 0, listMD->GetTermination() == Termination::Slash);
    const DataTreeChange change{DataTreeChange::Kind::Insert, way.steps, index};
    return Finish(reading, splice, change, [&](const Reading&, const Keywords::IKeywordData& changed) {
        const Keywords::IKeywordData& made =
            static_cast<const Keywords::IKeywordListData&>(changed).GetContainer(index);
        const auto& record = static_cast<const Keywords::IKeywordRecordData&>(made);
        for (int item = 0; item < record.GetItemCount(); ++item) {
            const Keywords::ConstSlot slot = record.GetItem(item);
            if (slot.GetContainer()) continue;
            const auto at = static_cast<std::size_t>(item);
            if (at < tokens.size() ? !tokens[at].IsHeldBy(slot) : slot.HasValue()) return false;
        }
        return true;
    });
}

std::string DataTextEdit::Remove(const Path& path)
{
    const Way way = Follow(path);
    if (!way.parent || way.parent->GetType() != MDType::List)
        Stop(Outcome::NoSuchItem, fmt::format("{} is no element of a list.", Describe(way.steps)));
    const int index = way.steps.back();
    const DataTreeChange change{DataTreeChange::Kind::Remove, {way.steps.begin(), way.steps.end() - 1}, index};
    const bool isItem = Keywords::KeywordUtils::IsItemMDType(way.target);
    const Reading reading = isItem ? ReadPlaces(change.way, index) : ReadPlaces(way.steps, -1);
    const int count = List(reading, change.way).GetElementCount();
    if (index >= count) {
        Stop(Outcome::NoSuchItem,
             fmt::format("There is no element {} in {}, which has {}.", index, Describe(change.way), count));
    }
    TextSplice splice;
    if (!isItem) {
        splice = RemoveLines(*reading.places);
    } else {
        const SlotPlaces::Token place = reading.places->Find(index);
        if (!place.IsKnown()) Stop(Outcome::NotInText, "The element repeats one that stands elsewhere in the text.");
        splice = TextSplice::Removing(m_text, place);
    }
    return Finish(reading, splice, change, [](const Reading&, const Keywords::IKeywordData&) { return true; });
}

/// All that a record stands on, but for the comments and blank lines between its lines.
TextSplice DataTextEdit::RemoveLines(const SlotPlaces& places) const
{
    if (!places.WasMet() || !places.First().IsKnown() || !places.Last().IsKnown() ||
        places.Last().end <= places.First().begin)
        Stop(Outcome::NotInText, "The record repeats one that stands elsewhere in the text.");
    const auto first = static_cast<std::size_t>(places.First().begin);
    const auto last = static_cast<std::size_t>(places.Last().end);
    const std::size_t begin = TextLines::Begin(m_text, first);
    const std::string_view behind = Service::TrimmedLeft(m_text.substr(last, TextLines::End(m_text, last) - last));
    const bool endsLine =
        behind.empty() || behind.starts_with(VeldaneDeckInfo::COMMENT_MARKER) || places.EndsWithTerminator();
    if (TextLines::FirstOfLine(m_text, begin) == first && endsLine) {
        TextSplice splice{begin, TextLines::Next(m_text, last), {}};
        for (std::size_t line = begin; line < splice.end; line = TextLines::Next(m_text, line)) {
            const std::string_view whole = m_text.substr(line, TextLines::Next(m_text, line) - line);
            if (!IsDataLine(whole)) splice.replacement += whole;
        }
        return splice;
    }
    SlotPlaces::Token all;
    all.begin = places.First().begin;
    all.end = places.Last().end;
    if (TextLines::End(m_text, first) < last) return {first, last, {}};
    return TextSplice::Removing(m_text, all);
}

} // namespace Tarn::Fjel::Core::DeckManager

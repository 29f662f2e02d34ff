#include "keywords/DataTextEdit.h"

#include <algorithm>
#include <exception>

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordListDataVariables.h>
#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/IKeywordRecordDataVariables.h>
#include <tarn/keywords/IKeywordStringMD.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/keywords/UnsetValue.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

#include "keywords/IDeserializer.h"
#include "keywords/KeywordDataDeserializer.h"
#include "keywords/KeywordGeneric.h"
#include "text/LineStringReader.h"

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;

namespace {

/// The reference in that place; null for none. Good while the variables are.
const std::string* FindVariable(const KeywordVariables& variables, const Keywords::IKeywordData& container, int index)
{
    const auto find = [index](const auto* of) -> const std::string* {
        if (!of) return nullptr;
        const auto indices = of->GetVariableIndices();
        const bool holds = std::find(indices.begin(), indices.end(), index) != indices.end();
        return holds ? &of->GetVariable(index).GetString() : nullptr;
    };
    const Keywords::IKeywordDataVariables* const found = variables.GetDataVariables(&container);
    if (const auto* const text = find(dynamic_cast<const Keywords::IKeywordListDataVariables*>(found))) return text;
    return find(dynamic_cast<const Keywords::IKeywordRecordDataVariables*>(found));
}

/// The place holds the token's reference, or none where the token is none.
bool HasVariableOf(const ItemToken& token, const KeywordVariables& variables, const Keywords::IKeywordData& container,
                   int index)
{
    const std::string* const found = FindVariable(variables, container, index);
    return token.IsVariable() ? found && *found == token.String() : !found;
}

Keywords::ConstSlot SlotOf(const Keywords::IKeywordData& container, int index)
{
    return Keywords::ConstSlot(container, index);
}

} // namespace

DataTextEdit::DataTextEdit(const Keywords::IKeywordSyntax& syntax, const std::string& name,
                           const DataTextEditor::Settings& settings, std::string_view text)
    : m_syntax(syntax), m_name(name), m_settings(settings), m_text(text)
{
    if (m_syntax.GetMetaData() == nullptr)
        Stop(Outcome::NoSuchItem, fmt::format("The keyword {} has no data.", m_name));
    if (m_syntax.GetMetaData()->GetType() == MDType::RawText)
        Stop(Outcome::NotInText, fmt::format("The data of {} are text as it stands, and have no items.", m_name));
}

void DataTextEdit::Stop(Outcome outcome, std::string reason)
{
    throw Obstacle{outcome, std::move(reason)};
}

std::string DataTextEdit::Describe(const std::vector<int>& steps) const
{
    std::string text = m_name;
    for (const int step : steps)
        text += fmt::format("[{}]", step);
    return text;
}

/// The path in numbers. What the metadata can tell is tested here; how many elements a list has, the data tell.
DataTextEdit::Way DataTextEdit::Follow(const Path& path) const
{
    Way way;
    way.target = m_syntax.GetMetaData();
    for (const DataTextEditor::Step& step : path) {
        if (!way.target || Keywords::KeywordUtils::IsItemMDType(way.target))
            Stop(Outcome::NoSuchItem, fmt::format("{} is a single value and has no items.", Describe(way.steps)));
        const auto missing = [&](std::string_view noun) {
            Stop(Outcome::NoSuchItem,
                 step.index >= 0 || step.name.empty()
                     ? fmt::format("There is no {} {} in {}.", noun, step.index, Describe(way.steps))
                     : fmt::format("There is no {} {} in {}.", noun, step.name, Describe(way.steps)));
        };
        int index = step.index;
        way.parent = way.target;
        if (CustomDeserializers::InForce().Find(way.parent)) way.isInExpression = true;
        switch (way.parent->GetType()) {
        case MDType::Record: {
            const auto& md = static_cast<const Keywords::IKeywordRecordMD&>(*way.parent);
            if (!step.name.empty()) index = md.FindItem(step.name);
            if (index < 0 || index >= md.GetItemCount()) missing("item");
            way.target = md.GetItemMD(index);
            break;
        }
        case MDType::List:
            if (index < 0) missing("element");
            way.target = static_cast<const Keywords::IKeywordListMD&>(*way.parent).GetElementMD();
            break;
        case MDType::Map: {
            const auto& md = static_cast<const Keywords::IKeywordMapMD&>(*way.parent);
            if (!step.name.empty()) index = md.FindEntry(step.name);
            if (index < 0 || index >= md.GetEntryCount()) missing("entry");
            way.target = nullptr;
            break;
        }
        default:
            missing("item");
        }
        way.steps.push_back(index);
    }
    return way;
}

DataTextEdit::Reading DataTextEdit::Read(std::string_view text, const std::vector<int>* way, std::int64_t wanted) const
{
    Reading reading;
    std::optional<KeywordGeneric> loose;
    if (!m_settings.keyword)
        loose.emplace(m_syntax, m_settings.allowsVariables, nullptr, nullptr, 0, 0, m_name, nullptr);
    const IKeyword& keyword = m_settings.keyword ? *m_settings.keyword : static_cast<const IKeyword&>(*loose);
    reading.data = Keywords::KeywordDataFactory::Instance().ConstructSafely(m_syntax);
    if (way) reading.places.emplace(*reading.data, text, *way, wanted);
    LineStringReader lines{std::string(text)};
    const Service::LogEnabler silence(false);
    try {
        KeywordDataDeserializer::Deserialize(keyword, *reading.data, lines, 0, static_cast<long long>(text.size()),
                                             m_settings.context, false,
                                             m_settings.allowsVariables ? &reading.variables : nullptr, &reading.report,
                                             reading.places ? &*reading.places : nullptr);
    } catch (const DeckManagerException& exception) {
        Stop(Outcome::NotInText, fmt::format("The data of {} can not be read: {}", m_name, exception.what()));
    }
    return reading;
}

DataTextEdit::Reading DataTextEdit::ReadPlaces(const std::vector<int>& way, std::int64_t wanted) const
{
    Reading reading = Read(m_text, &way, wanted);
    if (!reading.places->AreReliable())
        Stop(Outcome::NotInText, "The text holds lines that are read in another form than they stand.");
    return reading;
}

const Keywords::IKeywordData& DataTextEdit::Container(const Reading& reading, const std::vector<int>& way) const
{
    const Keywords::IKeywordData* at = reading.data.get();
    std::vector<int> passed;
    for (const int step : way) {
        if (at->GetType() == MDType::List) {
            const auto& list = static_cast<const Keywords::IKeywordListData&>(*at);
            if (step >= list.GetElementCount()) {
                Stop(Outcome::NoSuchItem, fmt::format("There is no element {} in {}, which has {}.", step,
                                                      Describe(passed), list.GetElementCount()));
            }
            at = &list.GetContainer(step);
        } else {
            at = &static_cast<const Keywords::IKeywordRecordData&>(*at).GetContainer(step);
        }
        passed.push_back(step);
    }
    return *at;
}

const Keywords::IKeywordListData& DataTextEdit::List(const Reading& reading, const std::vector<int>& way) const
{
    return static_cast<const Keywords::IKeywordListData&>(Container(reading, way));
}

ItemToken DataTextEdit::Token(const Value& value, const Way& way) const
{
    ItemToken::Surroundings surroundings;
    surroundings.allowsVariables = m_settings.allowsVariables;
    const bool inList = way.parent->GetType() == MDType::List;
    const bool isString = way.target->GetType() == MDType::String;
    surroundings.allowsCommas =
        inList && isString && static_cast<const Keywords::IKeywordStringMD&>(*way.target).AllowsCommas();
    surroundings.isExpression = inList && isString && way.isInExpression;
    ItemToken token;
    std::string reason;
    if (!ItemToken::Make(value, *way.target, surroundings, token, reason)) Stop(Outcome::BadValue, std::move(reason));
    if (token.IsDefault() && inList &&
        !static_cast<const Keywords::IKeywordListMD&>(*way.parent).AllowsDefaultElements())
        Stop(Outcome::BadValue, fmt::format("The elements of {} can not be left to a default.",
                                            Describe({way.steps.begin(), way.steps.end() - 1})));
    return token;
}

/// The token as it goes to that place: in quotes where the old one had them, and where it would otherwise begin a line
/// as a keyword does.
std::string DataTextEdit::TokenText(const ItemToken& token, const TextSplice& splice, bool keepsQuotes) const
{
    const bool wasQuoted = keepsQuotes && splice.begin < splice.end && m_text[splice.begin] == VeldaneDeckInfo::QUOTE;
    if (wasQuoted) return token.Quoted();
    if (TextLines::IsAtHead(m_text, splice.begin) && TextLines::LooksLikeKeyword(token.Text(), 0))
        return token.Quoted();
    return token.Text();
}

DataTextEdit::Reading DataTextEdit::ReadAgain(const Reading& before, const std::string& text,
                                              const DataTreeChange& change) const
{
    Reading after = Read(text, nullptr, -1);
    if (!change.LeadsFrom(*before.data, *after.data))
        Stop(Outcome::NotInText, fmt::format("With the change in its text {} would be read in another way.", m_name));
    return after;
}

ItemToken DataTextEdit::AsRead(const ItemToken& token, const Way& way) const
{
    if (token.String().find('$') == std::string::npos) return token;
    std::string path;
    m_settings.context.ResolvePathAliases(m_settings.keyword, token.String(), path);
    return path == token.String() ? token : Token(Value::Text(path), way);
}

std::string DataTextEdit::Set(const Path& path, const Value& value)
{
    Way way = Follow(path);
    if (way.steps.empty() || (way.target && !Keywords::KeywordUtils::IsItemMDType(way.target)))
        Stop(Outcome::NoSuchItem, fmt::format("{} is no single value.", Describe(way.steps)));
    if (!way.target) return SetEntry(way, value);

    const ItemToken token = Token(value, way);
    const int index = way.steps.back();
    const DataTreeChange change{DataTreeChange::Kind::Set, {way.steps.begin(), way.steps.end() - 1}, index};
    const Reading reading = ReadPlaces(change.way, index);
    const Keywords::IKeywordData& container = Container(reading, change.way);
    const bool inList = container.GetType() == MDType::List;
    if (inList && index >= List(reading, change.way).GetElementCount()) {
        Stop(Outcome::NoSuchItem, fmt::format("There is no element {} in {}, which has {}.", index,
                                              Describe(change.way), List(reading, change.way).GetElementCount()));
    }
    const bool hasVariable = FindVariable(reading.variables, container, index) != nullptr;
    if (!token.IsVariable() && !hasVariable && token.IsHeldBy(SlotOf(container, index)) &&
        (!inList || token.IsDefault() == List(reading, change.way).IsElementDefaulted(index)))
    {
        return std::string(m_text);
    }

    const SlotPlaces::Token place = reading.places->Find(index);
    TextSplice splice;
    if (place.IsKnown()) {
        splice = TextSplice::Replacing(m_text, place, {});
        splice =
            TextSplice::Replacing(m_text, place, TokenText(token, splice, way.target->GetType() != MDType::RestOfLine));
    } else if (!inList) {
        splice = PlaceMissingItem(reading, way, index, token.Text());
    } else {
        Stop(Outcome::NotInText, "The element repeats one that stands elsewhere in the text.");
    }
    const ItemToken read = AsRead(token, way);
    return Finish(reading, splice, change, [&](const Reading& after, const Keywords::IKeywordData& changed) {
        if (inList && static_cast<const Keywords::IKeywordListData&>(changed).IsElementDefaulted(index) !=
                          (read.IsDefault() || read.IsVariable()))
            return false;
        return HasVariableOf(read, after.variables, changed, index) && read.IsHeldBy(SlotOf(changed, index));
    });
}

/// An item that the text leaves out: behind the last token ahead of it, with defaults for the items between.
TextSplice DataTextEdit::PlaceMissingItem(const Reading& reading, const Way& way, int index,
                                          const std::string& token) const
{
    const SlotPlaces& places = *reading.places;
    const auto& md = static_cast<const Keywords::IKeywordRecordMD&>(*way.parent);
    const Keywords::IRecordItemTraits* const traits = md.GetItemTraits();
    if (!Keywords::KeywordUtils::IsItemMDType(md.GetItemMD(index)) ||
        md.GetItemMD(index)->GetType() != MDType::RestOfLine) {
        int last = index - 1;
        while (last >= 0 && !places.Find(last).IsKnown() && Keywords::KeywordUtils::IsItemMDType(md.GetItemMD(last)))
            --last;
        std::int64_t defaults = 0;
        for (int item = last + 1; item < index; ++item)
            defaults += traits && traits->IsOptionalOnRead(item) ? 0 : 1;
        const std::string filled = defaults > 0 ? DefaultsToken(defaults) + ' ' + token : token;
        for (int behind = index + 1; behind < md.GetItemCount(); ++behind) {
            if (const SlotPlaces::Token next = places.Find(behind); next.IsKnown() && next.copy == 0)
                return TextSplice::InsertingAhead(m_text, next, filled);
        }
        if (places.LastValue().IsKnown()) return TextSplice::InsertingBehind(places.LastValue(), filled);
        if (places.WasMet() && places.EndsWithTerminator()) {
            const auto at = static_cast<std::size_t>(places.Last().begin);
            return {at, at, filled + ' '};
        }
        if (reading.report.takenEnd < 0 && way.steps.size() == 1)
            return AppendLine(' ' + filled + (md.GetTermination() == Keywords::Termination::Slash ? " /" : ""));
    } else if (reading.report.takenEnd < 0 && way.steps.size() == 1 && index == 0) {
        return AppendLine(token);
    }
    Stop(Outcome::NotInText, fmt::format("The text has no place for {}.", Describe(way.steps)));
}

/// A line of its own for a text without data: behind the comment that it begins with. What comes behind a blank line is
/// the comment above the next keyword.
TextSplice DataTextEdit::AppendLine(std::string_view content) const
{
    std::size_t at = 0;
    while (at < m_text.size() && TextLines::FirstOfLine(m_text, at) < TextLines::End(m_text, at))
        at = TextLines::Next(m_text, at);
    TextSplice splice{at, at, {}};
    const std::string_view lineEnd = TextLines::LineEndAt(m_text, 0);
    if (at > 0 && m_text[at - 1] != '\n') splice.replacement = lineEnd;
    splice.replacement += content;
    splice.replacement += lineEnd;
    return splice;
}

std::string DataTextEdit::SetEntry(const Way& way, const Value& value)
{
    const int index = way.steps.back();
    ItemToken token;
    std::string reason;
    if (!ItemToken::MakeEntry(value, token, reason)) Stop(Outcome::BadValue, std::move(reason));
    const DataTreeChange change{DataTreeChange::Kind::Set, {way.steps.begin(), way.steps.end() - 1}, index};
    const Reading reading = ReadPlaces(change.way, index);
    const auto& map = static_cast<const Keywords::IKeywordMapData&>(Container(reading, change.way));
    const int wanted = token.IsDefault() ? Keywords::UnsetValue::MapEntry : token.Integer();
    if (map.GetEntryValue(index) == wanted) return std::string(m_text);

    const SlotPlaces& places = *reading.places;
    const SlotPlaces::Token place = places.Find(index);
    const bool isEmpty = !places.LastValue().IsKnown();
    bool isNamed = isEmpty;
    if (!isEmpty) {
        std::string_view first = m_text.substr(static_cast<std::size_t>(places.First().begin));
        if (first.starts_with(VeldaneDeckInfo::QUOTE)) first.remove_prefix(1);
        isNamed = !first.empty() && !Service::IsDigit(first.front());
    }
    const auto behindLast = [&](const std::string& text) -> TextSplice {
        if (!isEmpty) return TextSplice::InsertingBehind(places.LastValue(), text);
        if (places.EndsWithTerminator()) {
            const auto at = static_cast<std::size_t>(places.Last().begin);
            return {at, at,
                    (TextLines::FirstOfLine(m_text, TextLines::Begin(m_text, at)) == at ? " " : "") + text + ' '};
        }
        return AppendLine(' ' + text + " /");
    };
    TextSplice splice;
    if (!isNamed) {
        if (place.IsKnown()) {
            splice = TextSplice::Replacing(m_text, place, token.Text());
        } else {
            int last = index - 1;
            while (last >= 0 && !places.Find(last).IsKnown())
                --last;
            const int defaults = index - 1 - last;
            splice = behindLast(defaults > 0 ? DefaultsToken(defaults) + ' ' + token.Text() : token.Text());
        }
    } else if (place.IsKnown() && token.IsDefault()) {
        splice = TextSplice::Removing(m_text, place);
    } else if (place.IsKnown()) {
        const std::string_view raw =
            m_text.substr(static_cast<std::size_t>(place.begin), static_cast<std::size_t>(place.end - place.begin));
        const bool quoted = raw.ends_with(VeldaneDeckInfo::QUOTE);
        const std::string_view name = raw.substr(0, std::min(raw.find('='), raw.size() - (quoted ? 1 : 0)));
        splice = TextSplice::Replacing(m_text, place, fmt::format("{}={}{}", name, wanted, quoted ? "'" : ""));
    } else {
        const auto& entry = *map.GetEntryMD(index);
        const std::vector<std::string>& names = entry.GetEntryNames(wanted);
        std::string name = names.empty() ? entry.GetName() : names.front();
        if (name.ends_with('*')) name.pop_back();
        splice = behindLast(wanted == 1 ? name : fmt::format("{}={}", name, wanted));
    }
    return Finish(reading, splice, change, [&](const Reading&, const Keywords::IKeywordData& changed) {
        return static_cast<const Keywords::IKeywordMapData&>(changed).GetEntryValue(index) == wanted;
    });
}

std::string DataTextEdit::InsertElement(const Path& list, int index, const Value& value)
{
    Way way = Follow(list);
    if (!way.target || way.target->GetType() != MDType::List)
        Stop(Outcome::NoSuchItem, fmt::format("{} is no list.", Describe(way.steps)));
    Way element = way;
    element.parent = way.target;
    element.target = static_cast<const Keywords::IKeywordListMD&>(*way.target).GetElementMD();
    element.steps.push_back(std::max(index, 0));
    if (!Keywords::KeywordUtils::IsItemMDType(element.target))
        Stop(Outcome::NoSuchItem, fmt::format("{} is no list of single values.", Describe(way.steps)));
    const ItemToken token = Token(value, element);

    Reading reading = ReadPlaces(way.steps, std::max(index, 0));
    const int count = List(reading, way.steps).GetElementCount();
    if (index < 0) index = count;
    if (index > count) {
        Stop(Outcome::NoSuchItem,
             fmt::format("There is no element {} in {}, which has {}.", index, Describe(way.steps), count));
    }
    const DataTreeChange change{DataTreeChange::Kind::Insert, way.steps, index};
    TextSplice splice;
    if (count > 0) {
        const bool isBehind = index == count;
        if (isBehind) reading = ReadPlaces(way.steps, count - 1);
        const SlotPlaces::Token place = reading.places->Find(isBehind ? count - 1 : index);
        if (!place.IsKnown() || (isBehind && place.copy < place.copies - 1))
            Stop(Outcome::NotInText, fmt::format("The text has no place for an element of {}.", Describe(way.steps)));
        splice = isBehind ? TextSplice::InsertingBehind(place, token.Text()) : InsertAhead(place, token.Text());
    } else if (reading.places->WasMet() && reading.places->EndsWithTerminator()) {
        const auto at = static_cast<std::size_t>(reading.places->Last().begin);
        splice = {at, at, token.Text() + ' '};
        splice.replacement = TokenText(token, splice, false) + ' ';
    } else if (way.parent && way.parent->GetType() == MDType::Record) {
        const std::vector<int> record{way.steps.begin(), way.steps.end() - 1};
        splice = PlaceMissingItem(ReadPlaces(record, -1), way, way.steps.back(), token.Text());
    } else if (reading.report.takenEnd < 0 && way.steps.empty()) {
        splice = AppendLine(' ' + token.Text() + " /");
    } else {
        Stop(Outcome::NotInText, fmt::format("The text has no place for an element of {}.", Describe(way.steps)));
    }
    return Finish(reading, splice, change, [&](const Reading& after, const Keywords::IKeywordData& changed) {
        return token.IsHeldBy(SlotOf(changed, index)) && HasVariableOf(token, after.variables, changed, index);
    });
}

TextSplice DataTextEdit::InsertAhead(const SlotPlaces::Token& token, const std::string& inserted) const
{
    TextSplice splice = TextSplice::InsertingAhead(m_text, token, inserted);
    if (TextLines::IsAtHead(m_text, splice.begin) && TextLines::LooksLikeKeyword(inserted, 0))
        splice.replacement = ' ' + splice.replacement;
    return splice;
}

} // namespace Tarn::Fjel::Core::DeckManager

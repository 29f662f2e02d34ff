#include "data/ItemPath.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

#include <fmt/format.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordListMD.h>
#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/IKeywordRecordMD.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/service/Strings.h>

#include "command/Failure.h"
#include "output/Nearest.h"

namespace Deckman {

namespace {

namespace Service = Tarn::Fjel::Core::Service;

using Keywords::IKeywordData;
using Keywords::IKeywordListData;
using Keywords::IKeywordMapData;
using Keywords::IKeywordRecordData;
using Keywords::MDType;

/// Beyond so many records the nearest name is not looked for: an edit distance to each would take a while.
constexpr int mostRecordsCompared = 50000;

/// Takes what stands in quotes at the head of `text`, and the quotes. Empty when there is no closing quote.
std::optional<ItemPath::Step> TakeQuoted(std::string_view& text)
{
    const std::size_t end = text.find(text.front(), 1);
    if (end == std::string_view::npos) return std::nullopt;
    ItemPath::Step step{std::string(text.substr(1, end - 1)), true};
    text.remove_prefix(end + 1);
    return step;
}

bool StartsQuoted(std::string_view text)
{
    return text.starts_with('\'') || text.starts_with('"');
}

void SkipBlanks(std::string_view& text)
{
    while (text.starts_with(' '))
        text.remove_prefix(1);
}

/// Takes a step from behind its dot.
std::optional<ItemPath::Step> TakeDotted(std::string_view& text)
{
    if (StartsQuoted(text)) return TakeQuoted(text);
    const std::string_view word = text.substr(0, text.find_first_of(".["));
    if (word.empty() || word.find_first_of(" ]'\"/:") != std::string_view::npos) return std::nullopt;
    text.remove_prefix(word.size());
    return ItemPath::Step{std::string(word), false};
}

/// Takes a step from behind its opening bracket, with the closing one.
std::optional<ItemPath::Step> TakeBracketed(std::string_view& text)
{
    SkipBlanks(text);
    std::optional<ItemPath::Step> step;
    if (StartsQuoted(text)) {
        step = TakeQuoted(text);
        SkipBlanks(text);
    } else {
        const std::string_view word = Service::Trimmed(text.substr(0, text.find(']')));
        if (word.empty() || word.find_first_of("['\"") != std::string_view::npos) return std::nullopt;
        step = ItemPath::Step{std::string(word), false};
        text.remove_prefix(std::min(text.size(), text.find(']')));
    }
    if (!text.starts_with(']')) return std::nullopt;
    text.remove_prefix(1);
    return step;
}

/// The number of a step that is one; one that is too large for anything counts as the largest.
std::optional<int> NumberOf(const ItemPath::Step& step)
{
    if (step.isQuoted || !Service::AllDigits(step.text)) return std::nullopt;
    int number = 0;
    const auto [end, error] = std::from_chars(step.text.data(), step.text.data() + step.text.size(), number);
    return error == std::errc() ? number : std::numeric_limits<int>::max();
}

std::string_view NounFor(MDType element)
{
    return element == MDType::Record ? "record" : element == MDType::List ? "list" : "value";
}

/// One walk along a path, which knows what it has passed, for the messages.
class PathWalk
{
public:
    PathWalk(const IKeywordData& data, std::string_view keyword) : m_item{&data, -1}, m_passed(keyword) {}

    void Take(const ItemPath::Step& step)
    {
        if (!m_item.IsContainer()) throw Missing(fmt::format("{} is a single value and has no items.", m_passed));
        const bool isInList = m_item.container->GetType() == MDType::List;
        switch (m_item.container->GetType()) {
        case MDType::Record:
            StepInto(static_cast<const IKeywordRecordData&>(*m_item.container), step);
            break;
        case MDType::List:
            StepInto(static_cast<const IKeywordListData&>(*m_item.container), step);
            break;
        case MDType::Map:
            StepInto(static_cast<const IKeywordMapData&>(*m_item.container), step);
            break;
        default:
            throw Missing(fmt::format("{} is text as it stands and has no items.", m_passed));
        }
        m_passed += isInList || step.isQuoted || NumberOf(step) ? fmt::format("[{}]", step.text)
                                                                : fmt::format(".{}", step.text);
    }
    ItemPath::Item Place() const { return m_item; }
    const std::vector<int>& Numbers() const { return m_numbers; }

    Failure OutOfRange(const ItemPath::Step& step, std::string_view noun, int count) const
    {
        const std::string many = noun == "entry" ? "entries" : fmt::format("{}s", noun);
        const std::string bounds = count == 0   ? fmt::format("there are no {} in it", many)
                                   : count == 1 ? fmt::format("it has 1 {}, number 0", noun)
                                                : fmt::format("it has {} {}, from 0 to {}", count, many, count - 1);
        return Missing(fmt::format("There is no {} {} in {}: {}.", noun, step.text, m_passed, bounds));
    }

private:
    static Failure Missing(const std::string& text) { return Failure(NotThere, text); }

    void Enter(const IKeywordData& container) { m_item = {&container, -1}; }

    void StepInto(const IKeywordRecordData& record, const ItemPath::Step& step)
    {
        const auto& md = *record.GetRecordMD();
        // A name first: nothing keeps a catalogue from names that are digits.
        int index = step.text.empty() ? -1 : md.FindItem(step.text);
        if (const std::optional<int> number = NumberOf(step); index < 0 && number) {
            if (*number >= record.GetItemCount()) throw OutOfRange(step, "item", record.GetItemCount());
            index = *number;
        }
        if (index < 0) {
            std::vector<std::string_view> names;
            for (int i = 0; i < md.GetItemCount(); ++i)
                names.push_back(md.GetItemName(i));
            throw Missing(fmt::format("{} has no item {}.{}", m_passed, step.text,
                                      NearestOrAllHint(step.text, names, "Its items")));
        }
        m_numbers.push_back(index);
        if (Keywords::KeywordUtils::IsItemMDType(md.GetItemMD(index)))
            m_item.index = index;
        else
            Enter(record.GetContainer(index));
    }

    void StepInto(const IKeywordListData& list, const ItemPath::Step& step)
    {
        const MDType element = list.GetElementType();
        const bool isOfItems = Keywords::KeywordUtils::IsItemMDType(element);
        if (const std::optional<int> number = NumberOf(step)) {
            if (*number >= list.GetElementCount()) throw OutOfRange(step, NounFor(element), list.GetElementCount());
            m_numbers.push_back(*number);
            if (isOfItems)
                m_item.index = *number;
            else
                Enter(list.GetContainer(*number));
            return;
        }
        if (element != MDType::Record) {
            throw Missing(fmt::format("The {}s of {} go by number{}.", NounFor(element), m_passed,
                                      list.GetElementCount() > 0
                                          ? fmt::format(", from 0 to {}", list.GetElementCount() - 1)
                                          : std::string(" and there are none")));
        }
        for (int i = 0; i < list.GetElementCount(); ++i) {
            const IKeywordData& record = list.GetContainer(i);
            const auto name = NameOfRecord(record);
            if (name && Service::NoCaseStringEqual(*name, step.text)) {
                m_numbers.push_back(i);
                Enter(record);
                return;
            }
        }
        throw NoRecordOfThatName(list, step.text);
    }

    Failure NoRecordOfThatName(const IKeywordListData& list, const std::string& name) const
    {
        std::vector<std::string_view> names;
        for (int i = 0; i < std::min(list.GetElementCount(), mostRecordsCompared); ++i) {
            if (const auto record = NameOfRecord(list.GetContainer(i))) names.push_back(*record);
        }
        if (names.empty() && list.GetElementCount() > 0)
            return Missing(fmt::format("The records of {} have no names; they go by number, from 0 to {}.", m_passed,
                                       list.GetElementCount() - 1));
        return Missing(fmt::format("There is no record {} in {}.{}", name, m_passed,
                                   NearestOrAllHint(name, names, "Its records")));
    }

    void StepInto(const IKeywordMapData& map, const ItemPath::Step& step)
    {
        const auto& md = *map.GetMapMD();
        int index = md.FindEntry(step.text);
        if (const std::optional<int> number = NumberOf(step); index < 0 && number) {
            if (*number >= map.GetEntryCount()) throw OutOfRange(step, "entry", map.GetEntryCount());
            index = *number;
        }
        if (index < 0) {
            std::vector<std::string_view> names;
            for (int i = 0; i < map.GetEntryCount(); ++i)
                names.push_back(map.GetEntryMD(i)->GetName());
            throw Missing(fmt::format("{} has no entry {}.{}", m_passed, step.text,
                                      NearestOrAllHint(step.text, names, "Its entries")));
        }
        m_numbers.push_back(index);
        m_item.index = index;
    }

    ItemPath::Item m_item;
    std::vector<int> m_numbers;
    std::string m_passed;
};

} // namespace

std::optional<ItemPath> ItemPath::Parse(std::string_view text)
{
    ItemPath path;
    while (!text.empty()) {
        const char lead = text.front();
        if (lead != '.' && lead != '[') return std::nullopt;
        text.remove_prefix(1);
        std::optional<Step> step = lead == '.' ? TakeDotted(text) : TakeBracketed(text);
        if (!step) return std::nullopt;
        path.m_steps.push_back(std::move(*step));
    }
    return path;
}

std::string ItemPath::NamedStep(std::string_view text)
{
    const bool isPlain = !text.empty() && !Service::AllDigits(text) && text.find_first_of("[]'\"") == text.npos &&
                         Service::Trimmed(text) == text;
    if (isPlain) return fmt::format("[{}]", text);
    return text.find('\'') == text.npos ? fmt::format("['{}']", text) : fmt::format("[\"{}\"]", text);
}

std::optional<int> ItemPath::AsNumber() const
{
    return m_steps.size() == 1 ? NumberOf(m_steps.front()) : std::nullopt;
}

ItemPath::Item ItemPath::FindAlone(const Keywords::IKeywordListData& alone, int count, std::string_view keyword) const
{
    if (alone.GetElementCount() > 0) return {&alone, 0};
    throw PathWalk(alone, keyword).OutOfRange(m_steps.front(), NounFor(alone.GetElementType()), count);
}

ItemPath::Item ItemPath::Find(const IKeywordData& data, std::string_view keyword) const
{
    PathWalk walk(data, keyword);
    for (const Step& step : m_steps)
        walk.Take(step);
    return walk.Place();
}

std::vector<int> ItemPath::Numbers(const IKeywordData& data, std::string_view keyword) const
{
    PathWalk walk(data, keyword);
    for (const Step& step : m_steps)
        walk.Take(step);
    return walk.Numbers();
}

std::optional<std::vector<int>> ItemPath::Numbers(const Keywords::IKeywordMD& metadata) const
{
    std::vector<int> numbers;
    const Keywords::IKeywordMD* place = &metadata;
    for (const Step& step : m_steps) {
        const std::optional<int> number = NumberOf(step);
        if (place == nullptr) return std::nullopt;
        if (place->GetType() == MDType::List && number) {
            place = static_cast<const Keywords::IKeywordListMD&>(*place).GetElementMD();
            numbers.push_back(*number);
        } else if (place->GetType() == MDType::Record) {
            const auto& record = static_cast<const Keywords::IKeywordRecordMD&>(*place);
            const int named = step.text.empty() ? -1 : record.FindItem(step.text);
            const int index = named < 0 && number ? *number : named;
            if (index < 0 || index >= record.GetItemCount()) return std::nullopt;
            place = record.GetItemMD(index);
            numbers.push_back(index);
        } else {
            return std::nullopt;
        }
    }
    return numbers;
}

std::optional<std::string_view> NameOfRecord(const IKeywordData& data)
{
    if (data.GetType() != MDType::Record) return std::nullopt;
    const auto& record = static_cast<const IKeywordRecordData&>(data);
    for (int i = 0; i < record.GetItemCount(); ++i) {
        const Keywords::ConstSlot slot = record.GetItem(i);
        switch (slot.Kind()) {
        case MDType::String:
        case MDType::RestOfLine:
            if (slot.HasValue()) return slot.GetString();
            break;
        case MDType::Record:
            if (const auto name = NameOfRecord(*slot.GetContainer())) return name;
            break;
        default:
            break;
        }
    }
    return std::nullopt;
}

} // namespace Deckman

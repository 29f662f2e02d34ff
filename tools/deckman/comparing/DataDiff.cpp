#include "comparing/DataDiff.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include <fmt/format.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordRawTextData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/service/Strings.h>

#include "data/DataHash.h"
#include "output/SequenceAlignment.h"

namespace Deckman {

namespace Service = Tarn::Fjel::Core::Service;

namespace {

using Keywords::IKeywordData;
using Keywords::IKeywordListData;
using Keywords::IKeywordMapData;
using Keywords::IKeywordRawTextData;
using Keywords::IKeywordRecordData;
using Keywords::IKeywordRecordMD;
using Keywords::MDType;
using Kind = DiffReport::Kind;

/// So many changed values of one list are told, and how many more there are.
constexpr int mostTold = 5;
/// Lists of more values than this are compared place by place, also when one is longer.
constexpr int mostAligned = 200000;

bool IsItem(const Keywords::IKeywordMD* md)
{
    return Keywords::KeywordUtils::IsItemMDType(md);
}

/// What quotes in a place can't hold, and what no command line can.
constexpr std::string_view noStep("'\"\0", 3);

/// Tells how to name the records of a list: by its first string where that leads to it, else by number.
class RecordNames
{
public:
    explicit RecordNames(const IKeywordListData& list) : m_list(list) {}

    std::string StepTo(int index)
    {
        if (!m_isRead) Read();
        const auto name = NameOfRecord(m_list.GetContainer(index));
        if (name && !name->empty()) {
            const auto first = m_first.find(Service::Uppercased(*name));
            if (first != m_first.end() && first->second == index && name->find_first_of(noStep) == name->npos)
                return ItemPath::NamedStep(*name);
        }
        return fmt::format("[{}]", index);
    }

private:
    void Read()
    {
        m_isRead = true;
        for (int i = 0; i < m_list.GetElementCount(); ++i) {
            if (const auto name = NameOfRecord(m_list.GetContainer(i)))
                m_first.try_emplace(Service::Uppercased(*name), i);
        }
    }

    const IKeywordListData& m_list;
    bool m_isRead = false;
    std::unordered_map<std::string, int> m_first;
};

} // namespace

void DataDiff::Compare(const IKeywordData& oldData, const IKeywordData& newData, const std::string& where)
{
    switch (newData.GetType()) {
    case MDType::Record:
        CompareRecords(static_cast<const IKeywordRecordData&>(oldData), static_cast<const IKeywordRecordData&>(newData),
                       where);
        break;
    case MDType::List:
        CompareLists(static_cast<const IKeywordListData&>(oldData), static_cast<const IKeywordListData&>(newData),
                     where);
        break;
    case MDType::Map: {
        const auto& map = static_cast<const IKeywordMapData&>(newData);
        for (int i = 0; i < map.GetEntryCount(); ++i)
            CompareItem(oldData, newData, i, fmt::format("{}.{}", where, map.GetEntryMD(i)->GetName()));
        break;
    }
    default:
        if (static_cast<const IKeywordRawTextData&>(oldData).GetText() !=
            static_cast<const IKeywordRawTextData&>(newData).GetText())
            m_report.Tell(Kind::Changed, where, &m_oldSide, {&oldData, -1}, &m_newSide, {&newData, -1});
        break;
    }
}

bool DataDiff::SameValue(const IKeywordData& oldData, int oldIndex, const IKeywordData& newData, int newIndex) const
{
    const ValueText oldValue = m_oldSide.values->Read(oldData, oldIndex);
    const ValueText newValue = m_newSide.values->Read(newData, newIndex);
    if (oldValue.origin != newValue.origin) return false;
    if (oldValue.text == newValue.text && oldValue.isText == newValue.isText) return true;
    const auto isZero = [](const ValueText& value) { return value.text == "0.0" || value.text == "-0.0"; };
    return isZero(oldValue) && isZero(newValue) && !oldValue.isText && !newValue.isText;
}

void DataDiff::CompareItem(const IKeywordData& oldData, const IKeywordData& newData, int index,
                           const std::string& where)
{
    if (!SameValue(oldData, index, newData, index))
        m_report.Tell(Kind::Changed, where, &m_oldSide, {&oldData, index}, &m_newSide, {&newData, index});
}

void DataDiff::CompareRecords(const IKeywordRecordData& oldData, const IKeywordRecordData& newData,
                              const std::string& where)
{
    const IKeywordRecordMD& md = *newData.GetRecordMD();
    for (int i = 0; i < md.GetItemCount(); ++i) {
        if (IsItem(md.GetItemMD(i)) && SameValue(oldData, i, newData, i)) continue;
        const std::string& name = md.GetItemName(i);
        const bool isPlainName =
            !name.empty() && md.FindItem(name) == i && name.find('.') == name.npos && name.find('/') == name.npos;
        const std::string nested = fmt::format("{}.{}", where, isPlainName ? name : std::to_string(i));
        if (IsItem(md.GetItemMD(i)))
            CompareItem(oldData, newData, i, nested);
        else
            Compare(oldData.GetContainer(i), newData.GetContainer(i), nested);
    }
}

void DataDiff::CompareLists(const IKeywordListData& oldData, const IKeywordListData& newData, const std::string& where)
{
    const MDType element = newData.GetElementType();
    if (Keywords::KeywordUtils::IsItemMDType(element)) {
        CompareValues(oldData, newData, where);
        return;
    }
    if (element == MDType::Record) {
        AlignRecords(oldData, newData, where);
        return;
    }
    const int oldCount = oldData.GetElementCount(), newCount = newData.GetElementCount();
    for (int i = 0; i < std::max(oldCount, newCount) && !m_report.Closed(); ++i) {
        const std::string nested = fmt::format("{}[{}]", where, i);
        if (i >= newCount)
            m_report.Tell(Kind::Removed, nested, &m_oldSide, {&oldData.GetContainer(i), -1}, nullptr, {});
        else if (i >= oldCount)
            m_report.Tell(Kind::Added, nested, nullptr, {}, &m_newSide, {&newData.GetContainer(i), -1});
        else
            Compare(oldData.GetContainer(i), newData.GetContainer(i), nested);
    }
}

void DataDiff::CompareValues(const IKeywordListData& oldData, const IKeywordListData& newData, const std::string& where)
{
    const int oldCount = CountToLastValue(oldData, *m_oldSide.values);
    const int newCount = CountToLastValue(newData, *m_newSide.values);
    if (oldCount != newCount && std::max(oldCount, newCount) <= mostAligned) {
        AlignValues(oldData, newData, oldCount, newCount, where);
        return;
    }
    const bool isPlain = !oldData.HasDefaultedElements() && !newData.HasDefaultedElements() &&
                         !m_oldSide.values->HasVariables(oldData) && !m_newSide.values->HasVariables(newData);
    const bool areReals = isPlain && newData.GetElementType() == MDType::Real;
    const bool areIntegers = isPlain && newData.GetElementType() == MDType::Integer;
    const auto isSame = [&](int i) {
        const auto at = static_cast<std::size_t>(i);
        if (areReals && oldData.Reals()[at] == newData.Reals()[at]) return true;
        if (areIntegers) return oldData.Integers()[at] == newData.Integers()[at];
        return SameValue(oldData, i, newData, i);
    };
    long long count = 0;
    for (int i = 0; i < std::min(oldCount, newCount); ++i) {
        if (isSame(i)) continue;
        if (++count <= mostTold)
            m_report.Tell(Kind::Changed, fmt::format("{}[{}]", where, i), &m_oldSide, {&oldData, i}, &m_newSide,
                          {&newData, i});
    }
    if (count > mostTold) m_report.TellMore(where, count - mostTold);
    if (oldCount != newCount)
        m_report.TellText(Kind::Changed, where, fmt::format("{} values", oldCount), fmt::format("{} values", newCount));
}

void DataDiff::AlignValues(const IKeywordListData& oldData, const IKeywordListData& newData, int oldCount, int newCount,
                           const std::string& where)
{
    const auto tokensOf = [](const IKeywordListData& list, int count, ValueReader& values) {
        std::vector<std::uint64_t> tokens;
        tokens.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            const ValueText value = values.Read(list, i);
            Hash hash;
            hash.Add(static_cast<std::uint64_t>(value.origin));
            hash.Add(value.text);
            tokens.push_back(hash.Value());
        }
        return tokens;
    };
    const auto pairs =
        Align(tokensOf(oldData, oldCount, *m_oldSide.values), tokensOf(newData, newCount, *m_newSide.values));
    long long count = 0;
    const auto tell = [&](Kind kind, int oldIndex, int newIndex) {
        if (++count > mostTold) return;
        const bool inNew = newIndex >= 0;
        m_report.Tell(kind, fmt::format("{}[{}]", where, inNew ? newIndex : oldIndex),
                      oldIndex >= 0 ? &m_oldSide : nullptr, {&oldData, oldIndex}, inNew ? &m_newSide : nullptr,
                      {&newData, newIndex});
    };
    for (const Gap& gap : GapsAround(pairs, oldCount, newCount)) {
        int i = gap.beginA, j = gap.beginB;
        for (; i < gap.endA && j < gap.endB; ++i, ++j)
            tell(Kind::Changed, i, j);
        for (; i < gap.endA; ++i)
            tell(Kind::Removed, i, -1);
        for (; j < gap.endB; ++j)
            tell(Kind::Added, -1, j);
    }
    if (count > mostTold) m_report.TellMore(where, count - mostTold);
}

void DataDiff::AlignRecords(const IKeywordListData& oldData, const IKeywordListData& newData, const std::string& where)
{
    const auto hashesOf = [](const IKeywordListData& list, ValueReader& values, auto hash) {
        std::vector<std::uint64_t> hashes;
        hashes.reserve(static_cast<std::size_t>(list.GetElementCount()));
        for (int i = 0; i < list.GetElementCount(); ++i)
            hashes.push_back(hash(list.GetContainer(i), values));
        return hashes;
    };
    const int oldCount = oldData.GetElementCount(), newCount = newData.GetElementCount();
    std::vector<int> counterpart(static_cast<std::size_t>(newCount), -1); // of each new record, the old one
    std::vector<char> isTaken(static_cast<std::size_t>(oldCount), 0);
    std::vector<std::pair<int, int>> same =
        Align(hashesOf(oldData, *m_oldSide.values, ContentHash), hashesOf(newData, *m_newSide.values, ContentHash));
    std::unordered_set<int> equal; // the new records that are as they were
    for (const auto& [i, j] : same) {
        counterpart[static_cast<std::size_t>(j)] = i;
        isTaken[static_cast<std::size_t>(i)] = 1;
        equal.insert(j);
    }

    const auto& md = *static_cast<const IKeywordRecordMD*>(newData.GetListMD()->GetElementMD());
    if (!md.GetIdentityItems().empty()) {
        // Wherever it has gone: an identity is looked for in the whole list.
        std::unordered_map<std::uint64_t, std::vector<int>> left; // the old records by identity, descending
        for (int i = oldCount; i-- > 0;) {
            if (!isTaken[static_cast<std::size_t>(i)])
                left[IdentityHash(oldData.GetContainer(i), *m_oldSide.values)].push_back(i);
        }
        for (int j = 0; j < newCount; ++j) {
            int& i = counterpart[static_cast<std::size_t>(j)];
            if (i >= 0) continue;
            const auto found = left.find(IdentityHash(newData.GetContainer(j), *m_newSide.values));
            if (found == left.end() || found->second.empty()) continue;
            i = found->second.back();
            found->second.pop_back();
            isTaken[static_cast<std::size_t>(i)] = 1;
        }
    } else {
        for (const Gap& gap : GapsAround(same, oldCount, newCount)) {
            for (int i = gap.beginA, j = gap.beginB; i < gap.endA && j < gap.endB; ++i, ++j) {
                counterpart[static_cast<std::size_t>(j)] = i;
                isTaken[static_cast<std::size_t>(i)] = 1;
            }
        }
    }

    RecordNames oldNames(oldData), newNames(newData);
    for (int i = 0; i < oldCount && !m_report.Closed(); ++i) {
        if (!isTaken[static_cast<std::size_t>(i)])
            m_report.Tell(Kind::Removed, where + oldNames.StepTo(i), &m_oldSide, {&oldData.GetContainer(i), -1},
                          nullptr, {});
    }
    for (int j = 0; j < newCount && !m_report.Closed(); ++j) {
        const int i = counterpart[static_cast<std::size_t>(j)];
        if (i < 0)
            m_report.Tell(Kind::Added, where + newNames.StepTo(j), nullptr, {}, &m_newSide,
                          {&newData.GetContainer(j), -1});
        else if (!equal.contains(j))
            Compare(oldData.GetContainer(i), newData.GetContainer(j), where + newNames.StepTo(j));
    }
}

} // namespace Deckman

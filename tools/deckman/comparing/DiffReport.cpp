#include "comparing/DiffReport.h"

#include <algorithm>

#include <fmt/format.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordRawTextData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/service/Strings.h>

#include "data/DataJson.h"
#include "output/Json.h"

namespace Deckman {

namespace Service = Tarn::Fjel::Core::Service;

namespace {

using Keywords::IKeywordData;
using Keywords::IKeywordListData;
using Keywords::IKeywordRecordData;
using Keywords::MDType;

/// Data of more values than this are told by their number.
constexpr long long mostValues = 200;
/// A longer text is cut in a table.
constexpr std::size_t mostCharacters = 60;

std::string_view NameOf(DiffReport::Kind kind)
{
    constexpr std::string_view names[] = {"added", "removed", "changed", "moved"};
    return names[static_cast<std::size_t>(kind)];
}

/// The single values in a tree; of raw text, its characters as values of a tenth each.
long long CountValues(const IKeywordData& data)
{
    switch (data.GetType()) {
    case MDType::Record: {
        const auto& record = static_cast<const IKeywordRecordData&>(data);
        long long count = 0;
        for (int i = 0; i < record.GetItemCount(); ++i) {
            if (Keywords::KeywordUtils::IsItemMDType(record.GetRecordMD()->GetItemMD(i)))
                ++count;
            else
                count += CountValues(record.GetContainer(i));
        }
        return count;
    }
    case MDType::List: {
        const auto& list = static_cast<const IKeywordListData&>(data);
        if (Keywords::KeywordUtils::IsItemMDType(list.GetElementType())) return list.GetElementCount();
        long long count = 0;
        for (int i = 0; i < list.GetElementCount(); ++i)
            count += CountValues(list.GetContainer(i));
        return count;
    }
    case MDType::Map:
        return static_cast<const Keywords::IKeywordMapData&>(data).GetEntryCount();
    default:
        return static_cast<long long>(static_cast<const Keywords::IKeywordRawTextData&>(data).GetText().size() / 10);
    }
}

/// Records and short lists in one line, for people: the values that are there.
void AppendValues(std::string& text, const IKeywordData& data, ValueReader& values)
{
    const auto add = [&](int index) {
        const ValueText value = values.Read(data, index);
        if (value.origin == ValueText::Origin::None && text.size() < mostCharacters)
            text += " 1*";
        else if (value.origin != ValueText::Origin::None)
            text += fmt::format(" {}", value.text);
    };
    if (data.GetType() == MDType::Record) {
        const auto& record = static_cast<const IKeywordRecordData&>(data);
        for (int i = 0; i < record.GetItemCount() && text.size() <= mostCharacters; ++i) {
            if (Keywords::KeywordUtils::IsItemMDType(record.GetRecordMD()->GetItemMD(i)))
                add(i);
            else
                AppendValues(text, record.GetContainer(i), values);
        }
        while (text.ends_with(" 1*"))
            text.resize(text.size() - 3);
    } else if (data.GetType() == MDType::List) {
        const auto& list = static_cast<const IKeywordListData&>(data);
        for (int i = 0; i < list.GetElementCount() && text.size() <= mostCharacters; ++i) {
            if (Keywords::KeywordUtils::IsItemMDType(list.GetElementType())) {
                add(i);
                continue;
            }
            AppendValues(text, list.GetContainer(i), values);
            text += " /";
        }
    } else if (data.GetType() == MDType::Map) {
        const auto& map = static_cast<const Keywords::IKeywordMapData&>(data);
        for (int i = 0; i < map.GetEntryCount(); ++i) {
            const ValueText value = values.Read(map, i);
            if (value.origin != ValueText::Origin::None)
                text += fmt::format(" {}={}", map.GetEntryMD(i)->GetName(), value.text);
        }
    } else {
        text += " " + static_cast<const Keywords::IKeywordRawTextData&>(data).GetText();
    }
}

/// One line that fits a table.
std::string Shortened(std::string_view given)
{
    std::string text(given.substr(0, mostCharacters));
    // Not in the middle of a character.
    while (given.size() > text.size() && !text.empty() && (given[text.size()] & 0xC0) == 0x80)
        text.pop_back();
    if (given.size() > text.size()) text += "...";
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    return text;
}

} // namespace

DiffReport::DiffReport(Output& out, bool json) : m_out(out)
{
    if (!json) m_table.emplace(std::vector<Table::Column>{{"kind"}, {"where"}, {"old"}, {"new"}, {"at"}});
}

void DiffReport::Begin(Kind kind, const std::string& where)
{
    m_out.Append("{\"kind\":\"");
    m_out.Append(NameOf(kind));
    m_out.Append("\",\"where\":");
    AppendJsonString(m_out, where);
    m_out.Append(",\"old\":");
}

void DiffReport::WriteValue(const Side* side, const ItemPath::Item& item)
{
    if (side == nullptr || item.container == nullptr) {
        m_out.Append("null");
        return;
    }
    if (item.IsContainer()) {
        if (const long long count = CountValues(*item.container); count > mostValues) {
            AppendJsonString(m_out, fmt::format("{} values", count));
            return;
        }
    }
    WriteJson(m_out, item, side->reading);
}

std::string DiffReport::Shown(const Side* side, const ItemPath::Item& item) const
{
    if (side == nullptr || item.container == nullptr) return {};
    ValueReader values(side->reading, ValueReader::Form::People);
    if (item.IsContainer()) {
        if (const long long count = CountValues(*item.container); count > mostValues)
            return fmt::format("{} values", count);
        std::string text;
        AppendValues(text, *item.container, values);
        return Shortened(Service::Trimmed(text));
    }
    const ValueText value = values.Read(*item.container, item.index);
    return value.origin == ValueText::Origin::None ? "1*" : Shortened(value.text);
}

void DiffReport::AddRow(std::string_view kind, const std::string& where, std::string_view oldText,
                        std::string_view newText)
{
    const Style style = kind == "added" ? Style::Strong : kind == "removed" ? Style::Alert : Style::Plain;
    m_table->Add(kind, style);
    m_table->Add(where);
    m_table->Add(oldText);
    m_table->Add(newText);
    m_table->Add(m_moment);
}

void DiffReport::Tell(Kind kind, const std::string& where, const Side* oldSide, const ItemPath::Item& oldItem,
                      const Side* newSide, const ItemPath::Item& newItem)
{
    m_hasDifferences = true;
    if (m_table) {
        AddRow(NameOf(kind), where, Shown(oldSide, oldItem), Shown(newSide, newItem));
        return;
    }
    Begin(kind, where);
    WriteValue(oldSide, oldItem);
    m_out.Append(",\"new\":");
    WriteValue(newSide, newItem);
    m_out.Append("}\n");
}

void DiffReport::TellText(Kind kind, const std::string& where, const std::optional<std::string>& oldText,
                          const std::optional<std::string>& newText)
{
    m_hasDifferences = true;
    if (m_table) {
        AddRow(NameOf(kind), where, Shortened(oldText.value_or("")), Shortened(newText.value_or("")));
        return;
    }
    const auto write = [this](const std::optional<std::string>& text) {
        m_out.Append(text ? JsonString(*text) : "null");
    };
    Begin(kind, where);
    write(oldText);
    m_out.Append(",\"new\":");
    write(newText);
    m_out.Append("}\n");
}

void DiffReport::TellNumbers(const std::string& where, double oldValue, double newValue)
{
    if (m_table) {
        TellText(Kind::Changed, where, fmt::format("{}", oldValue), fmt::format("{}", newValue));
        return;
    }
    m_hasDifferences = true;
    ValueReader values({}, ValueReader::Form::Json);
    Begin(Kind::Changed, where);
    m_out.Append(values.Real(oldValue).text);
    m_out.Append(",\"new\":");
    m_out.Append(values.Real(newValue).text);
    m_out.Append("}\n");
}

void DiffReport::TellMoved(const std::string& where, int oldIndex, int newIndex)
{
    m_hasDifferences = true;
    if (m_table) {
        AddRow("moved", where, fmt::format("@{}", oldIndex), fmt::format("@{}", newIndex));
        return;
    }
    Begin(Kind::Moved, where);
    m_out.Append(fmt::format("\"@{}\",\"new\":\"@{}\"}}\n", oldIndex, newIndex));
}

void DiffReport::TellMore(const std::string& where, long long count)
{
    const std::string text = fmt::format("{} more", count);
    if (m_table) {
        AddRow("changed", where, text, "");
        return;
    }
    Begin(Kind::Changed, where);
    m_out.Append(fmt::format("null,\"new\":null,\"more\":{}}}\n", count));
}

void DiffReport::Finish()
{
    if (m_table) m_table->Print(m_out);
}

} // namespace Deckman

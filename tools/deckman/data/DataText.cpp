#include "data/DataText.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <tarn/keywords/IKeywordItemMD.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordRawTextData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordUtils.h>

#include "output/Table.h"

namespace Deckman {

namespace {

using Keywords::IKeywordData;
using Keywords::IKeywordItemMD;
using Keywords::IKeywordListData;
using Keywords::IKeywordListMD;
using Keywords::IKeywordMapData;
using Keywords::IKeywordMD;
using Keywords::IKeywordRawTextData;
using Keywords::IKeywordRecordData;
using Keywords::IKeywordRecordMD;
using Keywords::MDType;

constexpr std::size_t rowWidth = 100;
constexpr int mostInRow = 10;
/// The width of a long list's columns is that of its first values: to ask all of them would take a second pass.
constexpr int valuesMeasured = 2000;

bool IsItem(const IKeywordMD* md)
{
    return Keywords::KeywordUtils::IsItemMDType(md);
}

bool IsNumber(const IKeywordMD* md)
{
    return md->GetType() == MDType::Integer || md->GetType() == MDType::Real;
}

/// A list of single values, which goes into one cell.
bool IsItemList(const IKeywordMD* md)
{
    return md->GetType() == MDType::List && IsItem(static_cast<const IKeywordListMD*>(md)->GetElementMD());
}

/// Records of this kind are the rows of a table.
bool IsRow(const IKeywordRecordMD& md)
{
    for (int i = 0; i < md.GetItemCount(); ++i) {
        if (!IsItem(md.GetItemMD(i)) && !IsItemList(md.GetItemMD(i))) return false;
    }
    return true;
}

class TextWriter
{
public:
    TextWriter(Output& out, const DataReading& reading, UnitSystem units)
        : m_out(out), m_values(reading, ValueReader::Form::People), m_units(units)
    {
    }

    void Write(const IKeywordData& data, const std::string& said)
    {
        switch (data.GetType()) {
        case MDType::Record:
            WriteRecord(static_cast<const IKeywordRecordData&>(data), said);
            break;
        case MDType::List:
            WriteList(static_cast<const IKeywordListData&>(data), said);
            break;
        case MDType::Map:
            WriteMap(static_cast<const IKeywordMapData&>(data));
            break;
        default: {
            const std::string& text = static_cast<const IKeywordRawTextData&>(data).GetText();
            m_out.Append(text);
            if (!text.empty() && !text.ends_with('\n')) m_out.Append('\n');
            break;
        }
        }
    }

    void WriteItem(const IKeywordData& container, int index)
    {
        m_out.Append(Shown(m_values.Read(container, index)));
        if (container.GetType() != MDType::Map) {
            const std::string unit = UnitAt(Keywords::ConstSlot(container, index).GetMD());
            if (!unit.empty()) m_out.Append("  " + unit, Style::Faint);
        }
        m_out.Append('\n');
    }

private:
    /// Good until the next value.
    std::string_view Shown(const ValueText& value)
    {
        switch (value.origin) {
        case ValueText::Origin::None:
            return "1*";
        case ValueText::Origin::Default:
            m_shown = fmt::format("({})", value.text);
            return m_shown;
        case ValueText::Origin::Variable:
            return value.text;
        case ValueText::Origin::Deck:
            break;
        }
        if (!value.isText || (!value.text.empty() && value.text.find_first_of(" \t") == std::string_view::npos))
            return value.text;
        m_shown = fmt::format("'{}'", value.text);
        return m_shown;
    }

    static Style StyleOf(ValueText::Origin origin)
    {
        return origin == ValueText::Origin::Deck       ? Style::Plain
               : origin == ValueText::Origin::Variable ? Style::Strong
                                                       : Style::Faint;
    }

    void AddCell(Table& table, const ValueText& value) { table.Add(Shown(value), StyleOf(value.origin)); }

    std::string UnitAt(const IKeywordMD* md) const
    {
        if (md->GetType() == MDType::List) md = static_cast<const IKeywordListMD*>(md)->GetElementMD();
        return IsItem(md) ? UnitOf(static_cast<const IKeywordItemMD*>(md)->GetUnitDimension(), m_units) : std::string();
    }

    void WriteHeading(const std::string& said)
    {
        if (m_hasOutput) m_out.Append('\n');
        m_out.Append(said, Style::Strong);
        m_out.Append('\n');
        m_hasOutput = true;
    }

    void WriteRecord(const IKeywordRecordData& record, const std::string& said)
    {
        const IKeywordRecordMD& md = *record.GetRecordMD();
        bool hasUnits = false;
        for (int i = 0; i < md.GetItemCount(); ++i)
            hasUnits = hasUnits || (IsItem(md.GetItemMD(i)) && !UnitAt(md.GetItemMD(i)).empty());
        std::vector<Table::Column> columns{{"item", true}, {"name"}, {"value"}};
        if (hasUnits) columns.push_back({"unit"});
        Table table(std::move(columns));
        for (int i = 0; i < md.GetItemCount(); ++i) {
            if (!IsItem(md.GetItemMD(i))) continue;
            table.Add(i);
            table.Add(md.GetItemName(i));
            AddCell(table, m_values.Read(record, i));
            if (hasUnits) table.Add(UnitAt(md.GetItemMD(i)), Style::Faint);
            m_hasOutput = true;
        }
        table.Print(m_out);
        for (int i = 0; i < md.GetItemCount() && !m_out.Closed(); ++i) {
            if (IsItem(md.GetItemMD(i))) continue;
            const std::string& name = md.GetItemName(i);
            const std::string nested = fmt::format("{}.{}", said, name.empty() ? std::to_string(i) : name);
            WriteHeading(nested);
            Write(record.GetContainer(i), nested);
        }
    }

    void WriteList(const IKeywordListData& list, const std::string& said)
    {
        const IKeywordMD* const element = list.GetListMD()->GetElementMD();
        if (IsItem(element)) {
            WriteValues(list, *static_cast<const IKeywordItemMD*>(element));
        } else if (element->GetType() == MDType::Record && IsRow(*static_cast<const IKeywordRecordMD*>(element))) {
            WriteRows(list, *static_cast<const IKeywordRecordMD*>(element));
        } else {
            for (int i = 0; i < list.GetElementCount() && !m_out.Closed(); ++i) {
                const std::string nested = fmt::format("{}[{}]", said, i);
                WriteHeading(nested);
                Write(list.GetContainer(i), nested);
            }
            if (list.GetElementCount() == 0) WriteCount(0, "record", {});
        }
    }

    void WriteCount(int count, std::string_view noun, const std::string& unit)
    {
        m_out.Append(fmt::format("{} {}{}{}", count, noun, count == 1 ? "" : "s", unit.empty() ? "" : ", " + unit),
                     Style::Faint);
        m_out.Append('\n');
        m_hasOutput = true;
    }

    void WriteValues(const IKeywordListData& list, const IKeywordItemMD& element)
    {
        const int count = list.GetElementCount();
        WriteCount(count, "value", UnitAt(&element));
        std::size_t width = 1;
        for (int i = 0; i < std::min(count, valuesMeasured); ++i)
            width = std::max(width, Shown(m_values.Read(list, i)).size());
        const std::size_t indexWidth = fmt::formatted_size("{}", std::max(count - 1, 0));
        const std::size_t fits = m_out.Columns() > indexWidth ? m_out.Columns() - indexWidth : rowWidth;
        const int inRow = std::clamp(static_cast<int>(std::min(rowWidth, fits) / (width + 2)), 1, mostInRow);
        const bool alignRight = IsNumber(&element);
        for (int i = 0; i < count && !m_out.Closed(); ++i) {
            if (i % inRow == 0) {
                const fmt::format_int digits(i);
                m_out.AppendBlanks(indexWidth - digits.size());
                m_out.Append(std::string_view(digits.data(), digits.size()), Style::Faint);
            }
            const ValueText value = m_values.Read(list, i);
            const std::string_view text = Shown(value);
            const std::size_t padding = width > text.size() ? width - text.size() : 0;
            m_out.AppendBlanks(2 + (alignRight ? padding : 0));
            m_out.Append(text, StyleOf(value.origin));
            const bool endsRow = i % inRow == inRow - 1 || i + 1 == count;
            if (endsRow)
                m_out.Append('\n');
            else if (!alignRight)
                m_out.AppendBlanks(padding);
        }
    }

    /// All values of a list in one cell; its length tells whether there is anything.
    std::string Joined(const IKeywordListData& list)
    {
        std::string joined;
        for (int i = 0; i < list.GetElementCount(); ++i) {
            if (i > 0) joined += ' ';
            joined += Shown(m_values.Read(list, i));
        }
        return joined;
    }

    bool HasAnything(const IKeywordRecordData& record, int index)
    {
        if (IsItem(record.GetRecordMD()->GetItemMD(index)))
            return m_values.Read(record, index).origin != ValueText::Origin::None;
        return static_cast<const IKeywordListData&>(record.GetContainer(index)).GetElementCount() > 0;
    }

    void WriteRows(const IKeywordListData& list, const IKeywordRecordMD& md)
    {
        const auto recordAt = [&list](int i) -> const IKeywordRecordData& {
            return static_cast<const IKeywordRecordData&>(list.GetContainer(i));
        };
        std::vector<int> items;
        for (int item = 0; item < md.GetItemCount(); ++item) {
            for (int i = 0; i < list.GetElementCount(); ++i) {
                if (!HasAnything(recordAt(i), item)) continue;
                items.push_back(item);
                break;
            }
        }

        std::vector<Table::Column> columns{{"record", true}};
        for (const int item : items)
            columns.push_back({md.GetItemName(item), IsNumber(md.GetItemMD(item)), UnitAt(md.GetItemMD(item))});
        Table table(std::move(columns));
        for (int i = 0; i < list.GetElementCount(); ++i) {
            const IKeywordRecordData& record = recordAt(i);
            table.Add(i);
            for (const int item : items) {
                if (IsItem(md.GetItemMD(item)))
                    AddCell(table, m_values.Read(record, item));
                else
                    table.Add(Joined(static_cast<const IKeywordListData&>(record.GetContainer(item))));
            }
        }
        table.Print(m_out);
        m_hasOutput = true;
        if (list.GetElementCount() == 0) WriteCount(0, "record", {});
    }

    void WriteMap(const IKeywordMapData& map)
    {
        Table table({{"entry"}, {"value", true}});
        bool any = false;
        for (int i = 0; i < map.GetEntryCount(); ++i) {
            const ValueText value = m_values.Read(map, i);
            if (value.origin == ValueText::Origin::None) continue;
            table.Add(map.GetEntryMD(i)->GetName());
            AddCell(table, value);
            any = true;
        }
        table.Print(m_out);
        if (!any) m_out.Append("nothing is set\n");
    }

    Output& m_out;
    ValueReader m_values;
    UnitSystem m_units;
    std::string m_shown;
    bool m_hasOutput = false;
};

} // namespace

void WriteText(Output& out, const ItemPath::Item& item, std::string_view said, const DataReading& reading,
               UnitSystem units)
{
    TextWriter writer(out, reading, units);
    if (item.IsContainer())
        writer.Write(*item.container, std::string(said));
    else
        writer.WriteItem(*item.container, item.index);
}

} // namespace Deckman

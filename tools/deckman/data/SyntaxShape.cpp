#include "data/SyntaxShape.h"

#include <algorithm>
#include <optional>

#include <fmt/format.h>
#include <tarn/keywords/IKeywordIntegerMD.h>
#include <tarn/keywords/IKeywordListMD.h>
#include <tarn/keywords/IKeywordMapEntryMD.h>
#include <tarn/keywords/IKeywordMapMD.h>
#include <tarn/keywords/IKeywordOptionMD.h>
#include <tarn/keywords/IKeywordRawTextMD.h>
#include <tarn/keywords/IKeywordRealMD.h>
#include <tarn/keywords/IKeywordRecordMD.h>
#include <tarn/keywords/IKeywordStringMD.h>
#include <tarn/keywords/IRecordItemTraits.h>
#include <tarn/keywords/KeywordUtils.h>

#include "output/Json.h"
#include "output/Table.h"

namespace Deckman::SyntaxShape {

namespace {

using namespace Tarn::Fjel::Core::Keywords;

template <class MD>
const MD& As(const IKeywordMD& shape)
{
    return static_cast<const MD&>(shape);
}

std::string_view TypeName(MDType type)
{
    switch (type) {
    case MDType::YesNo:
        return "yesNo";
    case MDType::Option:
        return "option";
    case MDType::Integer:
        return "integer";
    case MDType::RestOfLine:
        return "restOfLine";
    case MDType::List:
        return "list";
    case MDType::Map:
        return "map";
    case MDType::RawText:
        return "rawText";
    case MDType::Real:
        return "real";
    case MDType::Record:
        return "record";
    case MDType::String:
        return "string";
    case MDType::None:
        break;
    }
    return "none";
}

std::string_view TerminationName(Termination termination)
{
    return termination == Termination::Slash ? "slash" : termination == Termination::EndOfLine ? "eol" : "none";
}

/// One shape in the place where it stands.
struct Placed
{
    const IKeywordMD& shape;
    const IKeywordRecordMD* record = nullptr; ///< whose item it is
    int index = -1;

    std::string_view Name() const
    {
        return record != nullptr ? std::string_view(record->GetItemName(index)) : std::string_view(shape.GetName());
    }
    bool IsDefaultable() const { return record != nullptr && record->IsItemDefaultable(index); }
    bool IsOptionalOnRead() const
    {
        return record != nullptr && record->GetItemTraits() != nullptr &&
               record->GetItemTraits()->IsOptionalOnRead(index);
    }
    bool IsIdentity() const
    {
        if (record == nullptr) return false;
        const auto items = record->GetIdentityItems();
        return std::find(items.begin(), items.end(), index) != items.end();
    }
};

struct Defaults
{
    bool exist = false;
    std::string_view for100;
    std::string_view for300;
    bool differ = false;
};

Defaults DefaultsOf(const IKeywordItemMD& item)
{
    Defaults defaults;
    defaults.exist = item.HasDefaultFor(SimulatorType::Any);
    if (!defaults.exist) return defaults;
    defaults.for100 = item.GetDefaultText(SimulatorType::S100);
    defaults.for300 = item.GetDefaultText(SimulatorType::S300);
    const bool has100 = item.HasDefaultFor(SimulatorType::S100);
    const bool has300 = item.HasDefaultFor(SimulatorType::S300);
    defaults.differ = has100 != has300 || defaults.for100 != defaults.for300;
    if (!has100 && !has300) {
        defaults.for100 = defaults.for300 = item.GetDefaultText(SimulatorType::Any);
        defaults.differ = false;
    }
    return defaults;
}

std::vector<std::string> OptionsOf(const IKeywordMD& shape)
{
    std::vector<std::string> names;
    if (shape.GetType() == MDType::Option) {
        const auto& option = As<IKeywordOptionMD>(shape);
        for (int i = 0; i < option.GetOptionCount(); ++i)
            names.push_back(option.GetOptionName(i));
    }
    return names;
}

/// The smallest and largest sensible value as text; empty for none.
std::pair<std::string, std::string> BoundsOf(const IKeywordMD& shape)
{
    const auto text = [](const auto& value) { return value ? fmt::format("{}", *value) : std::string(); };
    if (shape.GetType() == MDType::Real)
        return {text(As<IKeywordRealMD>(shape).GetMinValue()), text(As<IKeywordRealMD>(shape).GetMaxValue())};
    if (shape.GetType() == MDType::Integer)
        return {text(As<IKeywordIntegerMD>(shape).GetMinValue()), text(As<IKeywordIntegerMD>(shape).GetMaxValue())};
    return {};
}

// --- JSON ----------------------------------------------------------------------------------------------------------

class JsonWriter
{
public:
    explicit JsonWriter(Output& out) : m_out(out) {}

    void Write(const Placed& placed)
    {
        const IKeywordMD& shape = placed.shape;
        m_out.Append("{\"type\":");
        AppendJsonString(m_out, TypeName(shape.GetType()));
        if (!placed.Name().empty()) Text("name", placed.Name());
        switch (shape.GetType()) {
        case MDType::Record:
            Record(As<IKeywordRecordMD>(shape));
            break;
        case MDType::List:
            List(As<IKeywordListMD>(shape));
            break;
        case MDType::Map:
            Map(As<IKeywordMapMD>(shape));
            break;
        case MDType::RawText: {
            std::string terminator;
            if (As<IKeywordRawTextMD>(shape).GetTerminator(terminator)) Text("terminator", terminator);
            break;
        }
        default:
            Item(shape);
        }
        if (placed.IsDefaultable()) m_out.Append(",\"defaultable\":true");
        if (placed.IsOptionalOnRead()) m_out.Append(",\"optionalOnRead\":true");
        m_out.Append('}');
    }

private:
    void Key(std::string_view name)
    {
        m_out.Append(",\"");
        m_out.Append(name);
        m_out.Append("\":");
    }
    void Text(std::string_view name, std::string_view text)
    {
        Key(name);
        AppendJsonString(m_out, text);
    }
    template <class Range, class WriteOne>
    void Array(std::string_view name, const Range& range, const WriteOne& writeOne)
    {
        Key(name);
        bool first = true;
        m_out.Append('[');
        for (const auto& value : range) {
            if (!first) m_out.Append(',');
            first = false;
            writeOne(value);
        }
        m_out.Append(']');
    }
    void Texts(std::string_view name, const std::vector<std::string>& texts)
    {
        Array(name, texts, [this](const std::string& text) { AppendJsonString(m_out, text); });
    }

    void Item(const IKeywordMD& shape)
    {
        const auto& item = As<IKeywordItemMD>(shape);
        if (!item.GetUnitDimension().empty()) Text("unit", item.GetUnitDimension());
        if (const Defaults defaults = DefaultsOf(item); defaults.exist) {
            if (defaults.differ) {
                Key("default");
                m_out.Append("{\"100\":");
                Default(item, SimulatorType::S100);
                m_out.Append(",\"300\":");
                Default(item, SimulatorType::S300);
                m_out.Append('}');
            } else {
                Text("default", defaults.for100);
            }
        }
        if (const std::vector<std::string> options = OptionsOf(shape); !options.empty()) Texts("options", options);
        const auto [smallest, largest] = BoundsOf(shape);
        if (!smallest.empty()) Number("min", smallest);
        if (!largest.empty()) Number("max", largest);
        if (shape.GetType() == MDType::String && As<IKeywordStringMD>(shape).GetMaxLength() > 0)
            Number("maxLength", std::to_string(As<IKeywordStringMD>(shape).GetMaxLength()));
    }
    void Number(std::string_view name, std::string_view number)
    {
        Key(name);
        m_out.Append(number);
    }
    void Default(const IKeywordItemMD& item, SimulatorType simulator)
    {
        if (item.HasDefaultFor(simulator))
            AppendJsonString(m_out, item.GetDefaultText(simulator));
        else
            m_out.Append("null");
    }
    void Record(const IKeywordRecordMD& record)
    {
        Text("termination", TerminationName(record.GetTermination()));
        std::vector<std::string> identity;
        for (const int index : record.GetIdentityItems())
            identity.push_back(record.GetItemName(index));
        if (!identity.empty()) Texts("identity", identity);
        std::vector<int> items(static_cast<std::size_t>(record.GetItemCount()));
        for (std::size_t i = 0; i < items.size(); ++i)
            items[i] = static_cast<int>(i);
        Array("items", items, [&](int i) { Write({*record.GetItemMD(i), &record, i}); });
    }
    void List(const IKeywordListMD& list)
    {
        Text("termination", TerminationName(list.GetTermination()));
        if (const std::string* size = list.GetSizeExpression()) Text("size", *size);
        if (list.AllowsDefaultElements()) m_out.Append(",\"elementsDefaultable\":true");
        if (list.AutoFillsEmptyElements()) m_out.Append(",\"autoFill\":true");
        Key("element");
        Write({*list.GetElementMD()});
    }
    void Map(const IKeywordMapMD& map)
    {
        Text("termination", TerminationName(map.GetTermination()));
        std::vector<std::string> entries;
        for (int i = 0; i < map.GetEntryCount(); ++i)
            entries.push_back(map.GetEntryMD(i)->GetName());
        Texts("entries", entries);
    }

    Output& m_out;
};

// --- for people ----------------------------------------------------------------------------------------------------

class RowWriter
{
public:
    RowWriter() : m_table({{"item"}, {"name"}, {"type"}, {"unit"}, {"default"}, {"remarks"}}) {}

    void Add(const Placed& placed, int depth)
    {
        const IKeywordMD& shape = placed.shape;
        m_table.Add(placed.index < 0 ? std::string() : std::to_string(placed.index));
        const std::string_view name = placed.Name();
        const bool isElement = placed.record == nullptr && depth > 0;
        m_table.Add(Table::Indent(depth) + (!name.empty() ? std::string(name)
                                            : isElement   ? "each"
                                                          : "data"),
                    name.empty() ? Style::Faint : Style::Plain);
        m_table.Add(TypeName(shape.GetType()));
        const bool isItem = KeywordUtils::IsItemMDType(&shape);
        m_table.Add(isItem ? std::string_view(As<IKeywordItemMD>(shape).GetUnitDimension()) : std::string_view());
        m_table.Add(isItem ? DefaultOf(As<IKeywordItemMD>(shape)) : std::string());
        m_table.Add(Remarks(placed));
        AddBelow(shape, depth + 1);
    }
    void Print(Output& out) const { m_table.Print(out); }

private:
    static std::string DefaultOf(const IKeywordItemMD& item)
    {
        const Defaults defaults = DefaultsOf(item);
        if (!defaults.exist) return {};
        if (!defaults.differ) return std::string(defaults.for100);
        const auto of = [&item](SimulatorType simulator) {
            return item.HasDefaultFor(simulator) ? item.GetDefaultText(simulator) : std::string("none");
        };
        return fmt::format("100: {}, 300: {}", of(SimulatorType::S100), of(SimulatorType::S300));
    }

    static std::string Remarks(const Placed& placed)
    {
        const IKeywordMD& shape = placed.shape;
        std::vector<std::string> remarks;
        const auto ends = [&remarks](Termination termination) {
            if (termination == Termination::Slash) remarks.emplace_back("ends with /");
            if (termination == Termination::EndOfLine) remarks.emplace_back("ends with its line");
        };
        if (placed.IsIdentity()) remarks.emplace_back("identity");
        switch (shape.GetType()) {
        case MDType::Record:
            ends(As<IKeywordRecordMD>(shape).GetTermination());
            break;
        case MDType::List: {
            const auto& list = As<IKeywordListMD>(shape);
            ends(list.GetTermination());
            if (const std::string* size = list.GetSizeExpression()) remarks.push_back("size " + *size);
            if (list.AllowsDefaultElements()) remarks.emplace_back("elements may be defaulted");
            if (list.AutoFillsEmptyElements()) remarks.emplace_back("an empty element repeats the one before");
            break;
        }
        case MDType::Map:
            ends(As<IKeywordMapMD>(shape).GetTermination());
            break;
        case MDType::RawText: {
            std::string terminator;
            if (As<IKeywordRawTextMD>(shape).GetTerminator(terminator)) remarks.push_back("ends with " + terminator);
            break;
        }
        default:
            if (const std::vector<std::string> options = OptionsOf(shape); !options.empty())
                remarks.push_back(fmt::format("one of {}", fmt::join(options, " ")));
            if (const auto [smallest, largest] = BoundsOf(shape); !smallest.empty() || !largest.empty()) {
                remarks.push_back(largest.empty()    ? "at least " + smallest
                                  : smallest.empty() ? "at most " + largest
                                                     : fmt::format("{} to {}", smallest, largest));
            }
            if (shape.GetType() == MDType::String && As<IKeywordStringMD>(shape).GetMaxLength() > 0)
                remarks.push_back(fmt::format("{} characters", As<IKeywordStringMD>(shape).GetMaxLength()));
            if (placed.IsDefaultable() && !As<IKeywordItemMD>(shape).HasDefaultFor(SimulatorType::Any))
                remarks.emplace_back("may be defaulted");
        }
        if (placed.IsOptionalOnRead()) remarks.emplace_back("may be left out");
        return fmt::format("{}", fmt::join(remarks, ", "));
    }

    void AddBelow(const IKeywordMD& shape, int depth)
    {
        if (shape.GetType() == MDType::Record) {
            const auto& record = As<IKeywordRecordMD>(shape);
            for (int i = 0; i < record.GetItemCount(); ++i)
                Add({*record.GetItemMD(i), &record, i}, depth);
        } else if (shape.GetType() == MDType::List) {
            Add({*As<IKeywordListMD>(shape).GetElementMD()}, depth);
        } else if (shape.GetType() == MDType::Map) {
            const auto& map = As<IKeywordMapMD>(shape);
            for (int i = 0; i < map.GetEntryCount(); ++i) {
                m_table.Add(std::to_string(i));
                m_table.Add(Table::Indent(depth) + map.GetEntryMD(i)->GetName());
                m_table.Add("integer");
                for (int blank = 0; blank < 3; ++blank)
                    m_table.Add("");
            }
        }
    }

    Table m_table;
};

} // namespace

std::string Words(const IKeywordMD* shape)
{
    if (shape == nullptr) return {};
    if (shape->GetType() != MDType::List) return std::string(TypeName(shape->GetType()));
    const IKeywordMD& element = *As<IKeywordListMD>(*shape).GetElementMD();
    if (element.GetType() == MDType::List) return "list of lists";
    return fmt::format("list of {}{}", TypeName(element.GetType()), element.GetType() == MDType::Record ? "s" : "");
}

void WriteJson(Output& out, const IKeywordMD* shape)
{
    if (shape == nullptr)
        out.Append("null");
    else
        JsonWriter(out).Write({*shape});
}

void WriteRows(Output& out, const IKeywordMD& shape)
{
    RowWriter rows;
    rows.Add({shape}, 0);
    rows.Print(out);
}

} // namespace Deckman::SyntaxShape

#include "tests/keywords/DataReading.h"

#include "keywords/KeywordDataDeserializer.h"

namespace DataReading {

namespace Keywords = Core::Keywords;
using Keywords::MDType;

namespace {

std::string DescribeItem(const Keywords::ConstSlot& slot)
{
    if (!slot.HasValue()) return "-";
    switch (slot.Kind()) {
    case MDType::YesNo:
        return slot.GetYesNo() ? "yes" : "no";
    case MDType::Option:
        return static_cast<const Keywords::IKeywordOptionMD*>(slot.GetMD())->GetOptionName(slot.GetOption());
    case MDType::Integer:
        return fmt::format("{}", slot.GetInteger());
    case MDType::Real:
        return fmt::format("{}", slot.GetReal());
    default:
        return std::string(slot.GetString());
    }
}

void Add(std::string& text, const std::string& piece, char open)
{
    if (text.back() != open) text += ' ';
    text += piece;
}

Outcome Read(const DeckManager::IKeyword& keyword, const std::string& text, long long start, long long length,
             bool firstLineIsKeywordName, bool withVariables, const DeckManager::Context& context)
{
    Outcome outcome;
    outcome.data = Keywords::KeywordDataFactory::Instance().ConstructSafely(keyword.GetSyntax());
    DeckManager::LineStringReader reader(text);
    const TestSupport::LogRecorder log;
    DeckManager::ReadReport report;
    DeckManager::KeywordDataDeserializer::Deserialize(keyword, *outcome.data, reader, start, length, context,
                                                      firstLineIsKeywordName,
                                                      withVariables ? &outcome.variables : nullptr, &report);
    outcome.takenEnd = report.takenEnd;
    outcome.isComplete = report.isComplete;
    for (const auto& message : log.Messages())
        outcome.messages.push_back(fmt::format("{} {}", message.severity, message.text));
    outcome.tree = Describe(*outcome.data);
    return outcome;
}

} // namespace

TableInForce::TableInForce(std::string_view json) : m_table(Keywords::KeywordSyntaxTable::FromText(json))
{
    DeckManager::Environment::Instance().SetSyntaxTable(m_table.get());
}

TableInForce::~TableInForce()
{
    DeckManager::Environment::Instance().destroy();
}

const Keywords::IKeywordSyntax* TableInForce::Syntax(std::string_view name) const
{
    return m_table->FindSyntax(name, true);
}

std::string Describe(const Keywords::IKeywordData& data)
{
    std::string text;
    switch (data.GetType()) {
    case MDType::List: {
        const auto& list = static_cast<const Keywords::IKeywordListData&>(data);
        text = "[";
        for (int i = 0; i < list.GetElementCount(); ++i) {
            const Keywords::ConstSlot slot = list.GetElement(i);
            if (const auto* const container = slot.GetContainer())
                Add(text, Describe(*container), '[');
            else
                Add(text, list.IsElementDefaulted(i) ? "1*" : DescribeItem(slot), '[');
        }
        return text + "]";
    }
    case MDType::Record: {
        const auto& record = static_cast<const Keywords::IKeywordRecordData&>(data);
        text = "{";
        for (int i = 0; i < record.GetItemCount(); ++i) {
            const Keywords::ConstSlot slot = record.GetItem(i);
            const auto* const container = slot.GetContainer();
            Add(text, container ? Describe(*container) : DescribeItem(slot), '{');
        }
        return text + "}";
    }
    case MDType::Map: {
        const auto& map = static_cast<const Keywords::IKeywordMapData&>(data);
        text = "{";
        for (int i = 0; i < map.GetEntryCount(); ++i) {
            if (map.GetEntryValue(i) != Keywords::UnsetValue::MapEntry)
                Add(text, fmt::format("{}={}", map.GetEntryMD(i)->GetName(), map.GetEntryValue(i)), '{');
        }
        return text + "}";
    }
    default:
        text = "'" + static_cast<const Keywords::IKeywordRawTextData&>(data).GetText() + "'";
        std::replace(text.begin(), text.end(), '\n', '|');
        return text;
    }
}

Outcome ReadText(const DeckManager::IKeyword& keyword, const std::string& text, bool withVariables,
                 const DeckManager::Context& context)
{
    return Read(keyword, text, 0, static_cast<long long>(text.size()), false, withVariables, context);
}

Outcome ReadExtent(const DeckManager::IKeyword& keyword, const std::string& file, long long start, long long length)
{
    return Read(keyword, file, start, length, true, false, DeckManager::Context());
}

std::string TableOf(std::string_view shape)
{
    return fmt::format(R"([{{"name": "X", "sections": "all", "data": {}}}])", shape);
}

Outcome ReadShape(std::string_view shape, const std::string& text, bool withVariables)
{
    const TableInForce table(TableOf(shape));
    const LooseKeyword keyword(table.Syntax("X"));
    Outcome outcome = ReadText(keyword, text, withVariables);
    outcome.data.reset(); // its metadata go with the table
    return outcome;
}

void ExpectReads(const DeckManager::IKeyword& keyword, const std::vector<ReadCase>& cases)
{
    for (const ReadCase& c : cases) {
        const Outcome outcome = ReadText(keyword, c.text);
        EXPECT_EQ(outcome.tree, c.tree) << c.text;
        EXPECT_EQ(outcome.messages, c.messages) << c.text;
    }
}

void ExpectReads(std::string_view shape, const std::vector<ReadCase>& cases)
{
    const TableInForce table(TableOf(shape));
    ExpectReads(LooseKeyword(table.Syntax("X")), cases);
}

} // namespace DataReading

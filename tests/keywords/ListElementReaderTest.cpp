// One element of a list read alone, held against the read of all data: same value, same count, same messages; and
// wherever that read has nothing to tell, the others are passed over.

#include "keywords/ListElementReader.h"

#include <optional>

#include <rapidcheck.h>

#include "keywords/KeywordGeneric.h"
#include "tests/keywords/DataReading.h"
#include <deckmanager/ReadKeywordElement.h>

using namespace DataReading;

namespace {

namespace Keywords = Core::Keywords;

const char* const shapes[] = {
    R"({"type": "list", "elementsDefaultable": true, "element": {"type": "real"}})",
    R"({"type": "list", "element": {"type": "real"}})",
    R"({"type": "list", "elementsDefaultable": true, "element": {"type": "integer"}})",
    R"({"type": "list", "termination": "none", "elementsDefaultable": true, "element": {"type": "integer"}})",
    R"({"type": "list", "elementsDefaultable": true, "element": {"type": "string", "allowsCommas": true}})",
    R"({"type": "list", "element": {"type": "string", "maxLength": 3}})",
    R"({"type": "list", "element": {"type": "yesNo"}})",
};

/// A keyword of that shape whose data are a text that it holds.
class TextKeyword
{
public:
    TextKeyword(const Keywords::IKeywordSyntax& syntax, const std::string& text, bool withVariables)
        : m_keyword(syntax, withVariables, nullptr, nullptr, 0, 0, "X", nullptr)
    {
        m_isSet = m_keyword.SetDataText(text, false);
    }
    bool IsSet() const { return m_isSet; }

    /// "count: the element", with the text of a reference and the messages.
    std::string Element(int index)
    {
        Core::Service::MessageCapper::instance().reset();
        const TestSupport::LogRecorder log;
        DeckManager::KeywordVariables variables;
        const auto element = m_keyword.ReadElement(index, DeckManager::Context(), &variables);
        if (!element) return "no list";
        return Told(*element->list, element->count, 0, variables, log);
    }

    /// The same by a read of all data.
    std::string ElementOfAll(int index)
    {
        Core::Service::MessageCapper::instance().reset();
        const TestSupport::LogRecorder log;
        DeckManager::KeywordVariables variables;
        const auto data = m_keyword.ReadData(DeckManager::Context(), &variables);
        const auto& list = static_cast<const Keywords::IKeywordListData&>(*data);
        return Told(list, list.GetElementCount(), index, variables, log);
    }

    int Count()
    {
        const TestSupport::LogRecorder log;
        return static_cast<const Keywords::IKeywordListData&>(*m_keyword.ReadData(DeckManager::Context(), nullptr))
            .GetElementCount();
    }

private:
    static std::string Told(const Keywords::IKeywordListData& list, int count, int index,
                            const DeckManager::KeywordVariables& variables, const TestSupport::LogRecorder& log)
    {
        std::string told = fmt::format("{}:", count);
        if (index >= 0 && index < list.GetElementCount()) {
            const Keywords::ConstSlot slot = list.GetElement(index);
            told += list.IsElementDefaulted(index) ? " default" : slot.HasValue() ? " value" : " unset";
            if (slot.HasValue()) told += " " + ValueOf(slot);
            const auto* const references =
                static_cast<const Keywords::IKeywordListDataVariables*>(variables.GetDataVariables(&list));
            if (references != nullptr && std::ranges::count(references->GetVariableIndices(), index) > 0)
                told += " " + references->GetVariable(index).GetString();
        }
        for (const auto& message : log.Messages()) {
            if (!message.probe) told += fmt::format("|{} {}", message.severity, message.text);
        }
        return told;
    }

    static std::string ValueOf(const Keywords::ConstSlot& slot)
    {
        switch (slot.Kind()) {
        case Keywords::MDType::Real:
            return fmt::format("{:a}", slot.GetReal());
        case Keywords::MDType::Integer:
            return std::to_string(slot.GetInteger());
        case Keywords::MDType::YesNo:
            return slot.GetYesNo() ? "yes" : "no";
        default:
            return fmt::format("'{}'", slot.GetString());
        }
    }

    DeckManager::KeywordGeneric m_keyword;
    bool m_isSet;
};

/// What is found without a read of all data; empty when that has to be.
std::optional<DeckManager::ListElementReader::Found> Find(const Keywords::IKeywordSyntax& syntax,
                                                          const std::string& text, std::int64_t index)
{
    const LooseKeyword keyword(&syntax);
    DeckManager::LineStringReader reader(text);
    return DeckManager::ListElementReader::Find(index, keyword, reader, 0, static_cast<long long>(text.size()), false);
}

rc::Gen<std::string> Plain()
{
    return rc::gen::oneOf(
        rc::gen::map(rc::gen::inRange(-1000, 100000), [](int number) { return std::to_string(number); }),
        rc::gen::map(rc::gen::arbitrary<double>(), [](double number) { return fmt::format("{}", number); }),
        rc::gen::element<std::string>("1.5D3", "+7", "1e5", ".5", "5.", "1e999", "3.7", "3*2.5", "12*8", "2*-1E-3"));
}

rc::Gen<std::string> Odd()
{
    return rc::gen::weightedOneOf<std::string>({
        {6,
         rc::gen::element<std::string>("-- comment", "\n-- a line of it's own\n", "\n--@@@ 7 8\n", "\n\n", "4*", "1*",
                                       "'7'", "' 7 '", "3*'8'", "0*5", "1,2", ",,", ", ,", "7,", ",8", "YES", "no")},
        {3, rc::gen::element<std::string>("x", "12abc", "0x10", "inf", "1--2", "--it's", "'A B'", "2*'C D'", "A'B C'D",
                                          "'", "''", "'1*'", "a,b", "-", "2*x", "2000000000*1", "99999999999*1", "$A",
                                          "3*$B", "'$C'", std::string("1\0", 2), std::string(140, '8'))},
        {1, rc::gen::element<std::string>("/", "7/", "/7", "3*'/'", "'/'", "/ and more")},
    });
}

rc::Gen<std::string> Text()
{
    const auto gap = rc::gen::weightedElement<std::string>(
        {{30, " "}, {3, "  "}, {2, "\t"}, {8, "\n"}, {2, "\r\n"}, {1, ""}, {1, std::string(60, ' ')}});
    const auto piece = rc::gen::pair(rc::gen::weightedOneOf<std::string>({{40, Plain()}, {1, Odd()}}), gap);
    return rc::gen::map(rc::gen::container<std::vector<std::pair<std::string, std::string>>>(piece),
                        [](const std::vector<std::pair<std::string, std::string>>& pieces) {
                            std::string text;
                            for (const auto& [word, space] : pieces)
                                text += word + space;
                            return text;
                        });
}

} // namespace

TEST(ListElementReader, ReadsWhatTheReadOfAllDataReads)
{
    for (const char* shape : shapes) {
        const TableInForce table(TableOf(shape));
        const Keywords::IKeywordSyntax& syntax = *table.Syntax("X");
        EXPECT_TRUE(rc::check(shape, [&] {
            const std::string end = *rc::gen::weightedElement<std::string>(
                {{8, "\n/\n"}, {2, " /"}, {1, ""}, {1, "/\n" + std::string(140, '8') + "\n"}});
            const std::string text = " " + *Text() + end;
            const bool withVariables = *rc::gen::arbitrary<bool>();
            TextKeyword keyword(syntax, text, withVariables);
            RC_PRE(keyword.IsSet());
            const int count = keyword.Count();
            for (const int index : {0, count / 3, count / 2, count - 1, count, -1, *rc::gen::inRange(0, count + 1)})
                RC_ASSERT(keyword.Element(index) == keyword.ElementOfAll(index));
        }));
    }
}

TEST(ListElementReader, PassesOverWhatNeedsNoMessage)
{
    // A text of each kind, and of which shape it isn't healthy.
    const TableInForce table(TableOf(shapes[0]));
    const Keywords::IKeywordSyntax& syntax = *table.Syntax("X");
    const std::string line = " 1.25 -3 1E5 5*0.5 2* 7.\n"; // 11 values, of which 5, 6, 7 are among the copies
    std::string text;
    for (int i = 0; i < 1000; ++i) {
        text += line;
        if (i % 100 == 99) text += "-- layer's end\n\n";
        if (i % 100 == 49) text += "  8 '9' , 10, -- a comment's line with data\r\n"; // 3 values
        if (i % 100 == 24) text += "--@@@ 11 12 --it's live\n";
    }
    const std::string healthy = text + " 13 /   and what stands behind it, $NTG 'too\n";
    const auto found = Find(syntax, healthy, 5);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->count, 11 * 1000 + 3 * 10 + 2 * 10 + 1);
    EXPECT_EQ(found->token, "0.5");

    const std::string token[] = {"1.25", "-3", "1E5", "0.5", "0.5", "0.5", "0.5", "0.5", "1*", "1*", "7."};
    for (std::int64_t i = 0; i < 11 * 25; ++i)
        EXPECT_EQ(Find(syntax, healthy, i)->token, token[i % 11]) << i;
    EXPECT_EQ(Find(syntax, healthy, 11 * 25)->token, "11");
    EXPECT_EQ(Find(syntax, healthy, 11 * 50 + 2 + 1)->token, "9");
    EXPECT_EQ(Find(syntax, healthy, found->count - 2)->token, "7.");
    EXPECT_EQ(Find(syntax, healthy, found->count - 1)->token, "13");
    for (const std::int64_t miss : {found->count, found->count + 1000, std::int64_t{-1}})
        EXPECT_FALSE(Find(syntax, healthy, miss)->token);

    // Whatever a read would tell of, or keep beside the data, wherever it stands.
    for (const char* odd : {"x", "$A", "1 2 'bad", "1 2000000000*1 1000000000*1", "a 8", "'a'", "8'9'"}) {
        EXPECT_FALSE(Find(syntax, healthy.substr(0, line.size()) + odd + "\n" + healthy, 0)) << odd;
        EXPECT_FALSE(Find(syntax, text + odd + " /\n", 0)) << odd;
    }
    EXPECT_FALSE(Find(syntax, text, 0));
    EXPECT_FALSE(Find(syntax, text + std::string(140, ' ') + "1 /", 0));
    EXPECT_TRUE(Find(syntax, text + "1 /" + std::string(140, ' '), 0));
    EXPECT_FALSE(Find(syntax, text + "1 /\n" + std::string(140, '1'), 0));
}

TEST(ListElementReader, ATokenAsWideAsItsLineStandsAloneWithoutAMessage)
{
    for (const char* shape : {shapes[0], shapes[4]}) {
        const TableInForce table(TableOf(shape));
        for (std::size_t width = 126; width <= 133; ++width) {
            TextKeyword keyword(*table.Syntax("X"), "7\n" + std::string(width, '8') + "\n9 /", false);
            for (int index = 0; index < 3; ++index)
                EXPECT_EQ(keyword.Element(index), keyword.ElementOfAll(index)) << width;
        }
    }
}

TEST(ListElementReader, SuitsListsOfNumbersAndStrings)
{
    const std::pair<const char*, bool> cases[] = {
        {shapes[0], true},
        {shapes[3], true},
        {shapes[4], true},
        {shapes[6], false},
        {R"({"type": "list", "element": {"type": "real"}, "end": {"tokens": ["NEVER"]}})", false},
        {R"({"type": "list", "element": {"type": "list", "element": {"type": "real"}}})", false},
        {R"({"type": "record", "items": [{"name": "A", "type": "real"}]})", false},
    };
    for (const auto& [shape, suits] : cases) {
        const TableInForce table(TableOf(shape));
        EXPECT_EQ(DeckManager::ListElementReader::Suits(*table.Syntax("X")->GetMetaData()), suits) << shape;
    }
}

TEST(ListElementReader, ListsThatCannotHoldTheirElementsAreReadWhole)
{
    const TableInForce table(TableOf(shapes[0]));
    const DeckManager::DeserializeLimits limits = DeckManager::DeserializeState::DefaultLimits();
    DeckManager::DeserializeState::DefaultLimits().elementsOfList = 100;
    TextKeyword fits(*table.Syntax("X"), " 100*7 /", false);
    TextKeyword tooMany(*table.Syntax("X"), " 100*7 8 /", false);
    EXPECT_EQ(fits.Element(99), "100: value 0x1.cp+2");
    EXPECT_EQ(tooMany.Element(99), tooMany.ElementOfAll(99));
    EXPECT_NE(tooMany.Element(0).find("has more data than can be held"), std::string::npos);
    DeckManager::DeserializeState::DefaultLimits() = limits;
}

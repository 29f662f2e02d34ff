// What bad text does to a host: the message that it gets, what is left of the data, and that reading goes on with the
// next keyword. Through the exported interface, in decks.

#include "tests/keywords/DataReading.h"
#include "tests/support/TestDeck.h"

using namespace DataReading;
using TestSupport::TestDeck;

namespace {

/// Few elements and containers fill the limits, until the end of the scope.
struct NarrowLimits
{
    NarrowLimits() { DeckManager::DeserializeState::DefaultLimits() = {40, 40, 60, 10}; }
    ~NarrowLimits() { DeckManager::DeserializeState::DefaultLimits() = {}; }
};

/// What a host gets for the first keyword of that name: the data as `Describe` tells them, or what was thrown.
std::string Ask(const TestDeck& deck, const std::string& name)
{
    try {
        const auto* const data = deck.Keywords().GetKeywordData(*deck.At(name));
        return data ? Describe(*data) : "null";
    } catch (const std::exception& exception) {
        return std::string("throws ") + exception.what();
    }
}

std::vector<std::string> Messages(const TestSupport::LogRecorder& log)
{
    std::vector<std::string> texts;
    for (const auto& message : log.Messages())
        texts.push_back(fmt::format("{} {}", message.line, message.text));
    return texts;
}

/// A run of the same text as `n*text`.
std::string Shortened(std::string tree)
{
    if (tree.ends_with(']')) tree.insert(tree.size() - 1, 1, ' ');
    if (tree.starts_with('[')) tree.insert(1, 1, ' ');
    for (std::size_t at = 0; (at = tree.find("{0.5 0.5 0.5}", at)) != std::string::npos;)
        tree.replace(at, 13, "{,}");
    std::string result;
    std::string last;
    std::size_t count = 0;
    const auto flush = [&] {
        if (count > 3)
            result += fmt::format("{} x {} ", count, last);
        else
            for (; count > 0; --count)
                result += last + ' ';
        count = 0;
    };
    for (std::size_t at = 0; at <= tree.size();) {
        const std::size_t end = std::min(tree.find(' ', at), tree.size());
        const std::string word = tree.substr(at, end - at);
        if (word != last) flush();
        last = word;
        ++count;
        at = end + 1;
    }
    flush();
    result.pop_back();
    return result;
}

std::string NoReal(const std::string& token)
{
    return "3 \"" + token + "\" can not be converted into double";
}

std::string Truncated(const char* keyword)
{
    return fmt::format("3 Keyword {} has more data than can be held; the rest is left out.", keyword);
}

} // namespace

TEST(BadInput, IsToldAndReadingGoesOn)
{
    const TestSupport::CleanEnvironment clean;
    const NarrowLimits limits;
    const std::string nul(1, '\0');
    const std::string longLine = "Line exceeds the maximum VELDANE keyword line length of 132 characters.  Anything "
                                 "beyond 132 characters will be ignored.";
    const auto padded = [](std::size_t columns, const std::string& tail) {
        return std::string(columns - tail.size(), ' ') + tail;
    };
    const std::string longName = "A_NAME_OF_MORE_THAN_FIFTEEN";
    const struct
    {
        const char* what;
        std::string text; ///< the section, the keyword, and its data
        std::string tree;
        std::vector<std::string> messages; ///< each behind its line
    } cases[] = {
        {"a count of ten digits", "GRID\nPORO\n0.1 2000000000*1.0 0.2 /", "[ 0.1 0.2 ]", {NoReal("2000000000*1.0")}},
        {"the same without a terminator",
         "GRID\nPORO\n99999999999*1",
         "[  ]",
         {NoReal("99999999999*1"), "3 List in keyword PORO is not properly terminated"}},
        {"more integers than a list holds",
         "REGIONS\nSATNUM\n7 900000000*1 2 /",
         "[ 7 59 x 1 ]",
         {Truncated("SATNUM")}},
        {"more defaults than a list holds", "GRID\nPORO\n900000000* /", "[ 60 x 1* ]", {Truncated("PORO")}},
        {"more strings than a list holds",
         "SUMMARY\nWBHP\n999999999*" + longName + " B /",
         "[ 60 x " + longName + " ]",
         {Truncated("WBHP")}},
        {"more values than a record has items",
         "RUNSPEC\nREGDIMS\n900000000*1 /",
         "{1 8 x 1 1}",
         {"3 Record in keyword REGDIMS has too many items"}},
        {"more records than a repeat may make",
         "PROPS\nSWFN\n900000000*0.5 /",
         "[ [{,} 38 x {,} {,}] ]",
         {Truncated("SWFN")}},
        {"a repeat of nothing", "GRID\nPORO\n0*5\n0.1 0*5 0.2 /", "[ 0.1 0.2 ]", {}},
        {"a repeat of nothing in a record", "RUNSPEC\nEQLDIMS\n0*7 2 /", "{2 - - - -}", {}},
        {"a quote alone",
         "GRID\nPORO\n0.1\n'\n0.2 /",
         "[ 0.1 0.2 ]",
         {"4 Unbalanced quote while reading keyword data: '"}},
        {"a byte 0 in a number", "GRID\nPORO\n0.1 0" + nul + ".3 0.2 /", "[ 0.1 0.2 ]", {NoReal("0" + nul + ".3")}},
        {"a line of 132 columns", "GRID\nPORO\n" + padded(132, "0.1") + "\n0.2 /", "[ 0.1 0.2 ]", {}},
        {"a line of 133 columns", "GRID\nPORO\n" + padded(133, "0.19") + "\n0.2 /", "[ 0.1 0.2 ]", {"3 " + longLine}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const TestDeck deck(TestDeck::Texts{{"A.DATA", c.text + "\nSCHEDULE\nTSTEP\n 1 2 /\n"}});
        deck.Walk();
        const std::size_t second = c.text.find('\n') + 1;
        const std::string keyword = c.text.substr(second, c.text.find('\n', second) - second);
        std::string tree;
        {
            const TestSupport::LogRecorder log;
            tree = Shortened(Ask(deck, keyword));
            EXPECT_EQ(Messages(log), c.messages);
            EXPECT_EQ(tree, c.tree);
        }
        const TestSupport::LogRecorder log;
        EXPECT_EQ(Ask(deck, "TSTEP"), "[1 2]");
        EXPECT_EQ(Shortened(Ask(deck, keyword)), tree); // once more, without a message
        EXPECT_EQ(Messages(log), std::vector<std::string>{});
        Core::Service::MessageCapper::instance().reset();
    }
}

TEST(BadInput, TablesOfTerminatorsShareTheirData)
{
    const TestSupport::CleanEnvironment clean;
    std::string text = "PROPS\nSWOF\n 0.1 0 1 0\n 0.9 1 0 0 /\n";
    for (int i = 0; i < 100000; ++i)
        text += "/\n";
    const TestDeck deck(TestDeck::Texts{{"A.DATA", text + "SCHEDULE\nTSTEP\n 1 /\n"}});
    const TestSupport::LogRecorder log;
    const auto* const data = deck.Keywords().GetKeywordData(*deck.At("SWOF"));
    const auto& tables = static_cast<const Core::Keywords::IKeywordListData&>(*data);
    ASSERT_EQ(tables.GetElementCount(), 100001);
    EXPECT_EQ(Describe(tables.GetContainer(100000)), "[{0.1 0 1 0} {0.9 1 0 0}]");
    const auto rows = [&tables](int table) {
        return &static_cast<const Core::Keywords::IKeywordListData&>(tables.GetContainer(table)).GetContainer(0);
    };
    EXPECT_EQ(rows(0), rows(50000));
    EXPECT_EQ(Ask(deck, "TSTEP"), "[1]");
    EXPECT_TRUE(log.Empty());
}

TEST(BadInput, SizesOfALiftTableSaturate)
{
    const TestSupport::CleanEnvironment clean;
    const std::string many = " 65536*1 /\n";
    const TestDeck deck(
        TestDeck::Texts{{"A.DATA", "SCHEDULE\nVFPPROD\n 1 2000 /\n 10 20 /\n" + many + many + many + many +
                                       " 1 1 1 1 100 200 /\n 1 1 1 2 300 400 /\nTSTEP\n 1 /\n"}});
    const TestSupport::LogRecorder log;
    const std::string tree = Ask(deck, "VFPPROD");
    EXPECT_TRUE(tree.ends_with("{1 1 1 1 [100 200]} {1 1 1 2 [300 400]}]}")) << tree.substr(tree.size() - 80);
    EXPECT_EQ(Ask(deck, "TSTEP"), "[1]");
    EXPECT_EQ(Messages(log), std::vector<std::string>{});
}

TEST(BadInput, ShapesThatTakeNothingAndSizesThatAskThemselves)
{
    const TestSupport::LogRecorder log;
    const TableInForce table(R"([
        {"name": "RUNSPEC", "kind": "section", "sections": "all"},
        {"name": "LOOSE", "sections": "all", "data": {"type": "list", "element": {"type": "record", "termination": "none",
            "items": [{"name": "A", "type": "integer", "optionalOnRead": true},
                      {"name": "B", "type": "real", "optionalOnRead": true}]}}},
        {"name": "SELF", "sections": "all", "data": {"type": "record", "items": [{"name": "N", "type": "integer"},
            {"name": "L", "type": "list", "termination": "none", "size": "RUNSPEC:SELF[0]", "element": {"type": "real"}}]}},
        {"name": "ONE", "sections": "all", "data": {"type": "record", "items": [{"name": "N", "type": "integer"},
            {"name": "L", "type": "list", "termination": "none", "size": "RUNSPEC:TWO[0]", "element": {"type": "real"}}]}},
        {"name": "TWO", "sections": "all", "data": {"type": "record", "items": [{"name": "N", "type": "integer"},
            {"name": "L", "type": "list", "termination": "none", "size": "RUNSPEC:ONE[0]", "element": {"type": "real"}}]}},
        {"name": "NEXT", "sections": "all", "data": {"type": "list", "element": {"type": "integer"}}}])");
    {
        const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nLOOSE\n 1 2.5 word 3 /\nSELF\n 1 2 /\nONE\n 1 2 /\n"
                                                       "TWO\n 1 2 /\nNEXT\n 7 8 /\n"}});
        EXPECT_EQ(Ask(deck, "LOOSE"), "[{1 2.5}]");
        // What was thrown leaves nothing behind: the keyword isn't taken for read, nor for being read.
        for (int again = 0; again < 2; ++again) {
            EXPECT_EQ(Ask(deck, "SELF"), "throws Context::Eval: keyword SELF has no data");
            EXPECT_EQ(Ask(deck, "ONE"), "throws Context::Eval: keyword ONE has no data");
            EXPECT_EQ(Ask(deck, "TWO"), "throws Context::Eval: keyword TWO has no data");
            EXPECT_EQ(Ask(deck, "NEXT"), "[7 8]");
        }
    }
    EXPECT_EQ(log.Texts(), (std::vector<std::string>{"List in keyword LOOSE has too many items"}));
}

TEST(BadInput, ExceptionsReachTheHost)
{
    const TestSupport::CleanEnvironment clean;
    const char* tableText = R"([
        {{"name": "RUNSPEC", "kind": "section", "sections": "all"}},
        {{"name": "PATHS", "sections": "all", "data": {{"type": "record", "items": [{{"name": "N", "type": "list",
            "termination": "none", "size": "{}", "element": {{"type": "string"}}}}]}}}},
        {{"name": "SIZED", "sections": "all", "data": {{"type": "record", "items": [{{"name": "N", "type": "list",
            "termination": "none", "size": "context:WHAT", "element": {{"type": "string"}}}}]}}}},
        {{"name": "OILVISCC", "sections": "all", "data": {}}},
        {{"name": "NEXT", "sections": "all", "data": {{"type": "list", "element": {{"type": "integer"}}}}}}])";
    const char* viscosity = R"({"type": "list", "termination": "none",
        "element": {"type": "list", "element": {"type": "record", "items": [
            {"name": "A", "type": "option", "options": ["LOG", "OTHER"]},
            {"name": "B", "type": "option", "options": ["FORMULA", "TABLE"]},
            {"name": "C", "type": "list", "termination": "none", "element":
                {"type": "list", "termination": "none", "element": {"type": "real"}}}]}}})";
    const TestDeck::Texts texts{{"A.DATA", "RUNSPEC\nOILVISCC\n OTHER TABLE 1 2 /\nPATHS\n A B /\nNEXT\n 7 8 /\n"}};
    {
        const TableInForce table(fmt::format(fmt::runtime(tableText), "context:WHAT", viscosity));
        TestDeck::Texts withoutPaths = texts;
        withoutPaths[0].second.replace(withoutPaths[0].second.find("PATHS\n A B /\n"), 13, "SIZED\n A B /\n");
        const TestDeck deck(withoutPaths);
        for (int again = 0; again < 2; ++again) {
            EXPECT_EQ(Ask(deck, "OILVISCC"), "throws DeckManager::CustomDeserializerOILVISCC: unhandled type");
            EXPECT_EQ(Ask(deck, "SIZED"), "throws Context::EvalSpecial(): unhandled size \"context:WHAT\". ");
            EXPECT_EQ(Ask(deck, "NEXT"), "[7 8]");
        }
    }
    {
        // A deck with aliases can't be read by a host that doesn't support them; with support it can.
        const TableInForce table(fmt::format(fmt::runtime(tableText), "2", viscosity));
        const TestDeck deck(texts);
        for (int again = 0; again < 2; ++again)
            EXPECT_EQ(Ask(deck, "NEXT"), "throws PATHS is not supported");
        DeckManager::Environment::Instance().SetPATHSSupport(true);
        EXPECT_EQ(Ask(deck, "PATHS"), "{[A B]}");
        EXPECT_EQ(Ask(deck, "NEXT"), "[7 8]");
    }
    {
        // Aliases are read while the file is loaded: what their data throw fails the load, each time anew.
        const TableInForce table(fmt::format(fmt::runtime(tableText), "context:WHAT", viscosity));
        DeckManager::Environment::Instance().SetPATHSSupport(true);
        const TestDeck deck(texts);
        for (int again = 0; again < 2; ++again) {
            EXPECT_EQ(Ask(deck, "NEXT"), "throws Context::EvaluateIntegerExpr: IDeckKeywords must be provided to "
                                         "evaluate expression");
        }
    }
    {
        // A table whose shape no reader knows: no data can be read, whatever the keyword, and all else still works.
        const TableInForce table(
            fmt::format(fmt::runtime(tableText), "2", R"({"type": "list", "element": {"type": "real"}})"));
        const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nOILVISCC\n 1 /\nNEXT\n 7 8 /\n"}});
        for (int again = 0; again < 2; ++again)
            EXPECT_EQ(Ask(deck, "NEXT"), "throws DeckManager::CustomDeserializerOILVISCC: syntax mismatch");
        EXPECT_EQ(deck.Walk(), "RUNSPEC OILVISCC NEXT");
        EXPECT_EQ(*deck.Keywords().GetDataText(*deck.At("NEXT")), " 7 8 /");
    }
}

#include <boost/lexical_cast.hpp>

#include "tests/keywords/DataReading.h"
#include "tests/support/DeckTest.h"

using namespace DataReading;
using DeckManager::Context;

namespace {

/// A deck from text, and the context on it.
struct DeckOfText : TestSupport::TestDeck
{
    explicit DeckOfText(const std::string& text) : TestDeck(Texts{{"D.DATA", text}}, false), context(&Keywords()) {}

    Context context;
};

/// The value, "none" for an expression that the deck doesn't answer, or what was thrown.
std::string Evaluate(const Context& context, const std::string& expression)
{
    try {
        int value = -77;
        return context.EvaluateIntegerExpr(expression, value) ? std::to_string(value) : "none";
    } catch (const DeckManager::DeckManagerException& exception) {
        return exception.what();
    }
}

const std::string notFound = "Context::Eval: keyword ";

} // namespace

TEST(Context, AnswersNumbersWithoutADeck)
{
    const Context context;
    EXPECT_EQ(context.Keywords(), nullptr);
    EXPECT_EQ(Evaluate(context, "12"), "12");
    EXPECT_EQ(Evaluate(context, "99999999999"), "2147483647");
    for (const char* expression : {"", "-1", "RUNSPEC:TABDIMS[0]", "context:COMPS", "self:X"}) {
        EXPECT_EQ(Evaluate(context, expression),
                  "Context::EvaluateIntegerExpr: IDeckKeywords must be provided to evaluate expression");
    }
}

TEST(Context, AnswersItemsOfOtherKeywords)
{
    const DeckOfText deck(
        "RUNSPEC\nTITLE\nOne\nTABDIMS\n 2 1* 30 /\nOIL\nWELLDIMS\n 7 /\nGRID\nPROPS\nDENSITY\n 1 2 3 /\n");
    const TestSupport::LogRecorder log;
    const struct
    {
        const char* expression;
        const char* value;
        std::vector<std::string> messages = {};
    } cases[] = {
        {"RUNSPEC:TABDIMS[0]", "2"},
        {"RUNSPEC:TABDIMS[2]", "30"},
        {"FOO:RUNSPEC:TABDIMS[0]", "2"},
        // A section that the deck lacks is looked for from the beginning.
        {"SCHEDULE:WELLDIMS[0]", "7"},
        {"GRID:TABDIMS[0]", "none", {notFound + "TABDIMS not found in section GRID"}},
        {"RUNSPEC:TABDIMS[1]", "none", {notFound + "TABDIMS, requested item has not been initialized "}},
        {"RUNSPEC:TABDIMS", "none"},
        {"self:SIZEFLOVALUES", "none"},
        {"context:", "none"},
        {"RUNSPEC:OIL[0]", "Context::Eval: keyword OIL has no data"},
        {"RUNSPEC:TABDIMS[0][1]", "Context::Eval: currently do not handle data query deeper than 1 level"},
        {"PROPS:DENSITY[0]", "Context::Eval: unrecoqnized keyword data container type"},
        {"RUNSPEC:TABDIMS[99]", "Context::Eval: keyword TABDIMS, index 99 is beyond record range"},
        {"RUNSPEC:TABDIMS[-1]", "Context::Eval: keyword TABDIMS, index -1 is beyond record range"},
        {"RUNSPEC:TITLE[0]", "Context::Eval: keyword TITLE, item at index 0 expected to be an integer"},
        {"context:WHAT", "Context::EvalSpecial(): unhandled size \"context:WHAT\". "},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Evaluate(deck.context, c.expression), c.value) << c.expression;
    }
    std::vector<std::string> expected;
    for (const auto& c : cases)
        expected.insert(expected.end(), c.messages.begin(), c.messages.end());
    EXPECT_EQ(log.Texts(3), expected);
    for (const auto& message : log.Messages())
        EXPECT_TRUE(message.probe);
    int value = 0;
    EXPECT_THROW(deck.context.EvaluateIntegerExpr("RUNSPEC:TABDIMS[x]", value), boost::bad_lexical_cast);
}

TEST(Context, AnswersSizesByName)
{
    const struct
    {
        const char* expression;
        const char* deck;
        const char* value;
    } cases[] = {
        {"COMPS", "RUNSPEC\nCOMPS\n 4 /\n", "4"},
        {"COMPS", "RUNSPEC\nOIL\nPROPS\nNCOMPS\n 5 /\n", "5"},
        {"COMPS", "RUNSPEC\nDEADOIL\nPROPS\nCNAMES\n A B C /\n", "1"},
        {"COMPS", "RUNSPEC\nOIL\nPROPS\nCNAMES\n A B C /\n", "3"},
        {"COMPS", "RUNSPEC\nCOMPS\n 1* /\nDEADOIL\n", "none"},
        {"COMPS", "RUNSPEC\nOIL\n", "none"},
        {"COMPS_OR_1", "RUNSPEC\nOIL\n", "1"},
        {"OILVISCT_VISCNUM", "RUNSPEC\nCOMPS\n 4 /\n", "4"},
        {"MAXUAT", "RUNSPEC\nAQUDIMS\n 1 2 8 /\n", "7"},
        {"MAXUAT", "RUNSPEC\nAQUDIMS\n 1 2 0 /\n", "0"},
        {"MAXUAT", "RUNSPEC\nOIL\n", "none"},
        {"NCMPHW", "RUNSPEC\nGASWAT\nGASSOL\n 3 /\nCOMPS\n 4 /\n", "4"},
        {"NCMPHW", "RUNSPEC\nGASWAT\n", "Context::EvalNCMPHW: COMPS keyword does not have integer value at item 1"},
        {"NCMPHW", "RUNSPEC\nCO2STORE\n", "1"},
        {"NCMPHW", "RUNSPEC\nCO2SOL\nH2SSOL\n", "2"},
        {"NCMPHW", "RUNSPEC\nCO2SOL\nCOMPW\n 6 /\n", "6"},
        {"NCMPHW", "RUNSPEC\nCOMPW\n 1* /\n",
         "Context::EvalNCMPHW: COMPW keyword does not have integer value at item 1"},
        {"NCMPHW", "RUNSPEC\nGASSOL\n 3 /\n", "3"},
        {"NCMPHW", "RUNSPEC\nGASSOL\n 1* /\n",
         "Context::EvalSpecial: GASSOL keyword does not have integer value at item 1"},
        {"NCMPHW", "RUNSPEC\nGASSOL\n 3 /\nCO2SOL\n",
         "Context::EvalSpecial: GASSOL cannot be used with CO2SOL & H2SOL keywords"},
        {"NCMPHW", "RUNSPEC\nOIL\n", "0"},
        {"NCOMPW", "RUNSPEC\nCOMPW\n 6 /\n", "6"},
        {"NCOMPW", "RUNSPEC\nOIL\n", "1"},
        {"NCOMPW_Or_Default", "RUNSPEC\nCOMPW\n 6 /\n", "6"},
        {"NCOMPW_Or_Default", "RUNSPEC\nCOMPW\n 1* /\n", "1"},
        {"NCOMPW_Or_Default", "RUNSPEC\nWATER\n", "1"},
        {"NCOMPW_Or_Default", "RUNSPEC\nOIL\n", "0"},
        {"NDETAC", "RUNSPEC\nOIL\nPROPS\nOIL\n", "Context::EvalNDETAC: keyword LUMPING must be present"},
        {"NDETAC", "RUNSPEC\nOIL\nPROPS\nLUMPING\n A 2 /\n B 3 /\n/\n", "5"},
        {"NDETAC", "RUNSPEC\nOIL\nPROPS\nLUMPING\n A 2147483647 /\n B 3 /\n/\n", "none"},
        {"NDETAC", "RUNSPEC\nOIL\nPROPS\nLUMPING\n A 2 /\n B /\n/\n",
         "Context::EvalNDETAC: item 2 of record 2 of keyword LUMPING has been defaulted."},
        {"NRPINC", "RUNSPEC\nGRIDOPTS\n NO 1 9 /\nGRID\nPINCHNUM\n 1 /\n", "9"},
        {"NRPINC", "RUNSPEC\nREGDIMS\n 1 2 3 4 /\nTABDIMS\n 10*1 6 /\nGRID\nFLUXNUM\n 1 /\n", "6"},
        {"NRPINC", "RUNSPEC\nGRIDOPTS\n NO 1 9 /\nGRID\n", "0"},
        {"NTABSR", "RUNSPEC\nTABDIMS\n 12*1 5 /\nROCKCOMP\n 1* 3 /\n", "5"},
        {"NTABSR", "RUNSPEC\nROCKCOMP\n 1* 3 /\n", "3"},
        {"NUMREP", "RUNSPEC\nTABDIMS\n 4*1 5 /\nREGDIMS\n 7 /\n", "7"},
        {"NUMREP", "RUNSPEC\nOIL\n", "1"},
        {"NUMSLT", "RUNSPEC\nOIL\n", "1"},
        {"NUMSLT", "RUNSPEC\nBRINE\n NACL CACL2 /\nOIL\n", "1"},
        {"NUMSLT", "RUNSPEC\nBRINE\n NACL CACL2 /\nVLDMC\n", "2"},
        {"NUMSLT", "RUNSPEC\nBRINE\nVLDMC\n", "0"},
        {"ROCKTABTRANSMYZ", "RUNSPEC\nPROPS\nRKTRMDIR\n", "1"},
        {"ROCKTABTRANSMYZ", "RUNSPEC\nPROPS\n", "0"},
    };
    for (const auto& c : cases) {
        const DeckOfText deck(c.deck);
        EXPECT_EQ(Evaluate(deck.context, std::string("context:") + c.expression), c.value) << c.expression << "\n"
                                                                                           << c.deck;
    }
}

TEST(Context, KeepsItsResults)
{
    DeckOfText deck("RUNSPEC\nOIL\nGRID\nPINCHNUM\n 1 /\n");
    {
        // What failed may have left a result behind, and counts as known from then on.
        EXPECT_EQ(Evaluate(deck.context, "context:NRPINC"), "none");
        EXPECT_EQ(Evaluate(deck.context, "context:NRPINC"), "0");
        const Context copy = deck.context;
        EXPECT_EQ(Evaluate(copy, "context:NRPINC"), "0");
    }
    const TestSupport::LogRecorder log;
    EXPECT_EQ(Evaluate(deck.context, "context:NUMREP"), "1");
    EXPECT_EQ(log.Texts(3), (std::vector<std::string>{
                                "Context::Eval: keyword TABDIMS not found in section RUNSPEC",
                                "Context::GetKeywordItem: TABDIMS does not have a valid integer value at index 4",
                                "Context::Eval: keyword REGDIMS not found in section RUNSPEC",
                                "Context::GetKeywordItem: REGDIMS does not have a valid integer value at index 0",
                                "Context::Eval: keyword DYNRDIMS not found in section RUNSPEC",
                                "Context::GetKeywordItem: DYNRDIMS does not have a valid integer value at index 0"}));
    EXPECT_EQ(Evaluate(deck.context, "context:NUMREP"), "1");
    EXPECT_EQ(log.Count(3), 6);

    deck.context.Bind(&deck.Keywords());
    EXPECT_EQ(Evaluate(deck.context, "context:NRPINC"), "none");

    // What could not be told is asked anew each time, what is known once and for all never again.
    const struct
    {
        const char* expression;
        const char* first;
        const char* second;
        int messagesOfFirst;
        int messagesOfSecond;
    } cases[] = {
        {"context:NTABSR", "1", "1", 4, 0},
        {"context:MAXUAT", "none", "none", 2, 2},
        {"context:COMPS", "none", "none", 0, 0},
        {"RUNSPEC:TABDIMS[0]", "none", "none", 1, 1},
    };
    for (const auto& c : cases) {
        const TestSupport::LogRecorder messages;
        EXPECT_EQ(Evaluate(deck.context, c.expression), c.first) << c.expression;
        EXPECT_EQ(messages.Count(3), c.messagesOfFirst) << c.expression;
        EXPECT_EQ(Evaluate(deck.context, c.expression), c.second) << c.expression;
        EXPECT_EQ(messages.Count(3), c.messagesOfFirst + c.messagesOfSecond) << c.expression;
    }
}

TEST(Context, KeepsWhatAnEvaluationHadWhenItFailed)
{
    const DeckOfText deck("RUNSPEC\nGASWAT\nPROPS\nLUMPING\n A 2 /\n B 3 /\n C /\n/\n");
    EXPECT_EQ(Evaluate(deck.context, "context:NCMPHW"),
              "Context::EvalNCMPHW: COMPS keyword does not have integer value at item 1");
    EXPECT_EQ(Evaluate(deck.context, "context:NCMPHW"), "0");
    EXPECT_EQ(Evaluate(deck.context, "context:NDETAC"),
              "Context::EvalNDETAC: item 2 of record 3 of keyword LUMPING has been defaulted.");
    EXPECT_EQ(Evaluate(deck.context, "context:NDETAC"), "5");
}

TEST(Context, AnswersNoNamesForAnIncompleteDeck)
{
    const DeckOfText deck("RUNSPEC\nTABDIMS\n 2 /\n");
    DeckManager::Environment::Instance().SetIncompleteDeckKeywordValidation(true);
    EXPECT_EQ(Evaluate(deck.context, "context:NUMREP"), "none");
    EXPECT_EQ(Evaluate(deck.context, "context:WHAT"), "none");
    EXPECT_EQ(Evaluate(deck.context, "RUNSPEC:TABDIMS[0]"), "2");
    DeckManager::Environment::Instance().destroy();
}

TEST(Context, ResolvesPathAliasesWhereAFileIsNamed)
{
    DeckManager::Environment::Instance().SetPATHSSupport(true);
    {
        const DeckOfText deck(
            "RUNSPEC\nPATHS\n 'inc' 'sub/dir' /\n 'deep' '$inc/more' /\n/\nINCLUDE\n '$DEEP/a.inc' /\nOIL\n");
        const DeckManager::IKeyword* const include = *deck.At("INCLUDE");
        const DeckManager::IKeyword* const oil = *deck.At("OIL");
        Context context;
        std::string out;
        EXPECT_FALSE(context.ResolvePathAliases(include, "$inc/a", out));
        EXPECT_EQ(out, "$inc/a");
        context.NoteKeyword(nullptr);
        context.NoteKeyword(oil);
        EXPECT_FALSE(context.ResolvePathAliases(include, "$inc/a", out));
        context.NoteKeyword(*deck.At("PATHS"));
        context.Bind(&deck.Keywords()); // the aliases stay
        const Context copy = context;
        EXPECT_TRUE(copy.ResolvePathAliases(include, "$DEEP/a.inc", out));
        EXPECT_EQ(out, "sub/dir/more/a.inc");
        EXPECT_TRUE(copy.ResolvePathAliases(oil, "$DEEP/a.inc", out));
        EXPECT_EQ(out, "$DEEP/a.inc");
        EXPECT_TRUE(copy.ResolvePathAliases(nullptr, "$DEEP/a.inc", out));
        EXPECT_EQ(out, "$DEEP/a.inc");
        EXPECT_EQ(ReadText(LooseKeyword(include->GetSyntax()), "'$deep/B.inc' /", false, copy).tree,
                  "{sub/dir/more/B.inc}");
    }
    DeckManager::Environment::Instance().destroy();
}

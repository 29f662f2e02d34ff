// Expressions ask an index of names where a plain view of the deck makes them walk. The two must agree in results,
// messages and their order, whatever the deck looks like and whatever has happened to it.

#include <fmt/format.h>
#include <rapidcheck.h>

#include "deck/DeckKeywords.h"
#include "tests/support/DeckTest.h"
#include "tests/support/PlainView.h"
#include <deckmanager/Context.h>

namespace {

using namespace DeckTests;
using TestSupport::PlainView;

/// Every answer, and every message, in order. Data stay read: the first of two such rounds also tells of them.
std::string Answers(const IDeckKeywords& view)
{
    const Context context(&view);
    std::string all;
    const TestSupport::LogRecorder log;
    std::vector<std::string> expressions;
    for (const char* section : {"RUNSPEC", "GRID", "PROPS", "SCHEDULE"}) {
        for (const char* name : {"TABDIMS", "REGDIMS", "OIL", "END", "ENDINC", "INCLUDE", "NONE"})
            expressions.push_back(fmt::format("{}:{}[0]", section, name));
    }
    for (const char* name : {"NCMPHW", "NUMSLT", "NTABSR", "NCOMPW", "NCOMPW_Or_Default", "MAXUAT", "NUMREP", "NRPINC",
                             "NDETAC", "ROCKTABTRANSMYZ", "OILVISCT_VISCNUM", "COMPS_OR_1", "COMPS"})
    {
        expressions.push_back(std::string("context:") + name);
    }
    for (const std::string& expression : expressions) {
        int value = -77;
        std::string answer;
        try {
            answer = context.EvaluateIntegerExpr(expression, value) ? std::to_string(value) : "none";
        } catch (const DeckManagerException& exception) {
            answer = exception.what();
        }
        all += expression + " = " + answer + "\n";
    }
    for (const auto& message : log.Messages())
        all += fmt::format("{}{} {}\n", message.probe ? "?" : "", message.severity, message.text);
    return all;
}

rc::Gen<std::string> FileText()
{
    const auto piece = rc::gen::weightedElement<std::string>({
        {3, "RUNSPEC\n"},
        {3, "GRID\n"},
        {2, "PROPS\n"},
        {1, "SCHEDULE\n"},
        {2, "OIL\n"},
        {1, "WATER\n"},
        {2, "TABDIMS\n 1 /\n"},
        {2, "TABDIMS\n 2 4* 6 8 4* 9 3 /\n"},
        {1, "TABDIMS\n /\n"},
        {1, "REGDIMS\n 4 5 6 7 /\n"},
        {1, "REGDIMS\n 9 1* 3 8 /\n"},
        {1, "COMPS\n 3 /\n"},
        {1, "NCOMPS\n 4 /\n"},
        {1, "CNAMES\n A B /\n"},
        {1, "GASSOL\n 2 /\n"},
        {1, "COMPW\n 2 /\n"},
        {1, "CO2SOL\n"},
        {1, "PINCHNUM\n 1 /\n"},
        {1, "FLUXNUM\n 1 /\n"},
        {1, "LUMPING\n A 2 /\n/\n"},
        {4, "INCLUDE\n 'a.inc' /\n"},
        {3, "INCLUDE\n 'b.inc' /\n"},
        {1, "INCLUDE\n 'none.inc' /\n"},
        {1, "SKIP\nTABDIMS\n 5 /\nENDSKIP\n"},
        {1, "ENDINC\n"},
        {1, "END\n"},
    });
    return rc::gen::map(rc::gen::container<std::vector<std::string>>(piece), [](const std::vector<std::string>& all) {
        std::string text;
        for (const std::string& one : all)
            text += one;
        return text;
    });
}

} // namespace

TEST(ContextIndex, AnswersAsTheLiteralWalk)
{
    const TestSupport::CleanEnvironment clean;
    const TestSupport::LogRecorder quiet;
    const bool held = rc::check("an index of names answers as a walk, also after the files have changed", [] {
        const TestDeck deck({{"T.DATA", *FileText()}, {"a.inc", *FileText()}, {"b.inc", *FileText()}});
        auto& view = static_cast<DeckKeywords&>(deck.Keywords());
        const PlainView plain(view);
        const auto check = [&] {
            Answers(plain); // reads data, whose messages come once
            RC_ASSERT(Answers(view) == Answers(plain));
        };
        check();
        for (int change = *rc::gen::inRange(0, 4); change > 0; --change) {
            switch (*rc::gen::inRange(0, 4)) {
            case 0:
                deck.Dir().Write(*rc::gen::element<std::string>("T.DATA", "a.inc", "b.inc"), *FileText());
                view.Refresh(true);
                break;
            case 1:
                deck.Dir().Write("none.inc", *FileText());
                view.Refresh(true);
                break;
            case 2:
                deck.Dir().Write("b.inc", *FileText());
                for (IKeywordFile* file : view.GetFiles())
                    if (file->GetFileName().GetFullName() == deck.Dir().Path("b.inc")) file->AsKeywordFile()->Reload();
                break;
            default:
                Environment::Instance().DeckTerminatedByENDKeyword(
                    !Environment::Instance().DeckTerminatedByENDKeyword());
            }
            check();
        }
        Environment::Instance().destroy();
    });
    EXPECT_TRUE(held);
}

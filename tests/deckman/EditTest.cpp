#include "tests/deckman/Program.h"
#include "tests/support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace DeckmanTests {

namespace {

using testing::HasSubstr;
using TestSupport::TempDir;

const std::string top = "-- header\nRUNSPEC\nTABDIMS\n 1 2*3 5 / two\n\n-- above DIMENS\nDIMENS\n10 20 30 /\nINCLUDE\n"
                        "'a.inc' /\nSCHEDULE\nWELTARG\n 'P1' ORAT 1 /\n 'P2' WRAT 2 / -- second\n/\nWELTARG\n 'P1' "
                        "LRAT 3 /\n/\n";
const std::string included = "-- inner\r\nEQLDIMS -- Generated\r\n 2 /\r\n";

/// Every run is in a folder with a deck of two files, of both line ends.
class Edit : public testing::Test
{
protected:
    Edit() { Restore(); }

    void Restore() const
    {
        m_folder.Write("x.DATA", top);
        m_folder.Write("a.inc", included);
    }

    Outcome Run(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin() + 1, "x.DATA");
        Launch run;
        run.directory = m_folder.Path();
        return Deckman(arguments, run);
    }

    bool IsAsBefore() const { return m_folder.Read("x.DATA") == top && m_folder.Read("a.inc") == included; }

    TempDir m_folder;
};

std::string Replaced(std::string text, const std::string& old, const std::string& now)
{
    return text.replace(text.find(old), old.size(), now);
}

} // namespace

TEST_F(Edit, ChangesThatAndNothingElse)
{
    struct Case
    {
        std::vector<std::string> arguments;
        std::string x;
        std::string a;
    };
    const std::vector<Case> cases = {
        {{"set", "TABDIMS.1", "7"}, Replaced(top, " 1 2*3 5", " 1 7 3 5"), included},
        {{"set", "TABDIMS.NTPVT", "1*"}, Replaced(top, " 1 2*3 5", " 1 1* 3 5"), included},
        {{"set", "EQLDIMS[2]", "9"}, top, Replaced(included, " 2 /", " 2 1* 9 /")},
        {{"set", "WELTARG#1[P2].VALUE", "2.5"}, Replaced(top, "WRAT 2 /", "WRAT 2.5 /"), included},
        {{"set", "TABDIMS.0", "1"}, top, included},
        {{"insert", "DIMENS", "EQLDIMS\n3 /"}, Replaced(top, "\n-- above", "EQLDIMS\n3 /\n\n-- above"), included},
        {{"insert", "EQLDIMS", "tabdims\n3 /", "--after"}, top, included + "TABDIMS\r\n3 /\r\n"},
        {{"rm", "DIMENS"}, Replaced(top, "DIMENS\n10 20 30 /\n", ""), included},
        {{"rm", "DIMENS", "--with-comment"}, Replaced(top, "-- above DIMENS\nDIMENS\n10 20 30 /\n", ""), included},
        {{"mv", "DIMENS", "TABDIMS"},
         Replaced(Replaced(top, "\n-- above DIMENS\nDIMENS\n10 20 30 /\n", ""), "TABDIMS\n",
                  "\n-- above DIMENS\nDIMENS\n10 20 30 /\nTABDIMS\n"),
         included},
        {{"mv", "DIMENS", "EQLDIMS", "--after"},
         Replaced(top, "\n-- above DIMENS\nDIMENS\n10 20 30 /\n", ""),
         included + "\r\n-- above DIMENS\r\nDIMENS\r\n10 20 30 /\r\n"},
        {{"comment-out", "EQLDIMS"}, top, "-- inner\r\n--EQLDIMS -- Generated\r\n-- 2 /\r\n"},
        {{"suppress", "TABDIMS"}, Replaced(top, "TABDIMS\n 1", "--@@@TABDIMS\n--@@@ 1"), included},
        {{"unsuppress", "TABDIMS"}, top, included},
        {{"tag", "TABDIMS"}, Replaced(top, "TABDIMS\n", "TABDIMS" + std::string(30, ' ') + "-- Generated\n"), included},
        {{"untag", "EQLDIMS"}, top, Replaced(included, " -- Generated", "")},
        {{"note", "TABDIMS", "one\ntwo"}, Replaced(top, "TABDIMS\n", "TABDIMS\n-- one\n-- two\n"), included},
        {{"above", "DIMENS", "new"}, Replaced(top, "-- above DIMENS", "-- new"), included},
        {{"above", "DIMENS", ""}, Replaced(top, "-- above DIMENS\n", ""), included},
        {{"above", "RUNSPEC", "-- other\nhead"}, Replaced(top, "-- header", "-- other\n-- head"), included},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(testing::PrintToString(test.arguments));
        Restore();
        std::vector<std::string> looks = test.arguments;
        looks.emplace_back("--dry-run");
        const Outcome look = Run(looks);
        EXPECT_EQ(look.status, 0) << look.err;
        EXPECT_TRUE(IsAsBefore());
        const bool changes = test.x != top || test.a != included;
        EXPECT_EQ(look.out.find("@@") != std::string::npos, changes) << look.out;
        const Outcome outcome = Run(test.arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.out + outcome.err, "");
        EXPECT_EQ(m_folder.Read("x.DATA"), test.x);
        EXPECT_EQ(m_folder.Read("a.inc"), test.a);
    }
    EXPECT_EQ(m_folder.Listing(), "a.inc x.DATA");
}

TEST_F(Edit, RefusesAndWritesNothing)
{
    struct Case
    {
        std::vector<std::string> arguments;
        int status;
        std::string says;
    };
    const std::vector<Case> cases = {
        {{"set", "TABDIMS.0", "x"}, 1, "x.DATA:3: error: The value \"x\" is not valid. Must be a whole number."},
        {{"set", "TABDIMS.99", "1"}, 1, "There is no item 99 in TABDIMS"},
        {{"set", "TABDIMS", "1"}, 2, "WHERE names no item"},
        {{"set", "RUNSPEC.0", "1"}, 1, "RUNSPEC has no data, and so no items."},
        {{"set", "WELTARG[P1].VALUE", "1"}, 1, "WELTARG stands in the deck 2 times; WELTARG#1 is the first"},
        {{"set", "TABDIM.0", "1"}, 1, "There is no TABDIM in the deck."},
        {{"insert", "DIMENS", "EQLDIMS\n3 /\nOIL\n"}, 1, "Found unexpected keyword name: OIL"},
        {{"insert", "DIMENS", "PORO\n3 /"}, 1, "PORO may not stand in the section RUNSPEC."},
        {{"insert", "DIMENS", "NOSUCHXX"}, 1, "The text begins with NOSUCHXX, which is no keyword."},
        {{"insert", "DIMENS", "-- only\n\n"}, 2, "The text of a keyword is expected, and there is none."},
        {{"insert", "DIMENS", "OIL\n3 /"}, 1, "Found unexpected data for keyword 'OIL'"},
        {{"mv", "DIMENS", "DIMENS"}, 1, "DIMENS stands there already, or cannot go there."},
        {{"rm", "DIMENS.0"}, 2, ""},
        {{"rm", "OIL"}, 1, "There is no OIL in the deck."},
        {{"above", "DIMENS"}, 2, "TEXT is required"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(testing::PrintToString(test.arguments));
        const Outcome outcome = Run(test.arguments);
        EXPECT_EQ(outcome.status, test.status);
        EXPECT_THAT(outcome.err, HasSubstr(test.says));
        EXPECT_EQ(outcome.out, "");
        EXPECT_TRUE(IsAsBefore());
    }
    EXPECT_EQ(m_folder.Listing(), "a.inc x.DATA");
    // Standard input may be empty.
    Launch run;
    run.directory = m_folder.Path();
    EXPECT_EQ(Shell("deckman insert x.DATA DIMENS - < /dev/null", run).status, 2);
    EXPECT_EQ(Shell("printf 'EQLDIMS\\n 4 /\\n' | deckman insert x.DATA DIMENS -", run).status, 0);
    EXPECT_THAT(m_folder.Read("x.DATA"), HasSubstr("two\nEQLDIMS\n 4 /\n\n-- above"));
}

TEST_F(Edit, TellsWhatItDidAndKeepsTheOldFiles)
{
    const Outcome outcome = Run({"mv", "DIMENS", "EQLDIMS", "--json", "--backup"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const auto lines = JsonLines(outcome.out);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].dump(), R"({"action":"changed","file":"x.DATA","line":7,"name":"DIMENS",)"
                               R"("old":"DIMENS\n10 20 30 /\n","new":null})");
    EXPECT_EQ(lines[1].dump(), R"({"action":"changed","file":"a.inc","line":2,"name":"DIMENS","old":null,)"
                               R"("new":"DIMENS\n10 20 30 /\n"})");
    EXPECT_EQ(m_folder.Read("x.DATA~"), top);
    EXPECT_EQ(m_folder.Read("a.inc~"), included);
    EXPECT_EQ(m_folder.Listing(), "a.inc a.inc~ x.DATA x.DATA~");
}

TEST_F(Edit, SaysWhenAFileCannotBeWritten)
{
    Launch run;
    run.directory = m_folder.Path();
    run.unprivileged = true;
    ASSERT_EQ(Shell("chmod 755 . && chmod 444 a.inc x.DATA", {m_folder.Path()}).status, 0);
    const Outcome outcome = Deckman({"set", "x.DATA", "EQLDIMS.0", "3"}, run);
    EXPECT_EQ(outcome.status, 3);
    EXPECT_THAT(outcome.err, HasSubstr("Fails to commit changes due to insufficient privileges to create/modify:"));
    EXPECT_THAT(outcome.err, HasSubstr("a.inc"));
    EXPECT_TRUE(IsAsBefore());
    // What an earlier run has kept is still there, and nothing besides.
    m_folder.Write("a.inc~", "older");
    EXPECT_EQ(Deckman({"set", "x.DATA", "EQLDIMS.0", "3", "--backup"}, run).status, 3);
    EXPECT_EQ(m_folder.Read("a.inc~"), "older");
    EXPECT_EQ(m_folder.Listing(), "a.inc a.inc~ x.DATA");
}

} // namespace DeckmanTests

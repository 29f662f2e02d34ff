#include "tests/deckman/Program.h"

namespace DeckmanTests {

namespace {

const std::string top = "-- header\nRUNSPEC\nTABDIMS\n 1 2*3 5 / two\n\n-- above DIMENS\nDIMENS\n10 20 30 /\nINCLUDE\n"
                        "'a.inc' /\nSCHEDULE\nWELTARG\n 'P1' ORAT 1 /\n 'P2' WRAT 2 / -- second\n/\nWELTARG\n 'P1' "
                        "LRAT 3 /\n/\n";
const std::string included = "-- inner\r\nEQLDIMS -- Generated\r\n 2 /\r\n";

std::string WithoutReturns(std::string text)
{
    std::erase(text, '\r');
    return text;
}

/// What a unified diff makes of the deck, with plain line ends.
std::string Patched(const std::string& diff)
{
    const TempDir folder;
    folder.Write("x.DATA", top);
    folder.Write("a.inc", WithoutReturns(included));
    folder.Write("diff", diff);
    const Outcome outcome = Shell("patch -s -f -p0 --no-backup-if-mismatch < diff", {folder.Path()});
    EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
    return folder.Read("x.DATA") + folder.Read("a.inc");
}

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
        return Deckman(arguments, {m_folder.Path()});
    }

    bool IsAsBefore() const { return m_folder.Read("x.DATA") == top && m_folder.Read("a.inc") == included; }

    TempDir m_folder;
};

} // namespace

TEST_F(Edit, ChangesThatAndNothingElse)
{
    struct Case
    {
        std::vector<std::string> arguments;
        std::string x;
        std::string a = included;
    };
    const auto x = [](const std::string& old, const std::string& now) { return Replaced(top, old, now); };
    const std::string dimens = "\n-- above DIMENS\nDIMENS\n10 20 30 /\n";
    const std::string tagged = "TABDIMS" + std::string(30, ' ') + "-- Generated\n";
    const std::vector<Case> cases = {
        {{"set", "TABDIMS.1", "7"}, x(" 1 2*3 5", " 1 7 3 5")},
        {{"set", "TABDIMS.NTPVT", "1*"}, x(" 1 2*3 5", " 1 1* 3 5")},
        {{"set", "EQLDIMS[2]", "9"}, top, Replaced(included, " 2 /", " 2 1* 9 /")},
        {{"set", "WELTARG#1[P2].VALUE", "2.5"}, x("WRAT 2 /", "WRAT 2.5 /")},
        {{"set", "TABDIMS.0", "1"}, top},
        {{"insert", "--before", "DIMENS", "EQLDIMS\n3 /"}, x("\n-- above", "EQLDIMS\n3 /\n\n-- above")},
        {{"insert", "--after", "EQLDIMS", "tabdims\n3 /"}, top, included + "TABDIMS\r\n3 /\r\n"},
        {{"insert", "--before", "DIMENS", "-- one\nEQLDIMS -- mine\n 3 /\n\n-- two\nREGDIMS\n 1 /"},
         x("\n-- above", "-- one\nEQLDIMS -- mine\n 3 /\n\n-- two\nREGDIMS\n 1 /\n\n-- above")},
        {{"insert", "--section", "RUNSPEC", "TITLE\nx"}, x("SCHEDULE\n", "TITLE\nx\nSCHEDULE\n")},
        {{"insert", "--section", "PROPS", "SWOF\n 0 0 1 0 /"},
         x("SCHEDULE\n", "PROPS\n\nSWOF\n 0 0 1 0 /\nSCHEDULE\n")},
        {{"set", "TABDIMS", "--text", "7 /"}, x(" 1 2*3 5 / two", "7 /")},
        {{"set", "EQLDIMS", "--text", "EQLDIMS\n 4 /\n"}, top, Replaced(included, " 2 /", " 4 /")},
        {{"set", "WELTARG#1[+]", "'P 3' 1* 5 /"}, x("-- second\n", "-- second\n 'P 3' 1*  5 /\n")},
        {{"set", "WELTARG#1[+0]", "P3"}, x("WELTARG\n", "WELTARG\n P3          /\n")},
        {{"rm", "WELTARG#1[P1]"}, x(" 'P1' ORAT 1 /\n", "")},
        {{"rm", "WELTARG#2", "EQLDIMS", "WELTARG#2"}, x("WELTARG\n 'P1' LRAT 3 /\n/\n", ""), "-- inner\r\n"},
        {{"header", "one\ntwo", "--file-tag", "whole"}, "-- Generated [\n--one\n--two\n-- Generated ]\n\n" + top},
        {{"header", "x", "--file", "a.inc", "--file-tag", "whole"},
         top,
         "-- Generated [\r\n--x\r\n-- Generated ]\r\n\r\n" + included},
        {{"tag", "TABDIMS", "DIMENS"},
         Replaced(x("TABDIMS\n", tagged), "DIMENS\n10", "DIMENS" + std::string(31, ' ') + "-- Generated\n10")},
        {{"rm", "DIMENS"}, x("DIMENS\n10 20 30 /\n", "")},
        {{"rm", "DIMENS", "--with-comment"}, x(dimens, "\n")},
        {{"mv", "DIMENS", "--before", "TABDIMS"}, Replaced(x(dimens, ""), "TABDIMS\n", dimens + "TABDIMS\n")},
        {{"mv", "DIMENS", "--after", "EQLDIMS"},
         x(dimens, ""),
         included + "\r\n-- above DIMENS\r\nDIMENS\r\n10 20 30 /\r\n"},
        {{"comment-out", "EQLDIMS"}, top, "-- inner\r\n--EQLDIMS -- Generated\r\n-- 2 /\r\n"},
        {{"suppress", "TABDIMS"}, x("TABDIMS\n 1", "--@@@TABDIMS\n--@@@ 1")},
        {{"unsuppress", "TABDIMS"}, top},
        {{"tag", "TABDIMS"}, x("TABDIMS\n", tagged)},
        {{"untag", "EQLDIMS"}, top, Replaced(included, " -- Generated", "")},
        {{"note", "TABDIMS", "one\ntwo"}, x("TABDIMS\n", "TABDIMS\n-- one\n-- two\n")},
        {{"above", "DIMENS", "new"}, x("-- above DIMENS", "-- new")},
        {{"above", "DIMENS", ""}, x("-- above DIMENS\n", "")},
        {{"above", "RUNSPEC", "-- other\nhead"}, x("-- header", "-- other\n-- head")},
        {{"note", "TABDIMS", ""}, top},
        {{"above", "DIMENS", "above DIMENS"}, top},
        {{"above", "TABDIMS", ""}, top},
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
        // What is shown is what is done.
        EXPECT_EQ(Patched(look.out), test.x + WithoutReturns(test.a));
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
        {{"set", "DIMENS", "--text", "3 /\nOIL\n"}, 1, "Found unexpected keyword name: OIL"},
        {{"set", "DIMENS", "--text", "3 x /\n"}, 1, "x.DATA:7: error: A problem was encountered when parsing"},
        {{"set", "DIMENS", "--text", " \n"}, 2, "The text of the data is expected, and there is none."},
        {{"set", "DIMENS.0", "--text", "3 /"}, 2, "set --text takes a whole keyword, and no item of one."},
        {{"set", "DIMENS.0"}, 2, "A VALUE or --text TEXT is expected; 1* is the default."},
        {{"set", "DIMENS.NU", "1"}, 1, "x.DATA:7: error: DIMENS has no item NU."},
        {{"set", "WELTARG#1", "--text", "-- from elsewhere\nWCONINJE\n 'I1' WATER /\n/"},
         1,
         "x.DATA:12: error: The text begins with WCONINJE, which is another keyword; as part of the data of WELTARG"},
        {{"set", "DIMENS.0", "1", "--text", "3 /"}, 2, "A VALUE or --text is expected, and not both."},
        {{"set", "DIMENS[+]", "1"}, 1, "x.DATA:7: error: DIMENS is no list"},
        {{"set", "WELTARG#1[+7]", "P1"}, 1, "x.DATA:12: error: "},
        {{"set", "WELTARG#1[+]", "P1 99999999999*1"}, 2, "99999999999*1 repeats a value too often for one record."},
        {{"set", "WELTARG#1[+]", "P1 ORAT x"}, 1, "The value \"x\" is not valid. Must be a real number."},
        {{"insert", "--before", "DIMENS", "EQLDIMS\n3 /\nPORO\n"}, 1, "PORO may not stand in the section RUNSPEC."},
        {{"insert", "--before", "DIMENS", "EQLDIMS\n3 x /\n"}, 1, "Item value \"x\" is not valid."},
        {{"insert", "--before", "SCHEDULE", "RPTSCHED\n/\n"}, 1, "RPTSCHED may not stand in the section RUNSPEC."},
        {{"insert", "OIL"}, 2, "Where? --before WHERE, --after WHERE or --section S is expected."},
        {{"insert", "OIL", "--before", "DIMENS", "--section", "GRID"}, 2, "--section goes without another place."},
        {{"insert", "--section", "GRIT", "OIL"}, 2, "'GRIT' is not a section. Nearest: GRID."},
        {{"mv", "DIMENS"}, 2, "Where to? --before WHERE or --after WHERE is expected."},
        {{"mv", "WELTARG#1", "--before", "DIMENS"}, 1, "WELTARG may not stand in the section RUNSPEC."},
        {{"tag"}, 2, "WHERE is expected, or --all for the whole deck."},
        {{"suppress"}, 2, "WHERE is required"},
        {{"rm", "DIMENS", "OIL"}, 1, "There is no OIL in the deck."},
        {{"rm", "WELTARG#1[P3]"}, 1, "There is no record P3 in WELTARG."},
        {{"header", "x"}, 1, "x.DATA: error: A header begins with the tag \"-- Generated\""},
        {{"header", "x", "--file", "b.inc", "--file-tag", "whole"}, 1, "The deck has no file b.inc"},
        {{"header", ""}, 2, "The text of a header is expected, and there is none."},
        {{"resolve", "--set", "A=1"}, 1, "There is no reference to a variable A in the deck."},
        {{"resolve", "--set", "A"}, 2, "NAME=VALUE is expected, a variable and its value."},
        {{"insert", "--before", "DIMENS", "PORO\n3 /"}, 1, "PORO may not stand in the section RUNSPEC."},
        {{"insert", "--before", "DIMENS", "NOSUCHXX"}, 1, "The text begins with NOSUCHXX, which is no keyword."},
        {{"insert", "--before", "DIMENS", "-- only\n\n"}, 2, "The text of a keyword is expected, and there is none."},
        {{"insert", "--before", "DIMENS", "OIL\n3 /"}, 1, "Found unexpected data for keyword 'OIL'"},
        {{"mv", "DIMENS", "--before", "DIMENS"}, 1, "x.DATA:7: error: DIMENS stands there already."},
        {{"rm", "DIMENS.0"}, 1, "DIMENS[0] is no element of a list. To leave an item to its default, set it to 1*."},
        {{"rm", "OIL"}, 1, "There is no OIL in the deck."},
        {{"above", "DIMENS"}, 2, "TEXT is required"},
        {{"above", "DIMENS", "--new"},
         2,
         "above has no option --new. A text that begins with - goes behind the word --."},
        {{"resolve", "--set", "A=1", "A=2"}, 2, "--set: A is given two values."},
        // What would break the deck.
        {{"insert", "--after", "DIMENS", "RUNSPEC"},
         1,
         "x.DATA:7: error: The deck has a section RUNSPEC already, at x.DATA:2."},
        {{"insert", "INCLUDE\n/", "--after", "EQLDIMS"}, 1, "a.inc:2: error: This INCLUDE names no file."},
        {{"set", "INCLUDE.FILE", "x.DATA"}, 1, "Nothing is changed: the edit would bring this error into the deck."},
        {{"set", "INCLUDE.FILE", "."}, 1, "Nothing is changed: the edit would bring this error into the deck."},
        {{"insert", "INCLUDE\n'x.DATA' /", "--after", "EQLDIMS"}, 1, "closes a ring of files: "},
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
    const Launch run{m_folder.Path()};
    EXPECT_EQ(Shell("deckman insert x.DATA --before DIMENS - < /dev/null", run).status, 2);
    EXPECT_EQ(Shell("printf '\\357\\273\\277EQLDIMS\\n 4 /\\n' | deckman insert x.DATA --before DIMENS -", run).status,
              0);
    EXPECT_THAT(m_folder.Read("x.DATA"), HasSubstr("two\nEQLDIMS\n 4 /\n\n-- above"));
}

/// Whose keywords are all generated has nothing to lose by it.
TEST_F(Edit, SaysThatAHeaderMakesAFileAGeneratedOne)
{
    m_folder.Write("a.inc", "EQLDIMS -- Generated\n 2 /\n");
    const Outcome outcome = Run({"header", "x", "--file", "a.inc"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(
        outcome.err,
        "a.inc: note: The header begins with the tag \"-- Generated\": the file reads as generated as a whole.\n");
    EXPECT_EQ(m_folder.Read("a.inc"), "-- Generated [\n--x\n-- Generated ]\n\nEQLDIMS -- Generated\n 2 /\n");
    EXPECT_EQ(m_folder.Read("x.DATA"), top);
}

TEST_F(Edit, ResolvesVariables)
{
    const std::string text = "RUNSPEC\nINCLUDE\n '$WHERE/a.inc' /\nSCHEDULE\nWELTARG -- $RATE\n-- $RATE\n"
                             " $WELL ORAT $RATE / $RATE\n P2 ORAT ${RATE} / -- $RATE\n P3 ORAT $OTHER /\n/\n";
    m_folder.Write("x.DATA", text);
    const Outcome outcome = Run({"resolve", "--set", "RATE=1.5e3", "WHERE=sub", "WELL='P 1'"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(m_folder.Read("x.DATA"),
              "RUNSPEC\nINCLUDE\n 'sub/a.inc' /\nSCHEDULE\nWELTARG -- $RATE\n-- $RATE\n 'P 1' ORAT 1.5e3 / 1.5e3\n"
              " P2 ORAT 1.5e3 / -- $RATE\n P3 ORAT $OTHER /\n/\n");
    struct Case
    {
        std::vector<std::string> values;
        std::string says;
    };
    const std::vector<Case> cases = {
        {{"RATE=abc"}, "x.DATA:5: error: A problem was encountered"},
        {{"WELL=P 1"}, "The value P 1 is not one value; it may need quotes: 'P 1'."},
        {{"RATE=2*3"}, "The value 2*3 is not one value"},
        {{"RATE=2,3"}, "The value 2,3 is not one value"},
        {{"RATE=2\n3"}, "x.DATA:5: error: A value may not go on in a further line."},
        {{"WHERE=sub\nx"}, "x.DATA:2: error: A value may not go on in a further line."},
        {{"WHERE=it's"}, "The value it's holds a quote, and stands in quotes."},
        {{"WELL='" + std::string(140, 'x') + "'"}, "The line would pass column 132"},
        {{"RATE=1", "RATES=2"}, "There is no reference to a variable RATES in the deck."},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.says);
        m_folder.Write("x.DATA", text);
        std::vector<std::string> arguments{"resolve", "--set"};
        arguments.insert(arguments.end(), test.values.begin(), test.values.end());
        const Outcome refused = Run(arguments);
        EXPECT_EQ(refused.status, 1);
        EXPECT_THAT(refused.err, HasSubstr(test.says));
        EXPECT_EQ(m_folder.Read("x.DATA"), text);
    }
}

TEST_F(Edit, TellsWhatItDidAndKeepsTheOldFiles)
{
    const Outcome outcome = Run({"mv", "DIMENS", "--after", "EQLDIMS", "--json", "--backup"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const auto lines = JsonLines(outcome.out);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].dump(), R"({"action":"changed","file":"x.DATA","line":5,"name":"DIMENS",)"
                               R"("old":"\n-- above DIMENS\nDIMENS\n10 20 30 /\n","new":null})");
    EXPECT_EQ(lines[1].dump(), R"({"action":"changed","file":"a.inc","line":4,"name":"DIMENS","old":null,)"
                               R"("new":"\n-- above DIMENS\nDIMENS\n10 20 30 /\n"})");
    EXPECT_EQ(m_folder.Read("x.DATA~"), top);
    EXPECT_EQ(m_folder.Read("a.inc~"), included);
    EXPECT_EQ(m_folder.Listing(), "a.inc a.inc~ x.DATA x.DATA~");
}

/// As `show` gave it, marks and all.
TEST_F(Edit, TakesTheTextOfASuppressedKeyword)
{
    ASSERT_EQ(Run({"suppress", "WELTARG#1"}).status, 0);
    const std::string asleep = m_folder.Read("x.DATA");
    const Launch run{m_folder.Path()};
    EXPECT_EQ(Shell("deckman show x.DATA WELTARG#1 | deckman set x.DATA WELTARG#1 --text -", run).status, 0);
    EXPECT_EQ(m_folder.Read("x.DATA"), asleep);
    const std::string edit = "deckman show x.DATA WELTARG#1 | sed s/ORAT/GRAT/ | deckman set x.DATA WELTARG#1 --text -";
    EXPECT_EQ(Shell(edit, run).err, "");
    EXPECT_EQ(m_folder.Read("x.DATA"), Replaced(asleep, "ORAT", "GRAT"));
}

TEST_F(Edit, WhatIsGeneratedAsAWholeStaysSo)
{
    const std::string whole = "-- Generated\nEQLDIMS\n 2 /\n";
    m_folder.Write("a.inc", whole);
    m_folder.Write("x.DATA", Replaced(top, "TABDIMS", "TABDIMS -- Generated"));
    EXPECT_EQ(Run({"untag", "INCLUDE"}).status, 1);
    EXPECT_EQ(Run({"untag", "EQLDIMS"}).status, 1);
    const Outcome outcome = Run({"untag", "--all"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "a.inc: warning: The file is generated as a whole, and stays so.\n");
    EXPECT_EQ(m_folder.Read("x.DATA"), top);
    EXPECT_EQ(m_folder.Read("a.inc"), whole);
}

/// The file is no file of the deck any more when its edits are told.
TEST_F(Edit, TellsOfAFileWhoseIncludeGoesToo)
{
    const Outcome outcome = Run({"rm", "EQLDIMS", "INCLUDE", "--json"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const auto lines = JsonLines(outcome.out);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].value("file", ""), "x.DATA");
    EXPECT_EQ(lines[1].value("file", ""), "a.inc");
    EXPECT_EQ(m_folder.Read("a.inc"), "-- inner\r\n");
}

TEST_F(Edit, TellsWhatIsDoubtfulInATextThatItIsGiven)
{
    const std::string warning = " warning: Record in keyword EQLDIMS has too many items\n";
    const std::string text = "EQLDIMS\n 1 2 3 4 5 6 7 8 9 /";
    EXPECT_EQ(Run({"set", "EQLDIMS", "--text", text, "--dry-run"}).err, "a.inc:2:" + warning);
    EXPECT_EQ(Run({"insert", "--after", "DIMENS", text, "--strict"}).err, "x.DATA:7:" + warning);
    Restore();
    EXPECT_EQ(Run({"insert", "--after", "EQLDIMS", "EQLDIMS\n 1"}).err, "");
}

/// Nothing is written for an edit that says what the file says already.
TEST_F(Edit, WhatIsSoAlreadyIsNotWritten)
{
    ASSERT_EQ(Run({"note", "TABDIMS", "one\n two"}).status, 0);
    const std::string noted = m_folder.Read("x.DATA");
    EXPECT_THAT(noted, HasSubstr("TABDIMS\n-- one\n-- two\n 1 2*3"));
    const std::vector<std::vector<std::string>> idle = {{"note", "TABDIMS", "one\ntwo", "--backup"},
                                                        {"note", "DIMENS", "", "--backup"},
                                                        {"above", "DIMENS", "above DIMENS", "--backup"},
                                                        {"above", "WELTARG#1", "", "--backup"}};
    for (const std::vector<std::string>& arguments : idle) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(m_folder.Listing(), "a.inc x.DATA") << testing::PrintToString(arguments);
    }
    // A comment goes back as `show` gave it.
    const Outcome shown = Run({"show", "TABDIMS", "--json"});
    EXPECT_THAT(shown.out, HasSubstr("\"comment\":\" one\\n two\""));
    EXPECT_EQ(Run({"note", "TABDIMS", " one\n two"}).status, 0);
    EXPECT_EQ(m_folder.Read("x.DATA"), noted);
    EXPECT_EQ(Run({"note", "TABDIMS", "--", "--one"}).status, 0);
    EXPECT_THAT(m_folder.Read("x.DATA"), HasSubstr("TABDIMS\n-- --one\n 1 2*3"));
}

/// Straight below a keyword without data it would be that one's.
TEST_F(Edit, ACommentAboveIsThatOfTheKeywordBelow)
{
    EXPECT_EQ(Run({"above", "TABDIMS", "sizes"}).err, "");
    EXPECT_THAT(m_folder.Read("x.DATA"), HasSubstr("RUNSPEC\n\n-- sizes\nTABDIMS\n"));
    EXPECT_EQ(Run({"note", "RUNSPEC", ""}).status, 0);
    EXPECT_EQ(Run({"above", "TABDIMS", "others"}).err, "");
    EXPECT_THAT(m_folder.Read("x.DATA"), HasSubstr("RUNSPEC\n\n-- others\nTABDIMS\n"));
}

TEST_F(Edit, SaysWhatWouldDo)
{
    const std::string deck = "SCHEDULE\nSKIP\nWELTARG\n/\nENDSKIP\nUDQ\n DEFINE FUA FOPR /\n/\n";
    m_folder.Write("x.DATA", deck);
    const std::string closed = " What --simulator skips is closed to edits; without that option it is not.";
    EXPECT_THAT(Run({"rm", "SKIP", "--simulator", "100"}).err,
                HasSubstr("x.DATA:2: error: SKIP cannot be removed." + closed));
    EXPECT_THAT(Run({"suppress", "ENDSKIP", "--simulator", "100"}).err,
                HasSubstr("x.DATA:5: error: ENDSKIP cannot be edited here." + closed));
    EXPECT_THAT(Run({"set", "UDQ[+]", "DEFINE FUB FUA + 1"}).err,
                HasSubstr("A single value can not stand for a list or a record. --text sets all data of the keyword."));
    EXPECT_EQ(m_folder.Read("x.DATA"), deck);
}

/// Its keywords stand there once, however often the deck has them.
TEST_F(Edit, AFileThatIsIncludedTwiceIsOne)
{
    const std::string include = "INCLUDE\n'a.inc' /\n";
    m_folder.Write("x.DATA", "SCHEDULE\n" + include + "WELTARG\n/\n" + include + "WELTARG\n/\n");
    m_folder.Write("a.inc", "WELOPEN\n 'P1' OPEN /\n/\n");
    EXPECT_EQ(Run({"set", "WELOPEN[P1].1", "SHUT"}).status, 0);
    EXPECT_EQ(m_folder.Read("a.inc"), "WELOPEN\n 'P1' SHUT /\n/\n");
    EXPECT_EQ(Run({"rm", "WELTARG"}).status, 1);
}

/// A path may be given by an alias, and is written so.
TEST_F(Edit, SetsPathsWithAliases)
{
    m_folder.Write("x.DATA", "RUNSPEC\nPATHS\n 'SUB' 'sub' /\n/\nINCLUDE\n 'a.inc' / first\n");
    const auto file = [&] { return m_folder.Read("x.DATA").substr(39); };
    ASSERT_EQ(file(), " 'a.inc' / first\n");
    EXPECT_EQ(Run({"set", "INCLUDE.FILE", "$SUB/b.inc"}).err, "");
    EXPECT_EQ(file(), " '$SUB/b.inc' / first\n");
    EXPECT_EQ(Run({"set", "INCLUDE.FILE", "'$sub/c d.inc'"}).err, "");
    EXPECT_EQ(file(), " '$sub/c d.inc' / first\n");
    EXPECT_EQ(Run({"set", "INCLUDE.FILE", "$OTHER/b.inc"}).status, 0);
    EXPECT_EQ(file(), " '$OTHER/b.inc' / first\n");
}

TEST_F(Edit, MakesNoFileThatAnIncludeLacks)
{
    const std::string text = "RUNSPEC\nINCLUDE\n'sub/none.inc' /\nTABDIMS\n 1 /\n";
    m_folder.Write("x.DATA", text);
    const Outcome outcome = Run({"set", "TABDIMS.0", "2"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(m_folder.Read("x.DATA"), Replaced(text, " 1 /", " 2 /"));
    EXPECT_EQ(m_folder.Listing(), "a.inc x.DATA");
}

/// A repeated record has no text of its own.
TEST_F(Edit, WritesAfreshWhatHasNoPlaceInTheText)
{
    const std::string text = "RUNSPEC\nPROPS\nDENSITY -- mine\n-- note\n 1 2 3 / one\n-- two\n/\n";
    m_folder.Write("x.DATA", text);
    const Outcome outcome = Run({"set", "DENSITY[1].WATER", "5"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(m_folder.Read("x.DATA"), "RUNSPEC\nPROPS\nDENSITY -- mine\n-- note\n  1 2 3 /\n  1 5 3 /\n");
    EXPECT_THAT(outcome.err, HasSubstr("x.DATA:3: warning: The text of DENSITY was written afresh from its data"));
    // Not where something would be lost by it.
    for (const char* first : {"1 x 3", "1 $A 3"}) {
        const std::string open = Replaced(text, "1 2 3", first);
        m_folder.Write("x.DATA", open);
        EXPECT_EQ(Run({"set", "DENSITY[1].WATER", "5"}).status, 1);
        EXPECT_EQ(m_folder.Read("x.DATA"), open);
    }
}

/// Between the read of the deck and the commit, which waits for the script's end.
TEST_F(Edit, AFileThatChangesMeanwhileIsLeftAlone)
{
    // With --json everything is looked at ahead of the first edit.
    Shell("mkfifo text; (deckman insert x.DATA --before DIMENS - --json < text; echo $? > status) 2> told & "
          "exec 3> text; echo 'EQLDIMS' >&3; sleep 1; echo '-- other' >> x.DATA; echo ' 3 /' >&3; exec 3>&-; wait",
          {m_folder.Path()});
    EXPECT_EQ(m_folder.Read("status"), "3\n");
    EXPECT_THAT(m_folder.Read("told"), HasSubstr("has been changed on disk since it was read."));
    EXPECT_EQ(m_folder.Read("x.DATA"), top + "-- other\n");
    EXPECT_EQ(m_folder.Read("a.inc"), included);
}

TEST_F(Edit, SaysWhenAFileCannotBeWritten)
{
    Launch run{m_folder.Path()};
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
    // A look says so too, behind what it shows; and so it is for a folder.
    for (const char* modes : {"chmod 755 . && chmod 444 a.inc", "chmod 555 . && chmod 666 a.inc"}) {
        ASSERT_EQ(Shell(modes, {m_folder.Path()}).status, 0);
        const Outcome look = Deckman({"set", "x.DATA", "EQLDIMS.0", "3", "--dry-run"}, run);
        EXPECT_EQ(look.status, 3);
        EXPECT_THAT(look.out, HasSubstr("+ 3 /"));
        EXPECT_EQ(look.err, "x.DATA: error: Nothing could be changed: no permission to write\n    a.inc\n");
        EXPECT_EQ(Deckman({"set", "x.DATA", "EQLDIMS.0", "3"}, run).status, 3);
        EXPECT_TRUE(IsAsBefore());
    }
    ASSERT_EQ(Shell("chmod 755 .", {m_folder.Path()}).status, 0);
}

/// A place may be another one in a deck of which a part can't be seen.
TEST_F(Edit, NothingIsChangedInADeckThatCannotBeReadWhole)
{
    Launch run{m_folder.Path()};
    run.unprivileged = true;
    ASSERT_EQ(Shell("chmod 777 . && chmod 666 x.DATA && chmod 000 a.inc", {m_folder.Path()}).status, 0);
    const std::vector<std::vector<std::string>> edits = {{"set", "x.DATA", "DIMENS.0", "3"},
                                                         {"set", "x.DATA", "DIMENS.0", "3", "--dry-run"}};
    for (const std::vector<std::string>& arguments : edits) {
        const Outcome outcome = Deckman(arguments, run);
        EXPECT_EQ(outcome.status, 3);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err,
                    HasSubstr("x.DATA: error: Nothing is changed: not all files of the deck can be read."));
        EXPECT_EQ(m_folder.Read("x.DATA"), top);
        EXPECT_EQ(m_folder.Listing(), "a.inc x.DATA");
    }
}

} // namespace DeckmanTests

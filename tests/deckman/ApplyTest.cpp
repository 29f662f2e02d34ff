#include <random>

#include "tests/deckman/Program.h"

/// deckman apply: scripts of edits.

namespace DeckmanTests {

namespace {

const std::string top = "RUNSPEC\nTABDIMS\n 1 2*3 5 /\n\n-- above DIMENS\nDIMENS\n10 20 30 /\nINCLUDE\n'a.inc' /\n"
                        "SCHEDULE\nWELTARG\n 'P1' ORAT 1 /\n/\nWELTARG\n 'P2' ORAT 2 /\n/\nEND\nWELTARG\n/\n";
const std::string included = "EQLDIMS\n 2 /\n";

class Apply : public testing::Test
{
protected:
    Apply()
    {
        folder.Write("x.DATA", top);
        folder.Write("a.inc", included);
    }

    Outcome Run(const std::string& script, std::vector<std::string> options = {}) const
    {
        folder.Write("script", script);
        options.insert(options.begin(), {"apply", "x.DATA", "script"});
        return Deckman(options, run);
    }
    std::string Deck() const { return folder.Read("x.DATA") + folder.Read("a.inc"); }

    TempDir folder;
    Launch run{folder.Path()};
};

} // namespace

TEST_F(Apply, PlacesAreThoseOfTheDeckAsItWas)
{
    struct Case
    {
        std::string script;
        std::string deck;
    };
    const Case cases[] = {
        // Removed and inserted keywords shift no index, line or number.
        {"rm TABDIMS\ninsert --before @1 'TITLE\nx'\nset @7[P1].VALUE 7\nset x.DATA:16[0].VALUE 8\nset WELTARG#2.0.0 "
         "P9\n",
         Replaced(Replaced(Replaced("TITLE\nx\n" + top, "TABDIMS\n 1 2*3 5 /\n", ""), "'P1' ORAT 1", "'P1' ORAT 7"),
                  "'P2' ORAT 2", "'P9' ORAT 8") +
             included},
        // What is inserted counts behind the others of its name.
        {"insert --after DIMENS <<END\nEQLDIMS\n 4 /\nREGDIMS\n 1 /\nEND\nset EQLDIMS#2.0 5\nset REGDIMS.0 6 # once\n"
         "note 'RUNSPEC/EQLDIMS#2' \"a\\\"b\nc\"\n",
         Replaced(top, "30 /\n", "30 /\nEQLDIMS\n-- a\"b\n-- c\n 5 /\nREGDIMS\n 6 /\n") + included},
        // Edits of one keyword go on from each other; a keyword goes on under its name after a move.
        {"set 'WELTARG#1[+]' 'P3 WRAT 3'\nset WELTARG#1[P3].VALUE 4\nrm WELTARG#1[0]\nmv WELTARG#1 \\\n"
         "  --after WELTARG#2\nset WELTARG#1[P3].QUANTITY LRAT\n",
         Replaced(Replaced(top, "WELTARG\n 'P1' ORAT 1 /\n/\n", ""), "ORAT 2 /\n/\n",
                  "ORAT 2 /\n/\nWELTARG\n P3   LRAT 4 /\n/\n") +
             included},
        // Sections that come to be are known to what follows.
        {"insert --section SOLUTION 'EQUIL\n 1 /'\ninsert --before EQUIL 'RPTSOL\n/'\ninsert --section PROPS SWOF\n",
         Replaced(top, "SCHEDULE\n", "PROPS\n\nSWOF\n\nSOLUTION\n\nRPTSOL\n/\nEQUIL\n 1 /\nSCHEDULE\n") + included},
        {"comment-out --all @10\nabove TABDIMS '-- new'\nheader 'top' \ntag TABDIMS DIMENS\n",
         "-- Generated [\n--top\n-- Generated ]\n\n" +
             Replaced(
                 Replaced(Replaced(top, "TABDIMS\n", "\n-- new\nTABDIMS" + std::string(30, ' ') + "-- Generated\n"),
                          "DIMENS\n10", "DIMENS" + std::string(31, ' ') + "-- Generated\n10"),
                 "END\nWELTARG\n/\n", "END\n--WELTARG\n--/\n") +
             included},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.script);
        folder.Write("x.DATA", top);
        folder.Write("a.inc", included);
        const Outcome look = Run(test.script, {"--dry-run", "--file-tag", "whole"});
        EXPECT_EQ(look.status, 0) << look.err;
        EXPECT_EQ(Deck(), top + included);
        folder.Write("diff", look.out);
        const Outcome outcome = Run(test.script, {"--file-tag", "whole"});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, testing::AnyOf("", testing::StartsWith("x.DATA:1: note: RUNSPEC has no data")));
        EXPECT_EQ(Deck(), test.deck);
        folder.Write("x.DATA", top);
        folder.Write("a.inc", included);
        EXPECT_EQ(Shell("patch -s -f -p0 --no-backup-if-mismatch < diff", run).out, "");
        EXPECT_EQ(Deck(), test.deck) << look.out;
    }
}

TEST_F(Apply, WhatWasEditedInAFileThatLeavesTheDeckIsKeptAndShown)
{
    const std::string script = "set EQLDIMS.0 7\nrm INCLUDE\nabove DIMENS new\n";
    EXPECT_THAT(Run(script, {"--dry-run"}).out, HasSubstr("--- a.inc\n+++ a.inc\n@@ -1,2 +1,2 @@\n"));
    EXPECT_EQ(Run(script, {"--backup"}).status, 0);
    EXPECT_EQ(folder.Read("a.inc"), "EQLDIMS\n 7 /\n");
    EXPECT_EQ(folder.Read("a.inc~"), included);
    EXPECT_EQ(folder.Read("x.DATA~"), top);
}

TEST_F(Apply, ALookShowsThatUnknownWordsStay)
{
    const std::string unknown = "\nNOSUCH 1 2\n 3\n-- above\n";
    folder.Write("x.DATA", "RUNSPEC\nSCHEDULE\nDRSDT\n 2 /\n" + unknown + "NOSIM\n" + unknown + "TUNING\n/\n/\n/\n");
    const std::string before = folder.Read("x.DATA");
    for (const std::string edit : {"rm DRSDT", "mv NOSIM --before DRSDT", "insert --before NOSIM 'DRSDT\n 3 /'",
                                   "above TUNING new", "insert --after DRSDT 'DRSDT\n 3 /'"})
    {
        SCOPED_TRACE(edit);
        folder.Write("diff", Run(edit + "\n", {"--dry-run"}).out);
        EXPECT_EQ(Run(edit + "\n").status, 0);
        const std::string made = folder.Read("x.DATA");
        EXPECT_THAT(made, HasSubstr("NOSUCH"));
        folder.Write("x.DATA", before);
        EXPECT_EQ(Shell("patch -s -f -p0 --no-backup-if-mismatch < diff", run).out, "");
        EXPECT_EQ(folder.Read("x.DATA"), made);
        folder.Write("x.DATA", before);
    }
}

TEST_F(Apply, ALookShowsThatBlankLinesStay)
{
    folder.Write("x.DATA", "RUNSPEC\n\n-- a\n\n-- b\n\nDIMENS\n 1 2 3 /\n");
    EXPECT_EQ(Run("above DIMENS ''\n", {"--dry-run"}).out,
              "--- x.DATA\n+++ x.DATA\n@@ -3,4 +3 @@\n--- a\n-\n--- b\n \n");
    EXPECT_EQ(Run("above DIMENS ''\n").status, 0);
    EXPECT_EQ(folder.Read("x.DATA"), "RUNSPEC\n\n\nDIMENS\n 1 2 3 /\n");
}

TEST_F(Apply, NamesMayLookLikeOptions)
{
    std::filesystem::rename(folder.Path("x.DATA"), folder.Path("-x a.DATA"));
    folder.Write("-the script", "above DIMENS '-- its cells'\nrm a.inc:1\n");
    const Outcome outcome = Deckman({"apply", "-x a.DATA", "-the script"}, run);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(folder.Read("-x a.DATA"), Replaced(top, "-- above DIMENS", "-- its cells"));
    EXPECT_THAT(Deckman({"rm", "-x a.DATA", "-no place"}, run).err, HasSubstr("'-no place' is no place in a deck."));
}

TEST_F(Apply, OneWrongLineStopsAll)
{
    std::string script;
    for (int line = 1; line < 900; ++line)
        script += "set TABDIMS.0 " + std::to_string(line) + "\n";
    struct Case
    {
        std::string line;
        int status;
        std::string says;
    };
    const Case cases[] = {
        {"set TABDIMS.0 x", 1, "script:900: error: x.DATA:2: The value \"x\" is not valid. Must be a whole number."},
        {"set TABDIM.0 1", 1, "script:900: error: There is no TABDIM in the deck."},
        {"set TABDIMS.0", 2, "script:900: error: set: A VALUE or --text TEXT is expected; 1* is the default."},
        {"sett TABDIMS.0 1", 2, "script:900: error: sett is no edit. Nearest: set."},
        {"rename x.DATA=y.DATA", 2, "script:900: error: rename is no edit."},
        {"set TABDIMS.0 1 --dry-run", 2,
         "script:900: error: set has no option --dry-run. It is one of apply, and holds for all lines."},
        {"insert --after TABDIMS -", 2, "script:900: error: - stands for standard input"},
        {"insert --after TABDIMS <<END\nOIL\n", 2, "script:900: error: The text behind <<END is never ended"},
        {"insert --after TABDIMS 'OIL\n", 2, "script:900: error: What begins with ' here is never ended."},
        {"insert --after TABDIMS 'PORO\n 1 /'", 1,
         "script:900: error: x.DATA:2: PORO may not stand in the section RUNSPEC."},
        {"insert --after TABDIMS 'OIL\n 1 /'", 1, "script:900: error: Found unexpected data for keyword 'OIL'"},
        {"set WELTARG[P1].VALUE 1", 1, "WELTARG#1 is the first"},
        {"set DIMENS --text '-- sizes\n 1 2 3 /'\nnote DIMENS other", 1,
         "script:902: error: x.DATA:6: The text that was set for DIMENS begins with its comment: note it ahead of "
         "that."},
        {"insert --before DIMENS 'TITLE\nx'\nnote TITLE y", 1,
         "What stands below TITLE is its text, and no comment; above puts one above it."},
        {"mv DIMENS --before DIMENS", 1, "script:900: error: x.DATA:6: DIMENS stands there already"},
        {"rm DIMENS\nrm DIMENS", 1, "script:901: error: DIMENS: Line 900 has removed this keyword."},
        {"insert --after DIMENS OIL\nrm OIL\nabove OIL x", 1,
         "script:902: error: OIL: Line 901 has removed this keyword."},
        {"set WELTARG[P1].VALUE 1 --at 2030", 2, "script:900: error: '2030' is no date."},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.line);
        const Outcome outcome = Run(script + test.line);
        EXPECT_EQ(outcome.status, test.status);
        EXPECT_THAT(outcome.err, HasSubstr(test.says));
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(Deck(), top + included);
    }
    EXPECT_EQ(Deckman({"apply", "x.DATA", "none"}, run).status, 3);
    const Outcome empty = Shell("deckman apply x.DATA - < /dev/null", run);
    EXPECT_EQ(empty.status, 2);
    EXPECT_EQ(empty.err, "standard input: error: A script of edits is expected, and there is none.\n");
    EXPECT_EQ(Run("# nothing\n\n").status, 0);
    EXPECT_EQ(Shell("echo 'set TABDIMS.0 9' | deckman apply x.DATA - --backup", run).status, 0);
    EXPECT_EQ(folder.Read("x.DATA"), Replaced(top, " 1 2*3", " 9 2*3"));
    EXPECT_EQ(folder.Read("x.DATA~"), top);
}

/// Any edits in any order, in one commit or each with its own.
TEST_F(Apply, OneScriptDoesWhatItsLinesDo)
{
    std::mt19937 random(4);
    const auto below = [&random](int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); };
    for (int round = 0; round < 12; ++round) {
        // Keywords that stay, each once, so that all places keep their meaning. A section keyword would take the
        // comment above the next for its own, where there were no data between.
        std::string text = "RUNSPEC\nSCHEDULE\nRPTRST\n 'BASIC=2' /\n";
        const char* const names[] = {"WELTARG", "WCONPROD", "WCONINJE", "WELOPEN", "TUNING", "RPTSCHED"};
        for (const char* name : names) {
            if (below(2) == 0) text += "\n-- above " + std::string(name) + "\n";
            text += std::string(name) + "\n" + (name[0] == 'W' ? " 'P1' /\n 'P2' / two\n/\n" : " /\n");
        }
        std::vector<std::string> lines;
        for (int i = 0; i < 6; ++i) {
            const std::string name = names[below(6)];
            const std::string other = names[below(6)];
            switch (below(6)) {
            case 0:
                if (name[0] == 'W') lines.push_back("set '" + name + "[P1].0' 'Q" + std::to_string(i) + "'");
                break;
            case 1:
                lines.push_back("note " + name + " n" + std::to_string(i));
                break;
            case 2:
                lines.push_back("above " + name + " a" + std::to_string(i));
                break;
            case 3:
                if (name != other) lines.push_back("mv " + name + " --before " + other);
                break;
            case 4:
                lines.push_back("insert --after " + name + " '-- new\nDRSDT\n " + std::to_string(i) + " /'");
                break;
            default:
                lines.push_back("suppress " + name);
            }
        }
        folder.Write("x.DATA", text);
        std::string script;
        for (const std::string& line : lines)
            script += line + "\n";
        SCOPED_TRACE(text + script);
        const Outcome whole = Run(script);
        const std::string made = folder.Read("x.DATA");
        folder.Write("x.DATA", text);
        bool allDone = true;
        for (const std::string& line : lines)
            allDone = allDone && Run(line).status == 0;
        EXPECT_EQ(whole.status == 0, allDone) << whole.err;
        EXPECT_EQ(made, allDone ? folder.Read("x.DATA") : text);
    }
}

} // namespace DeckmanTests

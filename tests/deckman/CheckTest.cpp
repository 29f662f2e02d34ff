#include "tests/deckman/Program.h"
#include "tests/support/TempDir.h"

#include <algorithm>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// What `check` says of healthy decks (nothing), and of decks with one fault each.

namespace DeckmanTests {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using TestSupport::TempDir;

using Files = std::vector<std::pair<std::string, std::string>>;

Launch In(const TempDir& folder)
{
    std::filesystem::permissions(folder.Path(), std::filesystem::perms::others_all | std::filesystem::perms::owner_all);
    Launch run;
    run.directory = folder.Path();
    return run;
}

/// The findings on a deck whose top file is TOP.DATA, as "file:line keyword severity: text".
std::vector<std::string> Findings(const Files& files, const std::vector<std::string>& options = {}, int status = -1)
{
    const TempDir folder;
    for (const auto& [name, text] : files)
        folder.Write(name, text);
    std::vector<std::string> arguments{"check", "TOP.DATA", "--json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Outcome outcome = Deckman(arguments, In(folder));
    EXPECT_THAT(outcome.err, IsEmpty());
    std::vector<std::string> findings;
    bool hasErrors = false;
    for (const auto& line : JsonLines(outcome.out)) {
        const auto shown = [&line](const char* field) {
            return line.at(field).is_string() ? line.at(field).get<std::string>() : line.at(field).dump();
        };
        hasErrors = hasErrors || shown("severity") == "error";
        findings.push_back(shown("file") + ":" + shown("line") + " " + shown("keyword") + " " + shown("severity") +
                           ": " + shown("text"));
    }
    EXPECT_EQ(outcome.status, status >= 0 ? status : hasErrors ? 1 : 0);
    return findings;
}

const std::string longLine = []() {
    std::string line(130, ' ');
    return line.append("1.0 1.0\n");
}();

} // namespace

TEST(Check, IsQuietOnHealthyDecks)
{
    const std::string decks = DECK_SOURCE_DIR "/examples/decks/";
    for (const char* deck : {"field/FIELD.DATA", "single/SKERROW.DATA"}) {
        const Outcome outcome = Deckman({"check", decks + deck});
        EXPECT_EQ(outcome.status, 0) << deck;
        EXPECT_THAT(outcome.out,
                    testing::ContainsRegex("^[0-9]+ keywords in [0-9]+ files?: no errors, no warnings.\n$"));
        EXPECT_THAT(outcome.err, IsEmpty());
        for (const char* simulator : {"100", "300"}) {
            const Outcome other = Deckman({"check", decks + deck, "--json", "--all", "--simulator", simulator});
            EXPECT_EQ(other.status, 0) << deck;
        }
    }

    const std::pair<const char*, Files> cases[] = {
        {"a keyword that may lack data ends a file",
         {{"TOP.DATA", "RUNSPEC\nINCLUDE\n'a.inc' /\nGRID\n"}, {"a.inc", "BRINE\n"}}},
        {"sizes that nothing in the deck gives", {{"TOP.DATA", "RUNSPEC\nPROPS\nSWOF\n0.1 0 1 0\n1 1 0 0 /\n"}}},
        {"text behind the end", {{"TOP.DATA", "RUNSPEC\nOIL\nEND\nNOSUCH 1 2\nTABDIMS\nx /\nINCLUDE\n'none' /\n"}}},
        {"text behind the end of included files",
         {{"TOP.DATA", "RUNSPEC\nINCLUDE\n'a.inc' /\nNOSUCH 1\nTABDIMS\nx /\n"},
          {"a.inc", "OIL\nINCLUDE\n'b.inc' /\nEND\nNOSUCH 1\n"},
          {"b.inc", "GAS\nENDINC\nNOSUCH 1\nTABDIMS\nx /\n"}}},
        {"skipped text",
         {{"TOP.DATA", "RUNSPEC\nSKIP\nNOSUCH 1\nTABDIMS\nx /\nSKIP100\nENDSKIP\nTABDIMS\ny /\n"
                       "ENDSKIP\nOIL\n"}}},
        {"a variable", {{"TOP.DATA", "RUNSPEC\nSCHEDULE\nTSTEP\n$STEP /\n"}}},
        {"a long title, and long comments",
         {{"TOP.DATA", "RUNSPEC\nTITLE\n" + std::string(200, 't') + "\nTABDIMS\n1 / " + std::string(200, '-') + "\n"}}},
        {"quantities of the user's in the place of numbers",
         {{"TOP.DATA", "RUNSPEC\nSCHEDULE\nWCONPROD\nP OPEN ORAT fumax /\n/\nUDQ\nASSIGN FUMAX 100 /\n/\n"
                       "WCONPROD\nQ OPEN ORAT FUMAX 4* FUMAX /\n/\n"}}},
        {"apostrophes in comments",
         {{"TOP.DATA", "RUNSPEC\nTABDIMS --it's\n1 --it's\n 2 / --it's\nSCHEDULE\nUDQ\n"
                       "DEFINE FUX FOPR + 1 / --it's\n/\n"}}},
        {"indented words that are data", {{"TOP.DATA", "RUNSPEC\nTITLE\n  GRID\nGRID\nEQUALS\n  PORO 0.2 /\n/\n"}}},
    };
    for (const auto& [what, files] : cases)
        EXPECT_THAT(Findings(files), IsEmpty()) << what;
}

TEST(Check, NamesWhatIsWrongWithItsPlace)
{
    const struct
    {
        Files files;
        std::vector<std::string> findings;
        std::vector<std::string> options = {};
    } cases[] = {
        // What the scan says.
        {{{"TOP.DATA", "RUNSPEC\nOIL\n\nNOSUCH 1 2\nGAS\n"}},
         {"TOP.DATA:4 NOSUCH warning: Keyword NOSUCH is not recognized."}},
        {{{"TOP.DATA", "RUNSPEC\nSCHEDULE\nPORO\n0.1 /\n"}},
         {"TOP.DATA:3 PORO warning: Keyword PORO is not valid for section SCHEDULE"}},
        {{{"TOP.DATA", "RUNSPEC\nGRID\nINCLUDE\n'a.inc' /\nPROPS\nGRID\n"}, {"a.inc", "PORO\n 1*0.2 /\nGRID\n"}},
         {"a.inc:3 GRID warning: The following section keywords occur more than once in the deck: GRID, GRID."}},
        {{{"TOP.DATA", "RUNSPEC\nSCHEDULE\nTSTEP\n1 /\n  WCONPROD\n P OPEN ORAT 1 /\n/\n"}},
         {"TOP.DATA:5 TSTEP warning: Possible indented keyword: WCONPROD will be ignored."}},
        {{{"TOP.DATA", "RUNSPEC\nPROPS\nGRID\n"}}, {"TOP.DATA:3 GRID warning: The section GRID stands behind PROPS."}},
        {{{"TOP.DATA", "-- nothing\n"}}, {"TOP.DATA:null null warning: There are no keywords in this deck."}},
        {{{"TOP.DATA", "RUNSPEC\nGRID\nGDFILE\n'geo' /\nGDFILE\n'there' /\n"}, {"there.FEGRID", ""}},
         {"TOP.DATA:3 GDFILE warning: The grid file geo of this GDFILE does not exist."}},
        // What it takes in silence.
        {{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'sub/gone.inc' /\n"}},
         {"TOP.DATA:2 INCLUDE warning: The file sub/gone.inc of this INCLUDE does not exist."}},
        {{{"TOP.DATA", "RUNSPEC\nINCLUDE\n\"sub/a.inc\" /\nINCLUDE\nup/a.inc /\nINCLUDE\ngone.inc / here\n"}},
         {"TOP.DATA:2 INCLUDE warning: The file \"sub of this INCLUDE does not exist. Its name needs single quotes.",
          "TOP.DATA:4 INCLUDE warning: The file up of this INCLUDE does not exist. Its name needs single quotes.",
          "TOP.DATA:6 INCLUDE warning: The file gone.inc of this INCLUDE does not exist."}},
        {{{"TOP.DATA", "RUNSPEC\n\nINCLUDE\n/\n"}}, {"TOP.DATA:3 INCLUDE error: This INCLUDE names no file."}},
        {{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'$DIR/a.inc' /\n"}},
         {"TOP.DATA:2 INCLUDE warning: The INCLUDE path \"$DIR/a.inc\" holds a name that nothing gives a value."}},
        {{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'TOP.DATA' /\n"}},
         {"TOP.DATA:2 INCLUDE error: The INCLUDE path \"TOP.DATA\" closes a ring of files: TOP.DATA -> TOP.DATA."}},
        // Data, in the file and on the line where they stand.
        {{{"TOP.DATA", "RUNSPEC\nSCHEDULE\nUDQ\nASSIGN FUMAX 100 /\n/\nWCONPROD\nQ OPEN ORAT FUMIN /\n/\n"}},
         {"TOP.DATA:7 WCONPROD error: A problem was encountered when parsing the keyword WCONPROD. Item value "
          "\"FUMIN\" is not valid. Must be a real number."}},
        {{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'sub/a.inc' /\n"}, {"sub/a.inc", "-- one\nTABDIMS\n-- two\n1 x /\n"}},
         {"sub/a.inc:4 TABDIMS error: A problem was encountered when parsing the keyword TABDIMS. Item value \"x\" is "
          "not valid. Must be a whole number."}},
        {{{"TOP.DATA", "RUNSPEC\nTABDIMS\n1 1\n\nOIL\n"}},
         {"TOP.DATA:3 TABDIMS warning: Record in keyword TABDIMS not properly terminated"}},
        // A size that a later keyword gives: its faults are its own.
        {{{"TOP.DATA", "PROPS\nSWOF\n0.1 0 1 0\n1 1 0 0 /\nRUNSPEC\nTABDIMS\nx /\n"}},
         {"TOP.DATA:5 RUNSPEC warning: The section RUNSPEC stands behind PROPS.",
          "TOP.DATA:7 TABDIMS error: A problem was encountered when parsing the keyword TABDIMS. Item value \"x\" is "
          "not "
          "valid. Must be a whole number."}},
        // A read that ends by an exception ends with its keyword.
        {{{"TOP.DATA", "RUNSPEC\nCO2SOL\nGASSOL\n2 /\nPROPS\nSOLUBILT\n50 0.01 /\nDENSITY\nx 1 1 /\n"}},
         {"TOP.DATA:6 SOLUBILT error: Context::EvalSpecial: GASSOL cannot be used with CO2SOL & H2SOL keywords",
          "TOP.DATA:9 DENSITY error: A problem was encountered when parsing the keyword DENSITY. Item value \"x\" is "
          "not "
          "valid. Must be a real number."}},
        // What a simulator skips is not checked for it; for all others it is.
        {{{"TOP.DATA", "RUNSPEC\nOIL\nSKIP100\nNOSUCH 1\nPORO\nx /\nENDSKIP\nCOMPS\n3 /\n"}},
         {"TOP.DATA:8 COMPS warning: Keyword COMPS is not known to the simulator 100."},
         {"--simulator", "100"}},
        {{{"TOP.DATA", "RUNSPEC\nOIL\nSKIP100\nTABDIMS\nx /\nENDSKIP\n"}},
         {"TOP.DATA:5 TABDIMS error: A problem was encountered when parsing the keyword TABDIMS. Item value \"x\" is "
          "not "
          "valid. Must be a whole number."}},
        // Behind the end on demand only.
        {{{"TOP.DATA", "RUNSPEC\nOIL\nEND\nTABDIMS\nx /\n"}},
         {"TOP.DATA:5 TABDIMS error: A problem was encountered when parsing the keyword TABDIMS. Item value \"x\" is "
          "not "
          "valid. Must be a whole number."},
         {"--all"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Findings(c.files, c.options), c.findings) << c.files.front().second;
}

TEST(Check, GroupsRepeatsAndSumsUp)
{
    const TempDir folder;
    std::string wells;
    for (int i = 0; i < 30; ++i)
        wells += "WELOPEN\n'A' OPEN x /\n/\n";
    std::string longLines;
    for (int i = 0; i < 25; ++i)
        longLines += longLine;
    folder.Write("TOP.DATA",
                 "RUNSPEC\nINCLUDE\n'none.inc' /\nGRID\nPORO\n" + longLines + "/\nSCHEDULE\nINCLUDE\n'w.inc' /\n");
    folder.Write("w.inc", wells);
    const Outcome outcome = Deckman({"check", "TOP.DATA"}, In(folder));
    const std::string tooLong =
        "Line exceeds the maximum VELDANE keyword line length of 132 characters.  Anything beyond "
        "132 characters will be ignored.";
    const std::string notValid =
        "error: A problem was encountered when parsing the keyword WELOPEN. Item value \"x\" is not valid. Must be a "
        "whole number.\n";
    EXPECT_EQ(outcome.out, "TOP.DATA:2: warning: The file none.inc of this INCLUDE does not exist.\n"
                           "TOP.DATA:6: warning: " +
                               tooLong +
                               " (PORO)\n"
                               "TOP.DATA:7: warning: " +
                               tooLong +
                               " (PORO)\n"
                               "TOP.DATA:8: warning: " +
                               tooLong +
                               " (PORO)\n"
                               "    ... and 7 more\n"
                               "TOP.DATA:16: warning: 15 more messages of this kind in keyword PORO: " +
                               tooLong +
                               "\n"
                               "w.inc:2: " +
                               notValid + "w.inc:5: " + notValid + "w.inc:8: " + notValid +
                               "    ... and 27 more\n"
                               "36 keywords in 2 files: 30 errors, 12 warnings.\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, IsEmpty());
    EXPECT_EQ(JsonLines(Deckman({"check", "TOP.DATA", "--json"}, In(folder)).out).size(), 42u);
}

TEST(Check, TellsOnceWhatEachWalkSays)
{
    const TempDir folder;
    folder.Write("TOP.DATA", "RUNSPEC\nINCLUDE\n'' /\nOIL\n");
    const Outcome outcome = Deckman({"check", "TOP.DATA"}, In(folder));
    EXPECT_THAT(outcome.out, HasSubstr("TOP.DATA:2: error: The INCLUDE path \"\""));
    EXPECT_THAT(outcome.out, HasSubstr("3 keywords in 1 file: 1 error, no warnings.\n"));
    EXPECT_THAT(outcome.err, IsEmpty());
}

TEST(Check, TellsWhatIsCappedInTheLastKeywordToo)
{
    std::string lines;
    for (int i = 0; i < 12; ++i)
        lines += longLine;
    EXPECT_THAT(Findings({{"TOP.DATA", "RUNSPEC\nGRID\nPORO\n" + lines + "/\n"}}).back(),
                HasSubstr(" PORO warning: 2 more messages of this kind in keyword PORO: Line exceeds"));
}

TEST(Check, StatusTellsErrorsFromWarningsAndFileTrouble)
{
    const std::string warning = "RUNSPEC\nINCLUDE\n'none.inc' /\n";
    EXPECT_THAT(Findings({{"TOP.DATA", warning}}, {}, 0), testing::SizeIs(1));
    EXPECT_THAT(Findings({{"TOP.DATA", warning}}, {"--strict"}, 1), testing::SizeIs(1));
    EXPECT_EQ(Deckman({"check", "no such file"}).status, 3);
    EXPECT_EQ(Deckman({"check"}).status, 2);

    const TempDir folder;
    folder.Write("TOP.DATA", "RUNSPEC\nINCLUDE\n'closed.inc' /\n");
    folder.Write("closed.inc", "OIL\n");
    std::filesystem::permissions(folder.Path("closed.inc"), std::filesystem::perms::none);
    Launch run = In(folder);
    run.unprivileged = true;
    const Outcome outcome = Deckman({"check", "TOP.DATA", "--json"}, run);
    EXPECT_EQ(outcome.status, 3);
    const auto lines = JsonLines(outcome.out);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].at("file"), "closed.inc");
    EXPECT_TRUE(lines[0].at("line").is_null());
}

} // namespace DeckmanTests

#include "tests/deckman/Program.h"

/// What `check` says of healthy decks (nothing), and of decks with one fault each.

namespace DeckmanTests {

namespace {

using Files = std::vector<std::pair<std::string, std::string>>;

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
        {"multipliers between a region and all others",
         {{"TOP.DATA", "RUNSPEC\nGRID\nMULTREGT\n 1* 2 0 /\n/ done\n\n-- next\nMULTREGT\n/\nPORO\n 0.1 /\n"}}},
        {"rock by regions of saturation",
         {{"TOP.DATA", "RUNSPEC\nTABDIMS\n 2 /\nPROPS\nROCKOPTS\n 2* SATNUM /\nROCK\n 1 2 /\n 1 3 /\n"}}},
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

/// Decks as people write them: a field with its history, a well of many segments in a refined grid, actions and
/// quantities of the user's own, one in lower case with tabs, one in folders by Windows paths and aliases, and one of
/// components.
TEST(Check, IsQuietOnDecksInManyStyles)
{
    const std::string decks = DECK_SOURCE_DIR "/tests/deckman/decks/";
    const std::pair<const char*, const char*> cases[] = {
        {"LOMVI.DATA", "173 keywords in 1 file"},           {"HORIZONTAL.DATA", "104 keywords in 1 file"},
        {"ACTIONS.DATA", "82 keywords in 1 file"},          {"lower/lower.data", "66 keywords in 2 files"},
        {"torne/TORNE_E7.DATA", "192 keywords in 6 files"}, {"condensate/CONDENSATE.DATA", "121 keywords in 5 files"},
    };
    for (const auto& [deck, counts] : cases) {
        const Outcome outcome = Deckman({"check", decks + deck, "--strict"});
        EXPECT_EQ(outcome.out, std::string(counts) + ": no errors, no warnings.\n") << deck;
        EXPECT_EQ(outcome.status, 0) << deck;
        for (const char* verb : {"ls", "tree", "sections", "scopes", "dates", "sort"})
            EXPECT_THAT(Deckman({verb, decks + deck, verb == std::string("sort") ? "--dry-run" : "--json"}).err,
                        IsEmpty())
                << verb << ' ' << deck;
    }
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
        {{{"TOP.DATA", "RUNSPEC\nDIMENZ\n 1 2 3 /\nWATER\n"}},
         {"TOP.DATA:2 DIMENZ warning: Keyword DIMENZ is not recognized. Nearest: DIMENS."}},
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
          "\"FUMIN\" is not valid. Must be a real number. It stands for ORAT. No UDQ defines FUMIN."}},
        {{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'sub/a.inc' /\n"}, {"sub/a.inc", "-- one\nTABDIMS\n-- two\n1 x /\n"}},
         {"sub/a.inc:4 TABDIMS error: A problem was encountered when parsing the keyword TABDIMS. Item value \"x\" is "
          "not valid. Must be a whole number. It stands for NTPVT."}},
        {{{"TOP.DATA", "RUNSPEC\nTABDIMS\n1 1\n\nOIL\n"}},
         {"TOP.DATA:3 TABDIMS warning: Record in keyword TABDIMS not properly terminated"}},
        // A size that a later keyword gives: its faults are its own.
        {{{"TOP.DATA", "PROPS\nSWOF\n0.1 0 1 0\n1 1 0 0 /\nRUNSPEC\nTABDIMS\nx /\n"}},
         {"TOP.DATA:5 RUNSPEC warning: The section RUNSPEC stands behind PROPS.",
          "TOP.DATA:7 TABDIMS error: A problem was encountered when parsing the keyword TABDIMS. Item value \"x\" is "
          "not valid. Must be a whole number. It stands for NTSFUN."}},
        // A read that ends by an exception ends with its keyword.
        {{{"TOP.DATA", "RUNSPEC\nCO2SOL\nGASSOL\n2 /\nPROPS\nSOLUBILT\n50 0.01 /\nDENSITY\nx 1 1 /\n"}},
         {"TOP.DATA:6 SOLUBILT error: Context::EvalSpecial: GASSOL cannot be used with CO2SOL & H2SOL keywords",
          "TOP.DATA:9 DENSITY error: A problem was encountered when parsing the keyword DENSITY. Item value \"x\" is "
          "not valid. Must be a real number. It stands for OIL."}},
        // What a simulator skips is not checked for it; for all others it is.
        {{{"TOP.DATA", "RUNSPEC\nOIL\nSKIP100\nNOSUCH 1\nPORO\nx /\nENDSKIP\nCOMPS\n3 /\n"}},
         {"TOP.DATA:8 COMPS warning: Keyword COMPS is not known to the simulator 100."},
         {"--simulator", "100"}},
        {{{"TOP.DATA", "RUNSPEC\nOIL\nSKIP100\nTABDIMS\nx /\nENDSKIP\n"}},
         {"TOP.DATA:5 TABDIMS error: A problem was encountered when parsing the keyword TABDIMS. Item value \"x\" is "
          "not valid. Must be a whole number. It stands for NTSFUN."}},
        // Behind the end on demand only.
        {{{"TOP.DATA", "RUNSPEC\nOIL\nEND\nTABDIMS\nx /\n"}},
         {"TOP.DATA:5 TABDIMS error: A problem was encountered when parsing the keyword TABDIMS. Item value \"x\" is "
          "not valid. Must be a whole number. It stands for NTSFUN."},
         {"--all"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Findings(c.files, c.options), c.findings) << c.files.front().second;
}

/// The findings on a deck of these lines, each as "line severity: text".
std::vector<std::string> FindingsOn(const std::string& text)
{
    std::vector<std::string> findings = Findings({{"TOP.DATA", text}});
    for (std::string& finding : findings) {
        finding.erase(0, finding.find(':') + 1);
        const std::size_t keyword = finding.find(' ');
        finding.erase(keyword, finding.find(' ', keyword + 1) - keyword);
    }
    return findings;
}

TEST(Check, ArraysHaveTheSizesOfTheGrid)
{
    const std::string grid = "RUNSPEC\nDIMENS\n 4 3 2 /\nGRID\n";
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"PORO\n 24*0.2 /\nTOPS\n 12*2000 /\nDXV\n 4*9 /\nZCORN\n 192*1 /\nCOORD\n 120*0 /\n", {}},
        {"PORO\n 23*0.2 /\n", {"5 error: PORO has 23 values, and the grid has 24 cells (4 x 3 x 2)."}},
        {"PORO\n 12*0.2 1* 12*0.1 /\n", {"5 error: PORO has 25 values, and the grid has 24 cells (4 x 3 x 2)."}},
        {"TOPS\n 11*2000 /\n", {"5 error: TOPS has 11 values, and the grid has 12 columns (4 x 3 x 2)."}},
        {"DYV\n 4*9 /\n", {"5 error: DYV has 4 values, and DIMENS (NY) asks for 3."}},
        {"COORD\n 119*0 /\n", {"5 error: COORD has 119 values, and the grid has 20 lines of six numbers (4 x 3 x 2)."}},
        // In a box, up to its end or that of the section.
        {"BOX\n 1 2 2* 1 1 /\nPORO\n 6*0.2 /\nENDBOX\nNTG\n 24*1 /\n", {}},
        {"BOX\n 1 2 2* 1 1 /\nPORO\n 24*0.2 /\n",
         {"7 error: PORO has 24 values, and the box has 6 cells (2 x 3 x 1)."}},
        {"BOX\n 1 2 1 1 1 1 /\nPROPS\nSWL\n 24*0.2 /\n", {}},
        // In a refinement.
        {"CARFIN\n L1 1 1 1 1 1 1 2 2 1 /\nPORO\n 4*0.2 /\nENDFIN\nPORO\n 24*1 /\nREFINE\n L1 /\nNTG\n 3*1 /\nENDFIN\n",
         {"14 error: NTG has 3 values, and the refinement L1 has 4 cells (2 x 2 x 1)."}},
        {"RADFIN\n R1 1 1 1 2 4 4 2 /\nPORO\n 3*0.2 /\nENDFIN\n", {}},
        // What can't be read is told, and what follows from that is not.
        {"PORO\n 23*0.2 0.l /\n", {"6 error: \"0.l\" can not be converted into double"}},
        {"PORO\n 24*0.2 0.3\n", {"6 warning: List in keyword PORO is not properly terminated"}},
    };
    for (const auto& [text, findings] : cases)
        EXPECT_EQ(FindingsOn(grid + text), findings) << text;
    EXPECT_EQ(
        FindingsOn("RUNSPEC\nCOMPS\n 3 /\nTABDIMS\n 8* 2 /\nPROPS\nMW\n 16 30 /\n 16 30 44 /\nTCRIT\n 3*300 /\n/\n"),
        (std::vector<std::string>{"7 error: MW has 2 values, and the number of components asks for 3."}));
    EXPECT_THAT(FindingsOn("RUNSPEC\nDUALPORO\nDIMENS\n 4 3 2 /\nGRID\nPORO\n 12*0.2 /\n"), IsEmpty());
    EXPECT_THAT(FindingsOn("RUNSPEC\nGRID\nPORO\n 12*0.2 /\n"), IsEmpty());
}

TEST(Check, TablesAreWholeAndAsManyAsTheDeckHasRoomFor)
{
    const std::string props = "RUNSPEC\nTABDIMS\n 2 1 /\nPROPS\n";
    const std::string incomplete =
        " error: A table of SWOF holds 7 values, which are no whole rows of 4 (SW, KRW, KROW, "
        "PCOW).";
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"SWOF\n 0.1 0 1 0\n 1 1 0 0 /\n/\nDENSITY\n 800 1000 1 / remark\n", {}},
        {"SWOF\n 0.1 0 1 0\n 1 1 0 0 /\n", {"5 warning: SWOF has only 1 table, and TABDIMS (NTSFUN) asks for 2."}},
        {"DENSITY\n 800 1000 1 /\n 801 1000 1 /\n", {"7 warning: DENSITY has 2 rows, and TABDIMS (NTPVT) asks for 1."}},
        {"SWOF\n 0.1 0 1\n 1 1 0 0 /\n/\n", {"6" + incomplete}},
        {"SWOF\n 0.1 0 1 0 1 1 0 / the last item of the last row is left out\n/\n", {}},
        {"SWOF\n 0.3 0 1 0\n 0.2 0 1 0\n 1 1 2*0 /\n/\n",
         {"7 warning: SW does not increase in a table of SWOF: 0.2 stands behind 0.3."}},
        // As many as TABDIMS says where it leaves the number out, and of tables with rows of their own.
        {"PVTG\n 50 0 1 1 /\n 60 0 1 1 /\n/\n", {}},
        {"SWOF\n 0.1 0\n 1 0 -- one row\n 1 1 2*0 /\n/\n", {}},
    };
    for (const auto& [text, findings] : cases)
        EXPECT_EQ(FindingsOn(props + text), findings) << text;
    EXPECT_EQ(FindingsOn("RUNSPEC\nTABDIMS\n/\nPROPS\nROCK\n 1 2 /\nDENSITY\n 3*1 /\n 3*2 /\n"),
              (std::vector<std::string>{"9 warning: DENSITY has 2 rows, and TABDIMS (NTPVT) asks for 1."}));
    EXPECT_EQ(FindingsOn("RUNSPEC\nTABDIMS\n 1 2 /\nPROPS\nPVTG\n 50 0 1 1 /\n 60 0 1 1 /\n/\n"),
              (std::vector<std::string>{"5 warning: PVTG has only 1 table, and TABDIMS (NTPVT) asks for 2."}));
}

TEST(Check, NamesTheTerminatorThatIsMissing)
{
    const std::string well = "RUNSPEC\nSCHEDULE\nWELSPECS\n";
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {well + " A G 1 1 1* OIL /\nCOMPDAT\n A 2* 1 1 OPEN /\n/\n",
         {"5 error: The keyword COMPDAT is read as data of WELSPECS: is a \"/\" missing ahead of it?"}},
        {well + " A G 1 1 1* OIL\n B G 2 2 1* GAS /\n/\n",
         {"5 error: A problem was encountered when parsing the keyword WELSPECS. Item value \"B\" is not valid. Must "
          "be a real number. Is a \"/\" missing at the end of line 4?"}},
        {"RUNSPEC\nSUMMARY\nWOPR\n P1\nFOPR\nWWCT\n/\n",
         {"5 error: The keyword FOPR is read as data of WOPR: is a \"/\" missing ahead of it?"}},
        {"RUNSPEC\nSUMMARY\nWOPR\n P1\n 'FOPR'\nFOPR P2\n/\n", {}},
        // Mnemonics that go by the names of keywords.
        {"RUNSPEC\nSOLUTION\nRPTSOL\nSWAT\nSGAS /\n", {}},
        {"RUNSPEC\nSUMMARY\nWOPR\nWTPRXY\n/\n",
         {"4 error: The keyword WTPRXY is read as data of WOPR: is a \"/\" missing ahead of it?"}},
        {"RUNSPEC\nSOLUTION\nRPTSOL\n FIP= 2 SWAT 1 /\n",
         {"4 warning: \"1\" among the names of RPTSOL says nothing. It takes NAME or NAME=number."}},
        {"RUNSPEC\nSOLUTION\nRPTSOL\nFIP = 2 SWAT RESTATR=2 /\n",
         {"4 warning: RPTSOL knows no RESTATR. Nearest: RESTART."}},
        {"RUNSPEC\nSCHEDULE\nACTIONX\n A 2 /\n WWCT P1 > 0.5 /\nWELOPEN\n P1 SHUT /\n/\nENDACTIO\n",
         {"6 error: The keyword WELOPEN is read as data of ACTIONX: is a \"/\" missing ahead of it?"}},
        {"RUNSPEC\nSCHEDULE\nACTIONX\n A 2 /\n WWCT P1 => 0.5 /\n/\nENDACTIO\nENDACTIO\n",
         {"8 warning: This ENDACTIO has no action ahead of it.",
          "5 error: This condition of ACTIONX holds no comparison as a word of its own (>, <, >=, <=, =, !=)."}},
        {"RUNSPEC\nSCHEDULE\nACTIONX\n A 2 /\n DAY > 5 /\n/\nTSTEP\n 1 /\n",
         {"3 error: This ACTIONX has no ENDACTIO."}},
        {"RUNSPEC\nENDSKIP\nSKIP\nSCHEDULE\nWELOPEN\n A SHUT /\nENDSKIP\n",
         {"2 warning: This ENDSKIP has no SKIP ahead of it.", "3 error: This SKIP has no ENDSKIP.",
          "7 error: The keyword ENDSKIP is read as data of WELOPEN: is a \"/\" missing ahead of it?"}},
        {"RUNSPEC\nSCHEDULE\nUDQ\n DEFINE FUA (FOPR + 1\n ASSIGN FUB 2\n UPDATE FUA OF /\n/\n",
         {"4 error: The DEFINE of UDQ must end with a \"/\" on its line.",
          "4 error: The parentheses in this row of UDQ don't match.",
          "5 error: This row of UDQ goes on with the UPDATE of line 6: is its \"/\" missing?"}},
        {"RUNSPEC\nSCHEDULE\nUDQ\n DEFINE FUA (FOPR / 2) /\n UPDATE FUA OF /\n/\n",
         {"5 error: \"OF\" is no way to UPDATE in UDQ. Must be one of ON, OFF, NEXT."}},
        // Numbers of which a simulator might make something else.
        {"RUNSPEC\nTABDIMS\n 1.0 2abc 15.5 1E3 -3. /\n",
         {"3 warning: NTPVT \"2abc\" of TABDIMS is no whole number, and is read as 2.",
          "3 warning: NSSFUN \"15.5\" of TABDIMS is no whole number, and is read as 15.",
          "3 warning: NPPVT \"1E3\" of TABDIMS is no whole number, and is read as 1."}},
        {well + " A G 1 1 1* OIL /\n B G 2\n 2 /\n/\n", {"6 warning: PHASE of WELSPECS has no value, and no default."}},
        {"RUNSPEC\nDIMENS\n 4 3 /\n", {"3 warning: NZ of DIMENS has no value, and no default."}},
        {"RUNSPEC\nGRID\nIMPORT\n 'none.gsg' /\n", {"3 warning: The file none.gsg of this IMPORT does not exist."}},
    };
    for (const auto& [text, findings] : cases)
        EXPECT_EQ(FindingsOn(text), findings) << text;
}

TEST(Check, TimeGoesForwardThroughDatesThatThereAre)
{
    const std::string start = "RUNSPEC\nSTART\n 1 JAN 2000 /\nSCHEDULE\nDATES\n 1 FEB 2000 /\n";
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {" 1 JLY 2000 06:30:00 /\n/\nTSTEP\n 10 2*5 /\n", {}},
        {" 31 APR 2000 /\n/\n", {"7 error: DATES[1] is no date: 31 APR 2000."}},
        {" 1 MAR 1999 /\n/\n",
         {"7 error: Time runs backwards: DATES[1] is 1999-03-01, and the deck has come to 2000-02-01."}},
        {" 1 MRA 2000 /\n/\n",
         {"7 error: A problem was encountered when parsing the keyword DATES. Item value \"MRA\" is not valid. Must be "
          "one of JAN, FEB, MAR, APR, MAY, JUN, JUL, AUG, SEP, OCT, NOV, DEC. It stands for MONTH."}},
    };
    for (const auto& [text, findings] : cases)
        EXPECT_EQ(FindingsOn(start + text), findings) << text;
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
        "whole number. It stands for I.\n";
    std::string expected = "TOP.DATA:2: warning: The file none.inc of this INCLUDE does not exist.\n";
    for (const char* line : {"6", "7", "8"})
        expected += std::string("TOP.DATA:") + line + ": warning: " + tooLong + " (PORO)\n";
    expected +=
        "    ... and 7 more\nTOP.DATA:16: warning: 15 more messages of this kind in keyword PORO: " + tooLong + "\n";
    for (const char* line : {"2", "5", "8"})
        expected += std::string("w.inc:") + line + ": " + notValid;
    EXPECT_EQ(outcome.out, expected + "    ... and 27 more\n36 keywords in 2 files: 30 errors, 12 warnings.\n");
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

TEST(Check, CountsEveryFaultOfAKeyword)
{
    const auto rows = [](int count, const std::string& head, const std::string& tail) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += head + std::to_string(i) + tail + "\n";
        return text + "/\n";
    };
    struct Case
    {
        std::string schedule;
        std::string sum;
    };
    const Case cases[] = {
        {"WELSPECS\n" + rows(1500, " P", " 1* 1 1 1* OIL /"), "no errors, 1500 warnings."},
        {"WCONPROD\n" + rows(800, " P", " OPEN xx"), "2 errors, no warnings."},
        {"DATES\n" + rows(2000, " 30 FEB 2", " /"), "2000 errors, no warnings."},
        {"WCONPROD\n" + rows(1600, " P OPEN ORAT WUY", " /") + "UDQ\n" + rows(1000, " DEFINE WUX", " 1 /"),
         "1600 errors, no warnings."},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.schedule.substr(0, 60));
        const TempDir folder;
        folder.Write("TOP.DATA", "RUNSPEC\nSTART\n 1 JAN 2000 /\nSCHEDULE\n" + test.schedule);
        const Outcome outcome = Deckman({"check", "TOP.DATA"}, In(folder));
        EXPECT_THAT(outcome.out, HasSubstr(test.sum)) << outcome.err;
    }
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

TEST(Check, NamesTheItemOfABadValue)
{
    struct Case
    {
        std::string text;
        int line;
        std::string word;
        std::string item; ///< empty: none is named
    };
    const std::string schedule = "RUNSPEC\nSCHEDULE\n";
    const Case cases[] = {
        {"RUNSPEC\nDIMENS\n10 x 3 /\n", 3, "x", "NY"},
        {"RUNSPEC\nEQLDIMS\n2* x /\n", 3, "x", "NDRXVD"},
        {"RUNSPEC\nGRIDOPTS\nYEP /\n", 3, "YEP", "TRANMULT"},
        {schedule + "WELSPECS\n'x' G x 2 /\n/\n", 4, "x", "I"},
        {schedule + "WELSPECS\nP G 1 1 2000 /\n'Q' 'G' 1 1 2* 2* SHUT x /\n/\n", 5, "x", "CROSSFLOW"},
        {schedule + "WCONPROD\nP OPN ORAT /\n/\n", 4, "OPN", "STATE"},
        {schedule + "WCONPROD\nP OPEN ORAT 4* x /\n/\n", 4, "x", "RESV"},
        {schedule + "COMPDAT\nP 4*1 OPEN 1* 2*x /\n/\n", 4, "x", "CONNECTION_TRANSMISSIBILITY"},
        // Of a table the column, wherever the line begins.
        {"RUNSPEC\nPROPS\nSWOF\n0.1 0 1 0 0.2\n0.1 x 0 1 1 0 0 /\n", 5, "x", "KROW"},
        // Rows of different kinds.
        {schedule + "WELSEGS\nP 2000 2000 1* INC /\n2 2 1 1 10 10 0.1 1E-5 /\n3 3 1 2 x 10 0.1 1E-5 /\n/\n", 6, "x",
         "LENGTH"},
        // A comma may stand for a default.
        {schedule + "WCONPROD\nP OPEN ORAT,,x /\n/\n", 4, "x", ""},
    };
    for (const Case& test : cases) {
        const std::vector<std::string> findings = Findings({{"TOP.DATA", test.text}});
        ASSERT_EQ(findings.size(), 1u) << test.text << testing::PrintToString(findings);
        EXPECT_THAT(findings.front(), HasSubstr("TOP.DATA:" + std::to_string(test.line) + " "));
        EXPECT_THAT(findings.front(), HasSubstr("Item value \"" + test.word + "\" is not valid. Must be "));
        const std::size_t hint = findings.front().find(" It stands for ");
        EXPECT_EQ(hint == std::string::npos ? "" : findings.front().substr(hint + 15),
                  test.item.empty() ? "" : test.item + ".")
            << test.text;
    }
}

} // namespace DeckmanTests

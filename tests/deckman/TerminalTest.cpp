#include <regex>

#include "tests/deckman/Program.h"

/// What is for people only: colours, the pager, widths, progress.

namespace DeckmanTests {

namespace {

const std::string decks = DECK_SOURCE_DIR "/examples/decks";
const std::string escape = "\x1b[";
const std::string pagerMark = "paged ";

Launch InDecks(std::vector<std::pair<std::string, std::string>> environment = {})
{
    return {decks, std::move(environment)};
}

/// A pager that marks what goes through it.
Launch WithPager(const std::string& variable = "PAGER")
{
    return InDecks({{variable, "sed 's/^/" + pagerMark + "/'"}});
}

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

std::string Plain(const std::string& text)
{
    return std::regex_replace(text, std::regex("\x1b\\[[0-9;]*[A-Za-z]"), "");
}

std::size_t LongestLine(const std::string& text)
{
    std::size_t longest = 0;
    std::istringstream lines(Plain(text));
    for (std::string line; std::getline(lines, line);)
        longest = std::max(longest, line.size());
    return longest;
}

} // namespace

TEST(OnATerminal, ThereAreColoursUnlessTheUserWantsNone)
{
    const std::string sections = "deckman sections field/FIELD.DATA";
    const Outcome shown = OnTerminal(sections, {}, InDecks());
    EXPECT_EQ(shown.status, 0);
    EXPECT_TRUE(Has(shown.out, escape + "1mGRID"));
    EXPECT_EQ(Plain(shown.out), Shell(sections, InDecks()).out);
    for (const auto& variable : {std::pair("NO_COLOR", "1"), std::pair("TERM", "dumb")})
        EXPECT_FALSE(Has(OnTerminal(sections, {}, InDecks({variable})).out, escape)) << variable.first;
    EXPECT_FALSE(Has(OnTerminal(sections + " | cat", {}, InDecks()).out, escape));

    const std::string missing = "deckman show field/FIELD.DATA NOSUCH";
    EXPECT_TRUE(Has(OnTerminal(missing, {}, InDecks()).out, escape + "31merror"));
    EXPECT_FALSE(Has(OnTerminal(missing, {}, InDecks({{"NO_COLOR", "1"}})).out, escape));
    EXPECT_FALSE(Has(OnTerminal("deckman get field/FIELD.DATA TABDIMS --json", {}, InDecks()).out, escape));

    const std::string change = OnTerminal("deckman set field/FIELD.DATA TABDIMS.3 5 --dry-run", {}, InDecks()).out;
    EXPECT_TRUE(Has(change, escape + "31m-   2") && Has(change, escape + "32m+   2")) << change;
}

TEST(OnATerminal, LongOutputGoesThroughThePager)
{
    const std::string props = "deckman ls field/FIELD.DATA --section PROPS";
    const Screen small{10, 80};
    for (const char* variable : {"PAGER", "DECKMAN_PAGER"}) {
        const Outcome paged = OnTerminal(props, small, WithPager(variable));
        EXPECT_EQ(paged.status, 0);
        EXPECT_TRUE(Has(Plain(paged.out), pagerMark + "   69  PROPS")) << variable;
    }
    // What fits the screen needs none, nor does what nobody reads there, nor who wants none.
    EXPECT_FALSE(Has(OnTerminal(props, {}, WithPager()).out, pagerMark));
    EXPECT_FALSE(Has(OnTerminal(props + " | cat", small, WithPager()).out, pagerMark));
    EXPECT_FALSE(Has(Shell(props, WithPager()).out, pagerMark));
    EXPECT_FALSE(Has(OnTerminal(props + " --no-pager", small, WithPager()).out, pagerMark));
    EXPECT_FALSE(Has(OnTerminal("deckman --help --no-pager", small, WithPager()).out, pagerMark));
    EXPECT_TRUE(Has(OnTerminal("deckman --help", small, WithPager()).out, pagerMark));
    // Without its pager the output is there all the same.
    for (const char* pager : {"", "cat", "no-such-pager -x"}) {
        const Outcome shown = OnTerminal(props, small, InDecks({{"PAGER", "sed d"}, {"DECKMAN_PAGER", pager}}));
        EXPECT_TRUE(Has(shown.out, "SGOF")) << pager;
    }
    // Lines that go on in the next row count as two.
    const std::string summary = "deckman show field/FIELD.DATA EQUIL";
    EXPECT_FALSE(Has(OnTerminal(summary, {20, 80}, WithPager()).out, pagerMark));
    EXPECT_TRUE(Has(OnTerminal(summary, {6, 20}, WithPager()).out, pagerMark));
}

TEST(OnATerminal, APagerChangesNoExitStatus)
{
    const TestSupport::TempDir folder;
    folder.Write("BAD.DATA", "RUNSPEC\nTABDIMS\n x y z u v w /\nEQLDIMS\n a /\nSCHEDULE\nDATES\n 1 JAN /\n/\n");
    Launch run = WithPager();
    run.directory = folder.Path();
    const Outcome check = OnTerminal("deckman check BAD.DATA", {4, 80}, run);
    EXPECT_EQ(check.status, Shell("deckman check BAD.DATA", run).status);
    EXPECT_TRUE(Has(check.out, pagerMark + "BAD.DATA:3: "));
    // Who has read enough is no failure.
    const Outcome quit = OnTerminal("deckman ls field/FIELD.DATA", {5, 80}, InDecks({{"PAGER", "head -n 2"}}));
    EXPECT_EQ(quit.status, 0);
    EXPECT_EQ(std::count(quit.out.begin(), quit.out.end(), '\n'), 2);
}

TEST(OnATerminal, TablesFitIt)
{
    const auto shown = [](const std::string& command, int columns) {
        return Plain(OnTerminal(command, {400, columns}, InDecks()).out);
    };
    const std::string list = "deckman ls field/FIELD.DATA";
    EXPECT_EQ(shown(list, 200), Shell(list, InDecks()).out);
    const std::string narrow = shown(list, 64);
    EXPECT_LE(LongestLine(narrow), 64u);
    // Of a file's name the end stays, by which it can be told.
    EXPECT_TRUE(Has(narrow, "..")) << narrow;
    EXPECT_TRUE(Has(narrow, "pvt.inc:32\n")) << narrow;
    // Columns of values are never cut.
    const std::string wells = shown("deckman get field/FIELD.DATA WCONPROD", 40);
    EXPECT_LE(LongestLine(wells), 40u);
    EXPECT_TRUE(Has(wells, "record  WELL   STATE  MODE     ORAT\n") && Has(wells, "\n\nrecord     LRAT")) << wells;
    EXPECT_LE(LongestLine(shown("deckman get field/FIELD.DATA PORO", 50)), 50u);
    EXPECT_LE(LongestLine(shown("deckman syntax --section EDIT", 100)), 100u);
}

TEST(OnATerminal, ProgressShowsBeyondASecond)
{
    const std::string slow = "{ sleep 1.6; printf \"WELOPEN\\n 'P1' SHUT /\\n/\\n\"; } | deckman read -";
    const std::string shown = OnTerminal(slow).out;
    const std::size_t line = shown.find("\r1 s");
    ASSERT_NE(line, std::string::npos) << shown;
    // It is wiped before the output.
    const std::size_t wiped = shown.rfind("\r\x1b[K");
    EXPECT_TRUE(wiped != std::string::npos && wiped > line && shown.find("WELOPEN", line) > wiped) << shown;
    EXPECT_EQ(shown.find('\r', wiped + 1), std::string::npos);

    EXPECT_FALSE(Has(OnTerminal("(" + slow + ") 2>/dev/null").out, "\r"));
    // A pager behind a pipe has the terminal for itself, however long it lets the program wait.
    const TestSupport::TempDir folder;
    std::string deck = "RUNSPEC\nSCHEDULE\n";
    for (int i = 0; i < 10000; ++i)
        deck += "WELTARG\n/\n";
    folder.Write("x.DATA", deck);
    const Launch there{folder.Path()};
    EXPECT_EQ(OnTerminal("deckman ls x.DATA --json | { sleep 1.6; wc -l; }", {}, there).out, "10002\n");
    EXPECT_FALSE(Has(OnTerminal("deckman ls field/FIELD.DATA --no-pager", {}, InDecks()).out, "\r"));
}

} // namespace DeckmanTests

#include "tests/deckman/Program.h"

/// The verbs that write a deck out of its files.

namespace DeckmanTests {

namespace {

/// A small deck in a directory of its own.
struct Deck
{
    Deck()
    {
        folder.Write("TOP.DATA", "-- top\nRUNSPEC\nINCLUDE\n 'a/x.inc' / it\n-- above\nINCLUDE\n'b/x.inc' /\nINCLUDE\n"
                                 "'gone.inc' /\nGRID\nEND\n 1 left\n");
        folder.Write("a/x.inc", "-- a\nOIL\n");
        folder.Write("b/x.inc", "-- b\nGAS\n");
        for (const char* directory : {"", "a", "b"})
            std::filesystem::permissions(folder.Path(directory), std::filesystem::perms::all);
    }
    Outcome Run(const std::vector<std::string>& arguments) const { return Deckman(arguments, run); }

    TempDir folder;
    Launch run{folder.Path()};
};

const std::string flat =
    "-- top\nRUNSPEC\n-- it\n-- a\nOIL\n-- above\n-- b\nGAS\nINCLUDE\n'gone.inc' /\nGRID\nEND\n 1 left\n";

} // namespace

TEST(Export, FlattenWritesTheWholeDeck)
{
    const Deck deck;
    const Outcome outcome = deck.Run({"flatten", "TOP.DATA", "-o", "FLAT.DATA"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(deck.folder.Read("FLAT.DATA"), flat);
    EXPECT_EQ(outcome.err, "TOP.DATA:8: warning: The file gone.inc does not exist.\n");
    EXPECT_THAT(outcome.out, ContainsRegex("a/x.inc +FLAT.DATA\n"));
    EXPECT_THAT(outcome.out, ContainsRegex("gone.inc +missing\n"));
    EXPECT_EQ(deck.Run({"flatten", "TOP.DATA", "-o", "FLAT.DATA", "--strict"}).status, 1);

    std::string crLf = flat;
    for (std::size_t at = 0; (at = crLf.find('\n', at)) != std::string::npos; at += 2)
        crLf.insert(at, 1, '\r');
    EXPECT_EQ(deck.Run({"flatten", "TOP.DATA", "-o", "FLAT.DATA", "--eol", "crlf"}).status, 0);
    EXPECT_EQ(deck.folder.Read("FLAT.DATA"), crLf);
}

TEST(Export, FlattenTellsOfAGridFileThatStaysBehind)
{
    const Deck deck;
    deck.folder.Write("GRID.DATA", "RUNSPEC\nGRID\nGDFILE\n 'CASE.EGRID' /\n");
    EXPECT_THAT(deck.Run({"flatten", "GRID.DATA", "-o", "FLAT.DATA"}).err, IsEmpty());
    EXPECT_THAT(
        deck.Run({"flatten", "GRID.DATA", "-o", "a/FLAT.DATA"}).err,
        HasSubstr("GRID.DATA:3: warning: GDFILE names a file beside the deck, and a/FLAT.DATA lies in another"));
}

TEST(Export, FlattenWritesARange)
{
    const Deck deck;
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--from", "OIL", "--to", "OIL"}, "-- a\nOIL\n-- above\n"},
        {{"--from", "@2", "--to", "@2"}, "-- it\n-- a\nOIL\n-- above\n"},
        {{"--from", "INCLUDE#2", "--to", "INCLUDE#3"}, "-- above\n-- b\nGAS\nINCLUDE\n'gone.inc' /\n"},
        {{"--from", "GRID"}, "GRID\nEND\n 1 left\n"},
        {{"--to", "a/x.inc:2"}, "-- top\nRUNSPEC\n-- it\n-- a\nOIL\n-- above\n"},
        {{"--from", "END", "--all"}, "END\n 1 left\n"},
    };
    for (const auto& [range, text] : cases) {
        std::vector<std::string> arguments{"flatten", "TOP.DATA", "-o", "r.inc"};
        arguments.insert(arguments.end(), range.begin(), range.end());
        EXPECT_EQ(deck.Run(arguments).status, 0) << range[1];
        EXPECT_EQ(deck.folder.Read("r.inc"), text) << range[1];
    }
}

TEST(Export, CopyTellsWhatBecameOfEachFile)
{
    const Deck deck;
    const Outcome outcome = deck.Run({"copy", "TOP.DATA", "new/copy"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(
        deck.folder.Read("new/copy/TOP.DATA"),
        "-- top\nRUNSPEC\nINCLUDE\n 'x.inc' / it\n-- above\nINCLUDE\n'x_1.inc' /\nINCLUDE\n'gone.inc' /\nGRID\nEND\n"
        " 1 left\n");
    EXPECT_EQ(deck.folder.Read("new/copy/x_1.inc"), "-- b\nGAS\n");
    EXPECT_THAT(outcome.out, ContainsRegex("b/x.inc +new/copy/x_1.inc +another file has its name\n"));
    EXPECT_THAT(outcome.out, ContainsRegex("gone.inc +missing\n"));
    EXPECT_FALSE(deck.folder.Exists("new/copy/gone.inc"));

    const auto rows = JsonLines(deck.Run({"copy", "TOP.DATA", "c2", "--json"}).out);
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[2].dump(),
              R"({"action":"written","from":"b/x.inc","to":")" + deck.folder.Path("c2/x_1.inc") + R"("})");
    EXPECT_EQ(rows[3].dump(), R"({"action":"missing","from":"gone.inc","to":null})");
}

TEST(Export, CloneKeepsHeaders)
{
    const Deck deck;
    EXPECT_EQ(deck.Run({"clone", "TOP.DATA", "--suffix", "_B"}).status, 0);
    EXPECT_EQ(
        deck.folder.Read("TOP_B.DATA"),
        "-- top\nRUNSPEC\nINCLUDE\n 'a/x_B.inc' / it\n-- above\nINCLUDE\n'b/x_B.inc' /\nINCLUDE\n'gone.inc' /\nGRID\n"
        "END\n 1 left\n");
    EXPECT_EQ(deck.folder.Read("b/x_B.inc"), "-- b\nGAS\n");
    EXPECT_FALSE(deck.folder.Exists("gone_B.inc"));
}

TEST(Export, DryRunWritesNothing)
{
    const Deck deck;
    const std::string before = deck.folder.Listing();
    const Outcome copy = deck.Run({"copy", "TOP.DATA", "copy", "--dry-run"});
    EXPECT_EQ(copy.status, 0);
    EXPECT_THAT(copy.out,
                HasSubstr("--- TOP.DATA\n+++ TOP.DATA\n@@ -3,3 +3,3 @@\n INCLUDE\n- 'a/x.inc' / it\n"
                          "+ 'x.inc' / it\n -- above\n@@ -6,2 +6,2 @@\n INCLUDE\n-'b/x.inc' /\n+'x_1.inc' /\n"));
    const Outcome flatten = deck.Run({"flatten", "TOP.DATA", "-o", "FLAT.DATA", "--dry-run"});
    EXPECT_THAT(flatten.out, HasSubstr("@@ -3,2 +2,0 @@\n-INCLUDE\n- 'a/x.inc' / it\n"));
    const auto rows = JsonLines(deck.Run({"clone", "TOP.DATA", "--suffix", "_B", "--dry-run", "--json"}).out);
    EXPECT_EQ(rows.back().dump(), R"({"action":"changed","file":"TOP.DATA","line":6,"name":"INCLUDE",)"
                                  R"("old":"INCLUDE\n'b/x.inc' /\n","new":"INCLUDE\n'b/x_B.inc' /\n"})");
    // What would be refused is refused.
    EXPECT_EQ(deck.Run({"clone", "TOP.DATA", "--suffix", "", "--dry-run"}).status, 3);
    EXPECT_EQ(deck.folder.Listing(), before);
}

TEST(Export, RewriteRefusesWhatItWouldLose)
{
    const std::pair<std::string, std::string> cases[] = {
        {"TABDIMS\n1 x /\n", "x.inc:3: error: A problem was encountered"},
        {"SKIP\nTABDIMS\n1 x /\nENDSKIP\n", "x.inc:4: error: A problem was encountered"},
        {"EQLDIMS\n1 2 3 4 5 6 7 8 9 /\n", "x.inc:3: error: Record in keyword EQLDIMS has too many items"},
        {"EQLDIMS\n1 2\n", ""},
        {"EQLDIMS\nGAS\n", ""},
        {"TABDIMS\n$N /\n", ""},
    };
    for (const auto& [text, message] : cases) {
        const Deck deck;
        deck.folder.Write("a/x.inc", "OIL\n" + text);
        const std::string before = deck.folder.Listing();
        const Outcome outcome = deck.Run({"flatten", "TOP.DATA", "-o", "FLAT.DATA", "--rewrite"});
        EXPECT_EQ(outcome.status, message.empty() ? 0 : 1) << text;
        EXPECT_THAT(outcome.err, HasSubstr(message));
        EXPECT_EQ(deck.folder.Listing() == before, !message.empty()) << text;
    }
}

TEST(Export, FailuresNameTheFileWithStatus3)
{
    const Deck deck;
    deck.folder.Write("locked/TOP.DATA", "old");
    deck.folder.Write("folder/x.inc/y", "");
    std::filesystem::permissions(deck.folder.Path("locked"), static_cast<std::filesystem::perms>(0555));
    std::filesystem::permissions(deck.folder.Path("folder"), std::filesystem::perms::all);
    Launch run = deck.run;
    run.unprivileged = true;
    const std::string listing = deck.folder.Listing();
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"flatten", "TOP.DATA", "-o", "a/x.inc"}, "a/x.inc cannot be written: it is a file of the deck."},
        {{"flatten", "TOP.DATA", "-o", "a"}, "/a cannot be written: it is a directory."},
        {{"flatten", "TOP.DATA", "-o", "locked/new"}, "locked/new cannot be written: Permission denied."},
        {{"flatten", "TOP.DATA", "-o", "TOP.DATA/new"}, "TOP.DATA cannot be made: something else stands there."},
        {{"copy", "TOP.DATA", "a"}, "a/x.inc cannot be written: it is a file of the deck."},
        {{"copy", "TOP.DATA", "locked"}, "Fails to open output file:" + deck.folder.Path("locked/TOP.DATA")},
        {{"copy", "TOP.DATA", "locked/deep"}, "The directory " + deck.folder.Path("locked/deep") + " cannot be made: "},
        {{"copy", "TOP.DATA", "folder"}, "folder/x.inc cannot be written: it is a directory."},
        {{"copy", "TOP.DATA", "."}, "A deck is not copied into its own directory."},
        {{"clone", "TOP.DATA", "--suffix", ""}, "TOP.DATA cannot be written: it is a file of the deck."},
    };
    for (const auto& [arguments, message] : cases) {
        const Outcome outcome = Deckman(arguments, run);
        EXPECT_EQ(outcome.status, 3) << message;
        EXPECT_THAT(outcome.err, HasSubstr(message));
        EXPECT_THAT(outcome.out, IsEmpty());
    }
    // A limit to the size of files.
    const Outcome cut =
        Shell("ulimit -f 8; deckman flatten " DECK_SOURCE_DIR "/examples/decks/field/FIELD.DATA -o F.DATA", deck.run);
    EXPECT_EQ(cut.status, 3);
    EXPECT_THAT(cut.err, HasSubstr("F.DATA cannot be written: File too large."));
    // A file below an INCLUDE that can't be read.
    std::filesystem::permissions(deck.folder.Path("b/x.inc"), std::filesystem::perms::none);
    for (const auto& arguments : {std::vector<std::string>{"flatten", "TOP.DATA", "-o", "FLAT.DATA"},
                                  {"copy", "TOP.DATA", "copy"},
                                  {"clone", "TOP.DATA", "--suffix", "_B"}})
    {
        const Outcome outcome = Deckman(arguments, run);
        EXPECT_EQ(outcome.status, 3) << arguments[0];
        EXPECT_THAT(outcome.err, HasSubstr("b/x.inc"));
    }
    std::filesystem::permissions(deck.folder.Path("b/x.inc"), std::filesystem::perms::owner_all);
    std::filesystem::permissions(deck.folder.Path("locked"), std::filesystem::perms::owner_all);
    EXPECT_EQ(deck.folder.Listing(), listing);
}

} // namespace DeckmanTests

#include "tests/deckman/Program.h"

/// `deckman merge`.

namespace DeckmanTests {

namespace {

const std::string tag = "                             -- Generated\n";

/// The deck that a user has edited, and the one that the generator has made since.
struct Decks
{
    Decks()
    {
        folder.Write("old/TOP.DATA",
                     "RUNSPEC\nDIMENS  " + tag + "1 2 3 /\n-- mine\nTABDIMS\n 2 /\nINCLUDE\n'mine.inc' /\nEND\n");
        folder.Write("old/mine.inc", "WATER\nINCLUDE\n'sub/more.inc' /\n");
        folder.Write("old/sub/more.inc", "GAS\n");
        folder.Write("new/TOP.DATA", newText);
    }
    Outcome Run(std::vector<std::string> more = {}) const
    {
        more.insert(more.begin(), {"merge", "old/TOP.DATA", "new/TOP.DATA"});
        return Deckman(more, run);
    }

    const std::string newText = "RUNSPEC\nDIMENS  " + tag + "4 5 6 /\nTABDIMS " + tag + " 1 /\nEND\n";
    const std::string merged =
        "RUNSPEC\nDIMENS  " + tag + "4 5 6 /\n-- mine\nTABDIMS\n 2 /\nINCLUDE\n'mine.inc' /\nEND\n";
    TempDir folder;
    Launch run{folder.Path()};
};

TEST(Merge, CarriesInPlace)
{
    const Decks decks;
    const Outcome outcome = decks.Run({"--json"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(decks.folder.Read("new/TOP.DATA"), decks.merged);
    EXPECT_EQ(decks.folder.Read("new/mine.inc"), decks.folder.Read("old/mine.inc"));
    EXPECT_EQ(decks.folder.Read("new/sub/more.inc"), "GAS\n");
    const auto lines = JsonLines(outcome.out);
    ASSERT_EQ(lines.size(), 3u) << outcome.out;
    EXPECT_EQ(lines[0].dump(),
              R"({"action":"replaced","name":"TABDIMS","file":"TOP.DATA","line":5,"newFile":"TOP.DATA",)"
              R"("newLine":4,"text":null})");
    EXPECT_EQ(lines[1]["action"], "missing");
    EXPECT_EQ(lines[2]["action"], "carried");
    EXPECT_EQ(lines[2]["newLine"], 6);
    // The result holds keywords of the user now.
    const Outcome again = decks.Run();
    EXPECT_EQ(again.status, 1);
    EXPECT_THAT(again.err, HasSubstr("new/TOP.DATA:5: error: NEW holds keywords of a user already, TABDIMS here"));
    EXPECT_EQ(decks.folder.Read("new/TOP.DATA"), decks.merged);
    EXPECT_EQ(decks.Run({"--into-edited"}).status, 0);
}

TEST(Merge, CarriesIntoACopy)
{
    const Decks decks;
    const Outcome outcome = decks.Run({"-o", "out/deep"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(decks.folder.Read("new/TOP.DATA"), decks.newText);
    EXPECT_EQ(decks.folder.Read("out/deep/TOP.DATA"), decks.merged);
    EXPECT_EQ(decks.folder.Read("out/deep/sub/more.inc"), "GAS\n");
    EXPECT_FALSE(std::filesystem::exists(decks.folder.Path("new/mine.inc")));
    EXPECT_THAT(outcome.out, HasSubstr("replaced  TABDIMS  TOP.DATA:5  TOP.DATA:4\n"));
}

TEST(Merge, ADryRunWritesNothing)
{
    const Decks decks;
    const Outcome outcome = decks.Run({"--dry-run", "-o", "out"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, HasSubstr("carried   INCLUDE  TOP.DATA:7  TOP.DATA:6\n"
                                       "\n--- new/TOP.DATA\n+++ new/TOP.DATA\n@@ -1,6 +1,9 @@\n RUNSPEC\n DIMENS  " +
                                       tag + " 4 5 6 /\n-TABDIMS " + tag +
                                       "- 1 /\n+-- mine\n+TABDIMS\n+ 2 /\n+INCLUDE\n+'mine.inc' /\n END\n"));
    EXPECT_EQ(decks.folder.Read("new/TOP.DATA"), decks.newText);
    EXPECT_FALSE(std::filesystem::exists(decks.folder.Path("out")));
}

TEST(Merge, ABackupKeepsTheOldFiles)
{
    const Decks decks;
    EXPECT_EQ(decks.Run({"--backup", "-o", "out"}).status, 2);
    EXPECT_EQ(decks.Run({"--backup"}).status, 0);
    EXPECT_EQ(decks.folder.Read("new/TOP.DATA"), decks.merged);
    EXPECT_EQ(decks.folder.Read("new/TOP.DATA~"), decks.newText);
}

TEST(Merge, ExcludesAndMapsFiles)
{
    const Decks decks;
    decks.folder.Write("old/TOP.DATA", "RUNSPEC\nINCLUDE " + tag + "'a.inc' /\nEND\n");
    decks.folder.Write("old/a.inc", "TABDIMS\n 2 /\nDIMENS  " + tag + "1 2 3 /\n");
    const std::string top = "RUNSPEC\nINCLUDE " + tag + "'b.inc' /\nEND\n";
    decks.folder.Write("new/TOP.DATA", top);
    decks.folder.Write("new/b.inc", "DIMENS  " + tag + "1 2 3 /\n");
    EXPECT_EQ(decks.Run({"--map", "x.inc=y.inc", "--map", "a.inc=b.inc", "-o", "out"}).status, 0);
    EXPECT_EQ(decks.folder.Read("out/b.inc"), "TABDIMS\n 2 /\nDIMENS  " + tag + "1 2 3 /\n");
    EXPECT_EQ(decks.Run({"--exclude", "old/a.inc", "--exclude", "TOP.DATA"}).out, "");
    EXPECT_EQ(decks.Run({"--exclude", "c.inc"}).status, 1);
    EXPECT_EQ(decks.Run({"--map", "a.inc"}).status, 2);
}

TEST(Merge, RefusesWhatWouldLoseSomething)
{
    const Decks decks;
    decks.folder.Write("old/TOP.DATA", "RUNSPEC\nDIMENS  " + tag + "1 2 3 /\nMYWORD\n 7 /\nOIL\nEND\n");
    const Outcome refused = decks.Run();
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("old/TOP.DATA:4: error: The word MYWORD behind keyword DIMENS is no known"));
    EXPECT_THAT(refused.err, HasSubstr("nothing is written"));
    EXPECT_EQ(decks.folder.Read("new/TOP.DATA"), decks.newText);
    decks.Run({"--allow-truncated"});
    EXPECT_THAT(decks.folder.Read("new/TOP.DATA"), HasSubstr("OIL\n"));
}

TEST(Merge, TellsWhatIsOddBeforeItBegins)
{
    const Decks decks;
    EXPECT_EQ(Deckman({"merge", "new/TOP.DATA", "./new/TOP.DATA"}, decks.run).status, 2);
    EXPECT_EQ(decks.Run({"-o", "new"}).status, 3);
    decks.folder.Write("old/TOP.DATA", "RUNSPEC\nOIL\n");
    EXPECT_THAT(decks.Run({"--dry-run"}).err, HasSubstr("old/TOP.DATA: warning: Nothing in OLD bears the tag"));
    decks.folder.Write("new/TOP.DATA", "-- Generated\nRUNSPEC\nDIMENS\n1 2 3 /\n");
    EXPECT_THAT(decks.Run({"--dry-run"}).err, HasSubstr("new/TOP.DATA: note: The file is generated as a whole."));
    decks.folder.Write("old/TOP.DATA", "-- Generated\nRUNSPEC\nOIL\n");
    EXPECT_THAT(decks.Run({"--dry-run"}).err, HasSubstr("old/TOP.DATA: note: The file is generated as a whole."));
    decks.folder.Write("shared.inc", "WATER  " + tag);
    const std::string include = "RUNSPEC\nINCLUDE " + tag + "'" + decks.folder.Path("shared.inc") + "' /\n";
    decks.folder.Write("old/TOP.DATA", include + "OIL\n");
    decks.folder.Write("new/TOP.DATA", include + "INCLUDE " + tag + "'" + decks.folder.Path("shared.inc") + "' /\n");
    const Outcome outcome = decks.Run({"--dry-run"});
    EXPECT_THAT(outcome.err, HasSubstr("shared.inc: warning: OLD and NEW share the file; nothing is carried from it."));
    EXPECT_THAT(outcome.err, HasSubstr("shared.inc: warning: The file is included more than once"));
}

TEST(Merge, AFailedCommitHarmsNeitherDeck)
{
    const Decks decks;
    for (const char* name : {"", "old", "old/sub", "new"})
        std::filesystem::permissions(decks.folder.Path(name), std::filesystem::perms(0755));
    std::filesystem::permissions(decks.folder.Path("new/TOP.DATA"), std::filesystem::perms(0444));
    Launch run = decks.run;
    run.unprivileged = true;
    const std::string oldText = decks.folder.Read("old/TOP.DATA");
    const Outcome outcome = Deckman({"merge", "old/TOP.DATA", "new/TOP.DATA"}, run);
    EXPECT_EQ(outcome.status, 3);
    EXPECT_THAT(outcome.err, HasSubstr("insufficient privileges"));
    EXPECT_EQ(decks.folder.Read("new/TOP.DATA"), decks.newText);
    EXPECT_EQ(decks.folder.Read("old/TOP.DATA"), oldText);
    EXPECT_FALSE(std::filesystem::exists(decks.folder.Path("new/mine.inc")));
}

} // namespace

} // namespace DeckmanTests

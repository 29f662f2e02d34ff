#include "tests/deckman/Program.h"

/// deckman rename, on a deck with files of one name in two folders, an alias and a grid file.

namespace DeckmanTests {

namespace {

const std::string top =
    "RUNSPEC\nPATHS\n 'SUB' 'sub' /\n/\nINCLUDE\n '$SUB/a.inc' / the first\nGRID\nGDFILE\n 'grid/G' /\n"
    "INCLUDE\n 'b.inc' /\n";

class Rename : public testing::Test
{
protected:
    Rename()
    {
        folder.Write("x.DATA", top);
        folder.Write("sub/a.inc", "OIL\n");
        folder.Write("b.inc", "INCLUDE\n 'other/a.inc' /\n");
        folder.Write("other/a.inc", "PORO\n 1 /\n");
        folder.Write("grid/G.EGRID", "grid");
        folder.Write("free.inc", "mine");
        for (const char* directory : {"", "sub", "other", "grid"})
            std::filesystem::permissions(folder.Path(directory), std::filesystem::perms::all);
    }

    Outcome Run(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), {"rename", "x.DATA"});
        return Deckman(arguments, run);
    }

    TempDir folder;
    Launch run{folder.Path()};
};

} // namespace

TEST_F(Rename, RenamesFilesAndChangesTheLeavesAlone)
{
    const std::string wanted = "from          to\nb.inc         c.inc\ngrid/G.EGRID  grid/H.EGRID\n\n--- x.DATA\n"
                               "+++ x.DATA\n@@ -8,2 +8,2 @@\n GDFILE\n- 'grid/G' /\n+ 'grid/H' /\n@@ -10,2 +10,2 @@\n"
                               " INCLUDE\n- 'b.inc' /\n+ 'c.inc' /\n";
    const Outcome look = Run({"b.inc=c.inc", "G.EGRID=H.EGRID", "--dry-run"});
    EXPECT_EQ(look.status, 0) << look.err;
    EXPECT_EQ(look.out, wanted);
    EXPECT_EQ(folder.Listing(), "b.inc free.inc grid/ grid/G.EGRID other/ other/a.inc sub/ sub/a.inc x.DATA");
    EXPECT_EQ(Run({"b.inc=c.inc", "G.EGRID=H.EGRID", "--backup"}).status, 0);
    EXPECT_EQ(folder.Listing(), "c.inc free.inc grid/ grid/H.EGRID other/ other/a.inc sub/ sub/a.inc x.DATA x.DATA~");
    EXPECT_EQ(folder.Read("grid/H.EGRID"), "grid");
    EXPECT_EQ(folder.Read("x.DATA"), Replaced(Replaced(top, "grid/G", "grid/H"), "b.inc", "c.inc"));
    EXPECT_EQ(folder.Read("x.DATA~"), top);

    // Names may be exchanged, and the top file is one of them.
    const Outcome swap = Run({"x.DATA=c.inc", "c.inc=x.DATA", "--json"});
    EXPECT_EQ(swap.status, 0) << swap.err;
    EXPECT_EQ(folder.Read("x.DATA"), "INCLUDE\n 'other/a.inc' /\n");
    EXPECT_THAT(folder.Read("c.inc"), HasSubstr("INCLUDE\n 'x.DATA' /\n"));
    const auto lines = JsonLines(swap.out);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].dump(), R"({"action":"renamed","from":"x.DATA","to":"c.inc"})");
    EXPECT_EQ(lines[2].dump(), R"({"action":"changed","file":"x.DATA","line":10,"name":"INCLUDE",)"
                               R"("old":"INCLUDE\n 'c.inc' /\n","new":"INCLUDE\n 'x.DATA' /\n"})");
}

/// All files are read anew then.
TEST_F(Rename, TellsWhatItChangedWhereASectionRecurs)
{
    folder.Write("x.DATA", "RUNSPEC\nGRID\nINCLUDE\n 'b.inc' /\nGRID\nPROPS\n");
    const Outcome outcome = Run({"b.inc=c.inc", "--json"});
    const auto lines = JsonLines(outcome.out);
    ASSERT_EQ(lines.size(), 2u) << outcome.err;
    EXPECT_EQ(lines[1].dump(), R"({"action":"changed","file":"x.DATA","line":3,"name":"INCLUDE",)"
                               R"("old":"INCLUDE\n 'b.inc' /\n","new":"INCLUDE\n 'c.inc' /\n"})");
}

TEST_F(Rename, AliasesStay)
{
    EXPECT_EQ(Run({"a.inc=d.inc", "--replace"}).status, 0);
    EXPECT_EQ(folder.Read("x.DATA"), Replaced(top, "$SUB/a.inc", "$SUB/d.inc"));
    EXPECT_EQ(folder.Read("b.inc"), "INCLUDE\n 'other/d.inc' /\n");
    EXPECT_EQ(folder.Read("sub/d.inc"), "OIL\n");
    EXPECT_EQ(folder.Read("other/d.inc"), "PORO\n 1 /\n");
}

TEST_F(Rename, RefusesAndRenamesNothing)
{
    struct Case
    {
        std::vector<std::string> names;
        int status;
        std::string says;
    };
    const Case cases[] = {
        {{"none.inc=c.inc"}, 1, "The deck has no file none.inc that could be renamed."},
        {{"sub/b.inc=c.inc"}, 1, "The deck has no file sub/b.inc that could be renamed. Nearest: b.inc"},
        {{"free.inc=c.inc"}, 1, "The deck has no file free.inc that could be renamed."},
        {{"b.inc=free.inc"}, 1, "b.inc: error: The file free.inc exists; --replace deletes it."},
        {{"b.inc=x.DATA", "--replace"}, 1, "it is a file of the deck"},
        {{"b.inc=c", "x.DATA=c"}, 1, "another file takes that name"},
        {{"b.inc=sub", "--replace"}, 1, "it is a directory"},
        {{"a.inc=d.inc"}, 1, "a.inc may be sub/a.inc or other/a.inc; all files of one name are renamed together"},
        {{"b.inc=it's.inc"}, 1, "no INCLUDE can hold that name"},
        {{"b.inc=b.inc"}, 1, "b.inc has that name already."},
        {{"b.inc=sub/b.inc"}, 2, "sub/b.inc is no name of a file alone; its folder stays."},
        {{"b.inc=c", "b.inc=d"}, 2, "b.inc is given two names."},
        {{"b.inc"}, 2, "OLD=NEW is expected"},
        {{}, 2, "OLD=NEW is required"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(testing::PrintToString(test.names));
        const Outcome outcome = Run(test.names);
        EXPECT_EQ(outcome.status, test.status);
        EXPECT_THAT(outcome.err, HasSubstr(test.says));
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(folder.Listing(), "b.inc free.inc grid/ grid/G.EGRID other/ other/a.inc sub/ sub/a.inc x.DATA");
        EXPECT_EQ(folder.Read("x.DATA") + folder.Read("free.inc"), top + "mine");
    }
    // What can't be written is found out before anything moves, and for a look too.
    using std::filesystem::perms;
    std::filesystem::permissions(folder.Path("x.DATA"), perms::owner_read | perms::others_read);
    folder.Write("x.DATA~", "older");
    run.unprivileged = true;
    for (const char* option : {"--backup", "--dry-run"}) {
        const Outcome outcome = Run({"b.inc=c.inc", option});
        EXPECT_EQ(outcome.status, 3);
        EXPECT_THAT(outcome.err, HasSubstr("x.DATA"));
        EXPECT_EQ(folder.Listing(),
                  "b.inc free.inc grid/ grid/G.EGRID other/ other/a.inc sub/ sub/a.inc x.DATA x.DATA~");
        EXPECT_EQ(folder.Read("x.DATA~"), "older");
    }
    std::filesystem::permissions(folder.Path("x.DATA"), perms::all);
    EXPECT_EQ(Run({"b.inc=free.inc", "--replace", "--backup"}).status, 0);
    EXPECT_EQ(folder.Read("free.inc"), "INCLUDE\n 'other/a.inc' /\n");
    // What goes is kept too, and what isn't replaced leaves no copy.
    EXPECT_EQ(folder.Read("free.inc~"), "mine");
    EXPECT_EQ(folder.Read("x.DATA~"), top);
    EXPECT_EQ(folder.Listing(),
              "free.inc free.inc~ grid/ grid/G.EGRID other/ other/a.inc sub/ sub/a.inc x.DATA x.DATA~");
}

} // namespace DeckmanTests

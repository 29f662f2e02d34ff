#include "tests/deckman/Program.h"

/// deckman sort, on a deck of two files.

namespace DeckmanTests {

namespace {

const std::string topText =
    "-- a deck\nRUNSPEC\nDIMENS\n1 1 1 /\n\n-- about the title\nTITLE\nTwo files\nGRID\nINCLUDE\n"
    " 'in/grid.inc' / the grid\nMULTFLT\n 'F' 0.5 /\n/\n-- where it is\nFAULTS -- by hand\n"
    " 'F' 1 1 1 1 1 1 'I' /\n/\nSCHEDULE\nEND\n 1 left\n";
const std::string topSorted =
    "-- a deck\nRUNSPEC\n\n-- about the title\nTITLE\nTwo files\nDIMENS\n1 1 1 /\nGRID\nINCLUDE\n"
    " 'in/grid.inc' / the grid\n-- where it is\nFAULTS -- by hand\n 'F' 1 1 1 1 1 1 'I' /\n/\n"
    "MULTFLT\n 'F' 0.5 /\n/\nSCHEDULE\nEND\n 1 left\n";
const std::string gridText = "-- corners\nZCORN\n8*1 /\nSPECGRID\n1 1 1 1 F /";
const std::string gridSorted = "-- corners\nSPECGRID\n1 1 1 1 F /\nZCORN\n8*1 /\n";

const std::string moves =
    R"({"action":"moved","name":"TITLE","file":"TOP.DATA","line":7,"newFile":"TOP.DATA","newLine":5})"
    "\n"
    R"({"action":"moved","name":"FAULTS","file":"TOP.DATA","line":16,"newFile":"TOP.DATA","newLine":13})"
    "\n"
    R"({"action":"moved","name":"SPECGRID","file":"in/grid.inc","line":4,"newFile":"in/grid.inc","newLine":2})"
    "\n";

class Sort : public testing::Test
{
protected:
    Sort()
    {
        folder.Write("TOP.DATA", topText);
        folder.Write("in/grid.inc", gridText);
        for (const char* directory : {"", "in"})
            std::filesystem::permissions(folder.Path(directory), std::filesystem::perms::all);
    }
    Outcome Run(const std::vector<std::string>& options) const
    {
        std::vector<std::string> arguments{"sort", "TOP.DATA"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return Deckman(arguments, run);
    }
    /// Every file of the folder with its text.
    std::string All() const
    {
        std::string all;
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Path())) {
            if (entry.is_regular_file()) names.push_back(entry.path().lexically_relative(folder.Path()).string());
        }
        std::sort(names.begin(), names.end());
        for (const std::string& name : names)
            all += "[" + name + "]\n" + folder.Read(name);
        return all;
    }

    TempDir folder;
    Launch run{folder.Path()};
};

} // namespace

TEST_F(Sort, WritesAllFilesAndTellsWhatMoved)
{
    const Outcome outcome = Run({});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, IsEmpty());
    EXPECT_THAT(outcome.out, ContainsRegex("TITLE +TOP.DATA:7 +TOP.DATA:5\n"));
    EXPECT_THAT(outcome.out, ContainsRegex("FAULTS +TOP.DATA:16 +TOP.DATA:13\n"));
    EXPECT_THAT(outcome.out, ContainsRegex("SPECGRID +in/grid.inc:4 +in/grid.inc:2\n"));
    const std::string sorted = "[TOP.DATA]\n" + topSorted + "[in/grid.inc]\n" + gridSorted;
    EXPECT_EQ(All(), sorted);

    // What is in order is not written.
    const auto written = std::filesystem::last_write_time(folder.Path("TOP.DATA"));
    const Outcome again = Run({});
    EXPECT_EQ(again.status, 0);
    EXPECT_THAT(again.out + again.err, IsEmpty());
    EXPECT_EQ(All(), sorted);
    EXPECT_EQ(std::filesystem::last_write_time(folder.Path("TOP.DATA")), written);
}

TEST_F(Sort, ADryRunShowsTheSameAndWritesNothing)
{
    const std::string before = All();
    EXPECT_EQ(Run({"--dry-run", "--backup", "--json"}).out, moves);
    const Outcome outcome = Run({"--dry-run"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, ContainsRegex("FAULTS +TOP.DATA:16 +TOP.DATA:13\n"));
    EXPECT_THAT(outcome.out, HasSubstr("\n\n--- TOP.DATA\n+++ TOP.DATA\n"
                                       "@@ -1,20 +1,20 @@\n"
                                       " -- a deck\n RUNSPEC\n-DIMENS\n-1 1 1 /\n \n -- about the title\n TITLE\n"
                                       " Two files\n+DIMENS\n+1 1 1 /\n GRID\n INCLUDE\n  'in/grid.inc' / the grid\n"
                                       "-MULTFLT\n- 'F' 0.5 /\n-/\n -- where it is\n FAULTS -- by hand\n"
                                       "  'F' 1 1 1 1 1 1 'I' /\n+/\n+MULTFLT\n+ 'F' 0.5 /\n /\n SCHEDULE\n END\n"));
    EXPECT_THAT(outcome.out, HasSubstr("--- in/grid.inc\n+++ in/grid.inc\n@@ -1,5 +1,5 @@\n -- corners\n"
                                       "-ZCORN\n-8*1 /\n SPECGRID\n 1 1 1 1 F /\n+ZCORN\n+8*1 /\n"));
    EXPECT_EQ(All(), before);

    EXPECT_EQ(Run({"--json"}).out, moves);
}

TEST_F(Sort, ChangesFarApartAreShownApart)
{
    std::string middle;
    for (int i = 1; i <= 20; ++i)
        middle += "-- line " + std::to_string(i) + "\n";
    folder.Write("TOP.DATA",
                 "RUNSPEC\nOIL\nTITLE\nA\n\n" + middle + "GRID\nZCORN\n8*1 /\nSPECGRID\n1 1 1 1 F /\nEND\n");
    const std::string out = Run({"--dry-run"}).out;
    EXPECT_THAT(out, HasSubstr("@@ -1,7 +1,7 @@\n RUNSPEC\n"));
    EXPECT_THAT(out, HasSubstr("@@ -24,8 +24,8 @@\n -- line 19\n -- line 20\n GRID\n-ZCORN\n"));
}

TEST_F(Sort, ABackupKeepsTheOldFiles)
{
    folder.Write("TOP.DATA~", "older");
    EXPECT_EQ(Run({"--backup"}).status, 0);
    EXPECT_EQ(All(), "[TOP.DATA]\n" + topSorted + "[TOP.DATA~]\n" + topText + "[in/grid.inc]\n" + gridSorted +
                         "[in/grid.inc~]\n" + gridText);
}

TEST_F(Sort, LineEndsStayAsTheyAre)
{
    const auto withCrLf = [](std::string text) {
        for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2)
            text.insert(at, 1, '\r');
        return text;
    };
    folder.Write("TOP.DATA", withCrLf(topText));
    EXPECT_EQ(Run({}).status, 0);
    EXPECT_EQ(All(), "[TOP.DATA]\n" + withCrLf(topSorted) + "[in/grid.inc]\n" + gridSorted);
}

TEST_F(Sort, AFileThatCannotBeWrittenStopsAll)
{
    using std::filesystem::perms;
    const std::string before = All();
    std::filesystem::permissions(folder.Path("TOP.DATA"), perms::all);
    std::filesystem::permissions(folder.Path("in/grid.inc"),
                                 perms::owner_read | perms::group_read | perms::others_read);
    run.unprivileged = true;
    const Outcome outcome = Run({});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr("Fails to commit changes due to insufficient privileges"));
    EXPECT_THAT(outcome.err, HasSubstr("in/grid.inc"));
    EXPECT_EQ(All(), before);

    // What can't be copied isn't changed.
    std::filesystem::permissions(folder.Path("in/grid.inc"), perms::all);
    folder.Write("TOP.DATA~/x", "a folder in the way");
    const Outcome blocked = Run({"--backup"});
    EXPECT_EQ(blocked.status, 3);
    EXPECT_THAT(blocked.err, HasSubstr("TOP.DATA: error: The file could not be copied for --backup"));
    EXPECT_EQ(folder.Read("TOP.DATA"), topText);
    EXPECT_EQ(folder.Read("in/grid.inc"), gridText);
}

} // namespace DeckmanTests

#include "tests/deckman/Program.h"

#include <sys/stat.h>

/// A directory of decks with its cache, and the other verbs with --project.

namespace DeckmanTests {

namespace {

/// A deck outside of every project, and a run beside it.
struct Place
{
    Place()
    {
        folder.Write("src/TOP.DATA", "RUNSPEC\nINCLUDE\n 'inc/a.inc' /\nGRID\nEND\n");
        folder.Write("src/inc/a.inc", "OIL\nGAS\n");
        for (const char* directory : {"", "src", "src/inc"})
            std::filesystem::permissions(folder.Path(directory), std::filesystem::perms::all);
    }
    Outcome Run(const std::vector<std::string>& arguments) const { return Deckman(arguments, run); }

    TempDir folder;
    Launch run{folder.Path()};
};

} // namespace

TEST(Project, IsMadeFilledListedAndFlushed)
{
    const Place place;
    EXPECT_EQ(place.Run({"project", "init", "new/p"}).status, 0);
    EXPECT_EQ(place.folder.Read("new/p/deck_cache_xml.lock"), "");
    EXPECT_EQ(place.Run({"project", "init", "new/p"}).status, 0);
    EXPECT_EQ(place.Run({"project", "ls", "new/p"}).err, "new/p: note: There are no decks in this project.\n");

    const Outcome added = place.Run({"project", "add", "new/p", "base", "src/TOP.DATA", "--json"});
    EXPECT_EQ(added.status, 0) << added.err;
    EXPECT_EQ(added.out, "{\"name\":\"base\",\"file\":\"base/base.DATA\",\"keywords\":5}\n");
    EXPECT_EQ(place.folder.Read("new/p/base/base.DATA"), "RUNSPEC\nINCLUDE\n 'a.inc' /\nGRID\nEND\n");
    EXPECT_EQ(place.folder.Read("new/p/base/a.inc"), "OIL\nGAS\n");
    EXPECT_EQ(place.folder.Read("new/p/base/DeckCache.ptd").substr(0, 4), "TFSB");

    EXPECT_EQ(place.Run({"project", "add", "new/p", "x.VFP", "src/inc/a.inc"}).status, 0);
    EXPECT_EQ(place.Run({"project", "add", "new/p", "B.2", "src/inc/a.inc"}).status, 0);
    place.folder.Write("new/p/empty/file", "");
    place.folder.Write("new/p/Cache__/Cache__.DATA", "OIL\n");
    place.folder.Write("new/p/.git/.git.DATA", "OIL\n");
    EXPECT_EQ(place.Run({"project", "ls", "new/p", "--json"}).out,
              "{\"name\":\"B.2\",\"file\":\"B.2/B.DATA\",\"keywords\":2}\n"
              "{\"name\":\"base\",\"file\":\"base/base.DATA\",\"keywords\":5}\n"
              "{\"name\":\"x.VFP\",\"file\":\"x.VFP/x.VFP\",\"keywords\":2}\n");

    const Outcome flushed = place.Run({"project", "flush", "new/p", "--json"});
    EXPECT_EQ(flushed.status, 0);
    EXPECT_THAT(flushed.out, HasSubstr("{\"name\":\"base\",\"file\":\"base/base.DATA\",\"keywords\":null}\n"));
    EXPECT_THAT(place.folder.Listing(), Not(HasSubstr("DeckCache.ptd")));
    EXPECT_THAT(place.folder.Listing(), Not(HasSubstr("Cache__.DATA")));
    EXPECT_TRUE(place.folder.Exists("new/p/deck_cache_xml.lock"));
}

TEST(Project, InitTakesInTheDecksThatAreThere)
{
    const Place place;
    place.folder.Write("p/old/old.DATA", "RUNSPEC\nOIL\n");
    EXPECT_EQ(place.Run({"project", "init", "p", "--json"}).out,
              "{\"name\":\"old\",\"file\":\"old/old.DATA\",\"keywords\":2}\n");
    EXPECT_TRUE(place.folder.Exists("p/old/DeckCache.ptd"));
}

TEST(Project, WhatCannotBeDoneNamesTheFile)
{
    const Place place;
    place.folder.Write("p/base/base.DATA", "OIL\n");
    place.folder.Write("p/Free/x", "");
    place.folder.Write("closed/p/x", "");
    std::filesystem::permissions(place.folder.Path("closed"), static_cast<std::filesystem::perms>(0555));
    std::filesystem::permissions(place.folder.Path("p"), std::filesystem::perms::all);
    Launch run = place.run;
    run.unprivileged = true;
    struct Case
    {
        std::vector<std::string> arguments;
        int status;
        std::string message;
    };
    const Case cases[] = {
        {{"project", "ls", "none"}, 3, "none: error: The directory does not exist; deckman project init makes a "},
        {{"project", "ls", "src/TOP.DATA"}, 3, "src/TOP.DATA: error: This is a file, and not the directory of a "},
        {{"project", "flush", "none"}, 3, "none: error: The directory does not exist"},
        {{"ls", "src/TOP.DATA", "--project", "none"}, 3, "none: error: The directory does not exist"},
        {{"check", "src/TOP.DATA", "--project", "none"}, 3, "none: error: The directory does not exist"},
        {{"diff", "src/TOP.DATA", "src/TOP.DATA", "--project", "none"}, 3, "none: error: The directory does not"},
        {{"project", "init", "src/TOP.DATA"}, 3, "src/TOP.DATA: error: This is a file"},
        {{"project", "init", "src/TOP.DATA/p"}, 3, "src/TOP.DATA/p: error: The directory cannot be made: Not a dir"},
        {{"project", "init", "closed/q"}, 3, "closed/q: error: The directory cannot be made: Permission denied."},
        {{"project", "init", "closed/p"}, 3, "closed/p/deck_cache_xml.lock: error: The file cannot be made: Perm"},
        {{"project", "add", "p", "base", "src/TOP.DATA"}, 3, "p/base: error: Something of this name stands in the"},
        {{"project", "add", "p", "BASE", "src/TOP.DATA"}, 3, "p/base: error: Something of this name stands in the"},
        {{"project", "add", "p", "Free", "src/TOP.DATA"}, 3, "p/Free: error: Something of this name stands in the"},
        {{"project", "add", "p", "new", "none.DATA"}, 3, "none.DATA: error: The file does not exist."},
        {{"project", "add", "closed", "new", "src/TOP.DATA"}, 3, "closed/new cannot be made: Permission denied."},
        {{"project", "add", "p", "a/b", "src/TOP.DATA"}, 2, "a/b: error: A deck's name holds no slash"},
        {{"project", "add", "p", ".a", "src/TOP.DATA"}, 2, ".a: error: A deck's name does not begin with a dot."},
        {{"project", "add", "p", " a", "src/TOP.DATA"}, 2, "neither is empty nor begins or ends with a blank."},
        {{"project", "add", "p", "a\nb", "src/TOP.DATA"}, 2, "A deck's name holds no control characters."},
        {{"project", "add", "p", "Cache__", "src/TOP.DATA"}, 2, "Cache__: error: This is the name of a folder of "},
        {{"project", "ls", "p", "--project", "p"}, 2, "This verb takes the directory itself."},
        {{"project"}, 2, "deckman: error: project what? A second word is missing.\nSee deckman project --help.\n"},
        {{"project", "lst", "p"}, 2, "There is no verb project lst. Nearest: ls."},
        {{"project", "add", "p"}, 2, "See deckman project add --help.\n"},
        {{"project", "ls", "p", "--jsn"}, 2, "deckman: error: project ls has no option --jsn. Nearest: --json."},
    };
    const std::string listing = place.folder.Listing();
    for (const Case& test : cases) {
        const Outcome outcome = Deckman(test.arguments, run);
        EXPECT_EQ(outcome.status, test.status) << test.message;
        EXPECT_THAT(outcome.err, HasSubstr(test.message));
        EXPECT_THAT(outcome.out, IsEmpty());
    }
    EXPECT_EQ(place.folder.Listing(), listing);
}

TEST(Project, AddIsPlannedWithoutWriting)
{
    const Place place;
    place.folder.Write("p/deck_cache_xml.lock", "");
    const std::string listing = place.folder.Listing();
    const Outcome planned = place.Run({"project", "add", "p", "base", "src/TOP.DATA", "--dry-run"});
    EXPECT_THAT(planned.out, HasSubstr("base  base/base.DATA"));
    EXPECT_THAT(planned.out, HasSubstr("- 'inc/a.inc' /\n+ 'a.inc' /\n"));
    const auto rows = JsonLines(place.Run({"project", "add", "p", "b", "src/TOP.DATA", "--dry-run", "--json"}).out);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].dump(), R"({"name":"b","file":"b/b.DATA","keywords":null})");
    EXPECT_EQ(rows[1].at("action"), "changed");
    EXPECT_EQ(place.folder.Listing(), listing);
}

TEST(Project, OtherVerbsUseItsCacheAndSayTheSame)
{
    const Place place;
    place.folder.Write("p/d/d.DATA",
                       "RUNSPEC\nINCLUDE\n 'inc/a.inc' /\nGRID\nPORO\n 4*0.25 /\nSCHEDULE\nPERMX\n 1 /\n");
    place.folder.Write("p/d/inc/a.inc", "OIL\nGAS\n");
    const std::vector<std::vector<std::string>> commands = {
        {"ls", "p/d/d.DATA"},          {"tree", "p/d/d.DATA"},           {"get", "p/d/d.DATA", "PORO"},
        {"sections", "p/d/d.DATA"},    {"find", "p/d/d.DATA", "0\\.25"}, {"diff", "p/d/d.DATA", "src/TOP.DATA"},
        {"show", "p/d/d.DATA", "OIL"}, {"check", "p/d/d.DATA"},
    };
    for (const auto& command : commands) {
        const Outcome plain = place.Run(command);
        std::vector<std::string> withProject = command;
        withProject.insert(withProject.end(), {"--project", "p"});
        // The first run scans and stores, the second takes from the cache; a check scans whatever there is.
        for (int round = 0; round < 2; ++round) {
            const Outcome outcome = place.Run(withProject);
            EXPECT_EQ(outcome.out, plain.out) << command[0] << round;
            EXPECT_EQ(outcome.status, plain.status) << command[0] << round;
            EXPECT_EQ(outcome.err, plain.err) << command[0] << round;
        }
        EXPECT_EQ(place.folder.Exists("p/d/DeckCache.ptd"), command[0] != "check") << command[0];
        EXPECT_EQ(place.Run({"project", "flush", "p"}).status, 0);
    }
    EXPECT_THAT(place.Run({"check", "p/d/d.DATA", "--project", "p"}).out, HasSubstr("PERMX is not valid"));
}

TEST(Project, AnUnchangedDeckIsTakenFromTheCache)
{
    const Place place;
    place.folder.Write("p/d/d.DATA", "RUNSPEC\nOIL\nGAS\n");
    const auto runLs = [&] {
        EXPECT_EQ(place.Run({"ls", "p/d/d.DATA", "--project", "p"}).status, 0);
        struct stat status
        {
        };
        EXPECT_EQ(::stat(place.folder.Path("p/d/DeckCache.ptd").c_str(), &status), 0);
        return status.st_ino;
    };
    // Who scans a file stores it, and a table that is stored is a new file.
    const ino_t first = runLs();
    EXPECT_EQ(runLs(), first);
    place.folder.Write("p/d/d.DATA", "RUNSPEC\nOIL\nGAS\nWATER\n");
    EXPECT_NE(runLs(), first);
}

TEST(Project, MovesWithItsIncludes)
{
    const Place place;
    place.folder.Write("out/o.inc", "OIL\n");
    place.folder.Write("p/d/d.DATA", "RUNSPEC\nINCLUDE\n '../../out/o.inc' / out\nGRID\n");
    place.folder.Write("full/file", "x");
    EXPECT_EQ(place.Run({"project", "init", "p"}).status, 0);

    const std::string listing = place.folder.Listing();
    const Outcome planned = place.Run({"project", "move", "p", "deep/er/q", "--dry-run"});
    EXPECT_EQ(planned.status, 0) << planned.err;
    EXPECT_THAT(planned.out, HasSubstr("--- p/d/d.DATA\n+++ p/d/d.DATA\n@@ -2,2 +2,2 @@\n INCLUDE\n"
                                       "- '../../out/o.inc' / out\n+ '../../../../out/o.inc' / out\n"));
    const auto rows = JsonLines(place.Run({"project", "move", "p", "deep/er/q", "--dry-run", "--json"}).out);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].dump(), R"({"name":"d","file":"d/d.DATA","keywords":null})");
    EXPECT_EQ(rows[1].dump(), R"({"action":"changed","file":"d/d.DATA","line":2,"name":"INCLUDE",)"
                              R"("old":"INCLUDE\n '../../out/o.inc' / out\n",)"
                              R"("new":"INCLUDE\n '../../../../out/o.inc' / out\n"})");
    EXPECT_EQ(place.folder.Listing(), listing);

    struct Case
    {
        std::vector<std::string> arguments;
        int status;
        std::string message;
    };
    const Case cases[] = {
        {{"project", "move", "p", "full"},
         3,
         "full: error: The directory is not empty; --replace deletes what is there."},
        {{"project", "move", "p", "p/d/x"}, 3, "p: error: The project directory cannot be moved into itself."},
        {{"project", "move", "p", ".", "--replace"}, 3, "p: error: The project directory cannot be moved into itself."},
        {{"project", "move", "p", "full/file"}, 3, "p: error: DeckManager project dir must be a complete path"},
        {{"project", "move", "p", "./p/"}, 2, "The project lies there already."},
        {{"project", "move", "none", "q"}, 3, "none: error: The directory does not exist"},
    };
    for (const Case& test : cases) {
        const Outcome outcome = place.Run(test.arguments);
        EXPECT_EQ(outcome.status, test.status) << test.message;
        EXPECT_THAT(outcome.err, HasSubstr(test.message));
        EXPECT_EQ(place.folder.Listing(), listing) << test.message;
    }

    const Outcome moved = place.Run({"project", "move", "p", "deep/er/q", "--json"});
    EXPECT_EQ(moved.status, 0) << moved.err;
    EXPECT_EQ(moved.out, "{\"name\":\"d\",\"file\":\"d/d.DATA\",\"keywords\":4}\n");
    EXPECT_EQ(place.folder.Read("deep/er/q/d/d.DATA"), "RUNSPEC\nINCLUDE\n '../../../../out/o.inc' / out\nGRID\n");
    EXPECT_FALSE(place.folder.Exists("p"));
    EXPECT_EQ(place.Run({"project", "move", "deep/er/q", "full", "--replace"}).status, 0);
    EXPECT_EQ(place.folder.Read("full/d/d.DATA"), "RUNSPEC\nINCLUDE\n '../../out/o.inc' / out\nGRID\n");
    EXPECT_FALSE(place.folder.Exists("full/file"));
}

TEST(Project, WithABackupNothingIsDeleted)
{
    const Place place;
    place.folder.Write("out/o.inc", "OIL\n");
    place.folder.Write("full/file", "x");
    const std::string text = "RUNSPEC\nINCLUDE\n '../../out/o.inc' /\n";
    place.folder.Write("p/d/d.DATA", text);
    EXPECT_EQ(place.Run({"project", "add", "p", "e", "src/TOP.DATA", "--backup"}).status, 0);
    const std::vector<std::string> move = {"project", "move", "p", "full", "--replace", "--backup", "--json"};

    place.folder.Write("full~/older", "x");
    const std::string listing = place.folder.Listing();
    const Outcome refused = place.Run(move);
    EXPECT_EQ(refused.status, 3);
    EXPECT_EQ(refused.err, "full~: error: Something stands here already, where --backup would keep what is in full.\n");
    EXPECT_EQ(place.folder.Listing(), listing);
    std::filesystem::remove_all(place.folder.Path("full~"));
    // A move that is refused leaves all in its place.
    place.folder.Write("p/d/bad.DATA", "INCLUDE\n '" + place.folder.Path("p/d/d.DATA") + "' /\n");
    const std::string longName = std::string(140, 'x');
    place.folder.Write(longName + "/file", "x");
    EXPECT_EQ(place.Run({"project", "move", "p", longName, "--replace", "--backup"}).status, 3);
    EXPECT_TRUE(place.folder.Exists(longName + "/file"));
    EXPECT_FALSE(place.folder.Exists(longName + "~"));

    EXPECT_EQ(place.Run(move).status, 0);
    EXPECT_EQ(place.folder.Read("p/d/d.DATA"), text);
    EXPECT_EQ(place.folder.Read("full~/file"), "x");
    EXPECT_FALSE(place.folder.Exists("full/file"));
    EXPECT_EQ(place.folder.Read("full/d/d.DATA"), text);
}

TEST(Project, AMoveThatCannotBeDoneSaysWhereTheProjectIs)
{
    const Place place;
    place.folder.Write("p/d/d.DATA", "RUNSPEC\n");
    place.folder.Write("closed/x", "");
    for (const char* directory : {"p", "p/d"})
        std::filesystem::permissions(place.folder.Path(directory), std::filesystem::perms::all);
    std::filesystem::permissions(place.folder.Path("closed"), static_cast<std::filesystem::perms>(0555));
    Launch run = place.run;
    run.unprivileged = true;
    const Outcome refused = Deckman({"project", "move", "p", "closed/q"}, run);
    EXPECT_EQ(refused.status, 3);
    EXPECT_EQ(refused.err, "p: error: The project cannot be moved to " + place.folder.Path("closed/q") + ".\n    " +
                               place.folder.Path("closed/q.moving") + ": Permission denied.\n    It is whole in " +
                               place.folder.Path("p") + ".\n");
    // What can't be deleted in the end is told, and the new place is whole.
    std::filesystem::permissions(place.folder.Path("p/d"), static_cast<std::filesystem::perms>(0555));
    const Outcome moved = Deckman({"project", "move", "p", "q"}, run);
    EXPECT_EQ(moved.status, 3);
    EXPECT_EQ(moved.err, "deckman: error: The project has moved to " + place.folder.Path("q") +
                             ", where it is whole. What cannot be deleted is left in " + place.folder.Path("p") +
                             ".\n");
    EXPECT_EQ(place.folder.Read("q/d/d.DATA"), "RUNSPEC\n");
    std::filesystem::permissions(place.folder.Path("p/d"), std::filesystem::perms::all);
}

} // namespace DeckmanTests

#include "tests/deckman/Program.h"

/// Decks that are broken, missing, or no decks at all: what is said, with which status, and that the program ends.

namespace DeckmanTests {

namespace {

const std::string include = "INCLUDE\n '";

std::vector<std::string> Names(const std::string& json)
{
    std::vector<std::string> names;
    for (const auto& row : JsonLines(json))
        names.push_back(row.at("name"));
    return names;
}

} // namespace

TEST(BadInput, TopFileThatCannotBeReadIsNamedWithStatus3)
{
    const TempDir folder;
    folder.Write("secret.DATA", "RUNSPEC\n");
    folder.Write("sub/x.DATA", "RUNSPEC\n");
    folder.Write("closed/x.DATA", "RUNSPEC\n");
    std::filesystem::permissions(folder.Path("secret.DATA"), std::filesystem::perms::none);
    std::filesystem::permissions(folder.Path("closed"), std::filesystem::perms::none);
    Launch run = In(folder);
    run.unprivileged = true;

    const std::pair<const char*, const char*> cases[] = {
        {"none.DATA", "none.DATA: error: The file does not exist."},
        {"no/such/folder.DATA", "no/such/folder.DATA: error: The file does not exist."},
        {"sub", "sub: error: This is a directory, and not the top file of a deck."},
        {"sub/", "sub/: error: This is a directory, and not the top file of a deck."},
        {"secret.DATA", "secret.DATA: error: No permission to read the file."},
        {"closed/x.DATA", "closed/x.DATA: error: No permission to enter the folder of the file."},
        {"/dev/null", "/dev/null: error: This is not a regular file."},
        {"", ": error: The file does not exist."},
    };
    for (const auto& [name, message] : cases) {
        for (const char* verb : {"ls", "tree", "sections", "scopes"}) {
            const Outcome outcome = Deckman({verb, name}, run);
            EXPECT_EQ(outcome.status, 3) << verb << " " << name;
            EXPECT_THAT(outcome.err, HasSubstr(message)) << verb;
            EXPECT_THAT(outcome.out, IsEmpty());
        }
    }
    const std::string tooLong(5000, 'x');
    EXPECT_EQ(Deckman({"ls", tooLong}, run).status, 3);
}

TEST(BadInput, MissingIncludeLeavesTheDeckOpen)
{
    const TempDir folder;
    folder.Write("TOP.DATA", "RUNSPEC\n" + include + "gone.inc' /\nGRID\n");
    const Launch run = In(folder);

    const Outcome listed = Deckman({"ls", "TOP.DATA", "--json"}, run);
    EXPECT_EQ(listed.status, 0);
    EXPECT_THAT(listed.err, IsEmpty());
    EXPECT_THAT(Names(listed.out), testing::ElementsAre("RUNSPEC", "INCLUDE", "GRID"));

    const Outcome tree = Deckman({"tree", "TOP.DATA"}, run);
    EXPECT_EQ(tree.status, 0);
    EXPECT_THAT(tree.out, testing::ContainsRegex("`-- gone.inc +missing\n"));
    const auto top = JsonLines(Deckman({"tree", "TOP.DATA", "--json"}, run).out).at(0);
    EXPECT_EQ(top.at("includes").at(0).dump(),
              R"({"file":"gone.inc","exists":false,"keywords":0,"bytes":0,"includes":[]})");
    EXPECT_FALSE(folder.Exists("gone.inc"));
}

TEST(BadInput, IncludeWhoseNameHasNoValueIsShownAsWritten)
{
    const TempDir folder;
    folder.Write("TOP.DATA", "RUNSPEC\n" + include + "$NONE/a.inc' / text\nINCLUDE\n $NONE /\nINCLUDE\n/\n");
    const auto tree = JsonLines(Deckman({"tree", "TOP.DATA", "--json"}, In(folder)).out).at(0);
    std::vector<std::string> names;
    for (const auto& link : tree.at("includes"))
        names.push_back(link.at("file"));
    EXPECT_THAT(names, testing::ElementsAre("$NONE/a.inc", "$NONE", "/"));
}

TEST(BadInput, IncludeWithoutPermissionIsAFileFailure)
{
    // The file itself, or the folder that it lies in.
    for (const char* closed : {"closed/secret.inc", "closed"}) {
        SCOPED_TRACE(closed);
        const TempDir folder;
        folder.Write("TOP.DATA", "RUNSPEC\n" + include + "closed/secret.inc' /\nGRID\n");
        folder.Write("closed/secret.inc", "OIL\n");
        std::filesystem::permissions(folder.Path(closed), std::filesystem::perms::none);
        Launch run = In(folder);
        run.unprivileged = true;

        const Outcome outcome = Deckman({"ls", "TOP.DATA", "--json"}, run);
        EXPECT_EQ(outcome.status, 3);
        EXPECT_THAT(outcome.err, HasSubstr("closed/secret.inc: error: Loading keyword file: Fails to open file:"));
        EXPECT_THAT(Names(outcome.out), testing::ElementsAre("RUNSPEC", "INCLUDE", "GRID"));
        std::filesystem::permissions(folder.Path("closed"), std::filesystem::perms::owner_all);
    }
}

TEST(BadInput, IncludeOfADirectoryIsTold)
{
    const TempDir folder;
    folder.Write("TOP.DATA", "RUNSPEC\n" + include + "sub' /\nGRID\n");
    folder.Write("sub/x.inc", "");
    const Outcome outcome = Deckman({"tree", "TOP.DATA"}, In(folder));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, testing::ContainsRegex("^TOP.DATA:2: error: The INCLUDE path \"sub\".* is not a file.\n"
                                                    "    Ensure that [^\n]*\n$"));
    EXPECT_THAT(outcome.out, testing::ContainsRegex("sub .*not included"));
}

TEST(BadInput, RingIsReportedOnceAndTheWalkEnds)
{
    struct Case
    {
        const char* what;
        std::vector<std::pair<std::string, std::string>> files;
        std::vector<std::string> names;
        std::string place;
        std::string ring;
    };
    const Case cases[] = {
        {"a file that includes itself",
         {{"TOP.DATA", "RUNSPEC\n" + include + "TOP.DATA' /\nGRID\n"}},
         {"RUNSPEC", "INCLUDE", "GRID"},
         "TOP.DATA:2: error: ",
         "TOP.DATA -> TOP.DATA."},
        {"a ring of three",
         {{"TOP.DATA", "RUNSPEC\n" + include + "a.inc' /\nGRID\n"},
          {"a.inc", "OIL\n" + include + "b.inc' /\n"},
          {"b.inc", "GAS\n" + include + "a.inc' /\n"}},
         {"RUNSPEC", "INCLUDE", "OIL", "INCLUDE", "GAS", "INCLUDE", "GRID"},
         "b.inc:2: error: ",
         "b.inc -> a.inc -> b.inc."},
    };
    for (const Case& c : cases) {
        const TempDir folder;
        for (const auto& [name, text] : c.files)
            folder.Write(name, text);
        for (const char* verb : {"ls", "tree", "sections", "scopes"}) {
            const Outcome outcome = Deckman({verb, "TOP.DATA", "--json"}, In(folder));
            EXPECT_EQ(outcome.status, 1) << c.what << ", " << verb;
            EXPECT_TRUE(outcome.err.starts_with(c.place)) << outcome.err;
            EXPECT_THAT(outcome.err, HasSubstr(c.ring)) << verb;
            EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
            if (std::string(verb) == "ls") {
                EXPECT_EQ(Names(outcome.out), c.names) << c.what;
            }
        }
        EXPECT_THAT(Deckman({"tree", "TOP.DATA"}, In(folder)).out, HasSubstr("not included")) << c.what;
    }
}

TEST(BadInput, FileThatIsIncludedTwiceAppearsTwice)
{
    const TempDir folder;
    folder.Write("TOP.DATA", "RUNSPEC\n" + include + "a.inc' /\n" + include + "a.inc' /\nGRID\n");
    folder.Write("a.inc", "OIL\n\nGAS\n");
    const Launch run = In(folder);
    const Outcome listed = Deckman({"ls", "TOP.DATA", "--json"}, run);
    EXPECT_EQ(listed.status, 0);
    const auto rows = JsonLines(listed.out);
    ASSERT_EQ(rows.size(), 8u);
    for (const std::size_t i : {2u, 3u, 5u, 6u}) {
        EXPECT_EQ(rows[i].at("file"), "a.inc");
        EXPECT_EQ(rows[i].at("depth"), 1);
        EXPECT_EQ(rows[i].at("index"), i + 1);
    }
    EXPECT_EQ(rows[7].at("depth"), 0);
    EXPECT_EQ(Deckman({"show", "TOP.DATA", "OIL#2"}, run).out, "OIL\n");
    // The scopes of both passes end within their own pass.
    const auto scopes = JsonLines(Deckman({"scopes", "TOP.DATA", "--json"}, run).out);
    ASSERT_EQ(scopes.size(), 2u);
    EXPECT_EQ(scopes[0].dump(), R"({"head":"RUNSPEC","begin":1,"end":8,"depth":0})");
}

TEST(BadInput, TextThatIsNoDeckEndsQuietly)
{
    std::string binary = "\xFF\xD8\xFF\xE0";
    for (int i = 0; i < 20000; ++i)
        binary += static_cast<char>((i * 7919 + i / 251) & 0xFF);
    const std::pair<const char*, std::string> cases[] = {
        {"empty", ""},
        {"comments only", "-- nothing\n-- here\n"},
        {"line ends only", "\n\r\n\n"},
        {"zeros", std::string(1 << 20, '\0')},
        {"one long line", std::string(5 << 20, 'X')},
        {"quotes", std::string(100000, '\'')},
        {"a picture", binary},
    };
    for (const auto& [what, text] : cases) {
        const TempDir folder;
        folder.Write("TOP.DATA", text);
        for (const char* verb : {"ls", "sections", "scopes"}) {
            const Outcome outcome = Deckman({verb, "TOP.DATA"}, In(folder));
            EXPECT_EQ(outcome.status, 0) << what << ", " << verb;
            EXPECT_THAT(outcome.out, IsEmpty()) << what;
        }
        const Outcome tree = Deckman({"tree", "TOP.DATA", "--json"}, In(folder));
        EXPECT_EQ(JsonLines(tree.out).at(0).at("bytes"), text.size()) << what;
        EXPECT_EQ(Deckman({"show", "TOP.DATA", "@1"}, In(folder)).status, 1) << what;
    }
}

TEST(BadInput, DirtyDeckKeepsItsBytes)
{
    const TempDir folder;
    // Lower case, tabs, Latin-1, mixed line ends, text behind a slash, no last line end.
    folder.Write("TOP.DATA",
                 "runspec\t\r\ntitle \r\nFelt \xD8st, \"n\xE6r\" \\ \r\n\r\noil\n\ndimens\n\t1 2\t3 / text\n"
                 "-- above\ngrid");
    const Launch run = In(folder);
    const auto rows = JsonLines(Deckman({"ls", "TOP.DATA", "--json"}, run).out);
    ASSERT_EQ(rows.size(), 5u);
    EXPECT_EQ(rows[4].dump(), R"({"index":5,"name":"GRID","section":"GRID","file":"TOP.DATA","line":10,)"
                              R"("position":75,"size":4,"depth":0,"generated":false,"suppressed":false})");
    EXPECT_EQ(Deckman({"show", "TOP.DATA", "DIMENS"}, run).out, "dimens\n\t1 2\t3 / text\n");
    EXPECT_EQ(Deckman({"show", "TOP.DATA", "GRID"}, run).out, "grid\n");
    const auto title = JsonLines(Deckman({"show", "TOP.DATA", "TITLE", "--json"}, run).out).at(0);
    EXPECT_EQ(title.at("text"), "title \nFelt Øst, \"nær\" \\ \n");
}

TEST(BadInput, WordsBehindTheEndAlarmNobody)
{
    const TempDir folder;
    folder.Write("TOP.DATA", "RUNSPEC\nINCLUDE\n'a.inc' /\nNOSUCH 1\nEND\nNOTE this\n");
    folder.Write("a.inc", "OIL\nENDINC\nNOTE that\n");
    const std::string unknown = folder.Path("TOP.DATA") + ":4: warning: Keyword NOSUCH is not recognized.\n";
    EXPECT_EQ(Deckman({"ls", folder.Path("TOP.DATA")}).err, unknown);
    EXPECT_THAT(
        Deckman({"ls", "--all", folder.Path("TOP.DATA")}).err,
        testing::AllOf(HasSubstr("TOP.DATA:6: warning: Keyword NOTE"), HasSubstr("a.inc:3: warning: Keyword NOTE")));
}

TEST(BadInput, AQuantityInThePlaceOfANumberIsNoError)
{
    const TempDir folder;
    folder.Write("TOP.DATA", "SCHEDULE\nWCONPROD\n P OPEN ORAT WUOPRL /\n Q OPEN ORAT 1OO /\n/\n");
    const Outcome outcome = Deckman({"get", folder.Path("TOP.DATA"), "WCONPROD"});
    EXPECT_THAT(outcome.err,
                HasSubstr(":3: note: WUOPRL stands in the place of a number, as a quantity of UDQ may.\n"));
    EXPECT_THAT(outcome.err, HasSubstr(":4: error: A problem was encountered"));
    EXPECT_EQ(outcome.status, 1);
}

TEST(BadInput, WarningsCountOnlyWhenStrict)
{
    const TempDir folder;
    folder.Write("TOP.DATA", "RUNSPEC\n\nNOSUCHWD 1 2\n\nOIL\n");
    const Launch run = In(folder);
    const Outcome plain = Deckman({"ls", "TOP.DATA"}, run);
    EXPECT_EQ(plain.status, 0);
    EXPECT_THAT(plain.err, testing::ContainsRegex("^TOP.DATA:[0-9]+: warning: Keyword NOSUCHWD is not recognized"));
    EXPECT_EQ(Deckman({"ls", "TOP.DATA", "--strict"}, run).status, 1);
}

TEST(BadInput, MessagesGiveATerminalNoOrders)
{
    const TempDir folder;
    folder.Write("TOP.DATA", "RUNSPEC\nNO\x1b[31mWORD\x07 1 2\n");
    EXPECT_THAT(Deckman({"ls", "TOP.DATA"}, In(folder)).err, HasSubstr("Keyword NO?[31MWORD? is not recognized"));
}

TEST(BadInput, RecurringSectionsAreNamed)
{
    const TempDir folder;
    // The last keyword of a file is recorded though its section has been seen.
    folder.Write("TOP.DATA", "RUNSPEC\nGRID\n" + include + "a.inc' /\nPROPS\n");
    folder.Write("a.inc", "PORO\n 1*0.2 /\nGRID\n");
    const Outcome outcome = Deckman({"sections", "TOP.DATA", "--json"}, In(folder));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, HasSubstr("The following section keywords occur more than once in the deck: GRID."));
    std::vector<std::string> lines;
    for (const auto& line : JsonLines(outcome.out))
        lines.push_back(line.dump());
    EXPECT_THAT(lines, testing::ElementsAre(
                           R"({"section":"RUNSPEC","begin":1,"end":2})", R"({"section":"GRID","begin":2,"end":5})",
                           R"({"section":"GRID","begin":5,"end":6})", R"({"section":"PROPS","begin":6,"end":7})"));
}

TEST(BadInput, OutputThatNobodyTakes)
{
    const std::string deck = DECK_SOURCE_DIR "/examples/decks/field/FIELD.DATA";
    const Outcome closed = Shell("deckman ls '" + deck + "' --json | head -n 1 >/dev/null");
    EXPECT_EQ(closed.status, 0);
    EXPECT_THAT(closed.err, Not(HasSubstr("standard output")));

    Launch full;
    full.outFile = "/dev/full";
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"ls", deck}, {"--help"}, {"ls", "--help"}, {"--version"}})
    {
        const Outcome outcome = Deckman(arguments, full);
        EXPECT_EQ(outcome.status, 3) << arguments.front();
        EXPECT_THAT(outcome.err, HasSubstr("standard output: error: "));
    }
}

} // namespace DeckmanTests

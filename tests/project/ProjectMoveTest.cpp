#include "files/MovedPaths.h"
#include "tests/project/ProjectTree.h"
#include "tests/support/DeckTest.h"

// A project moves: its files, what they include, its open decks and its cache.

namespace ProjectTests {

namespace {

namespace fs = std::filesystem;
using namespace DeckTests;

class ProjectMoveTest : public testing::Test
{
protected:
    ProjectMoveTest()
    {
        Environment::Instance().SetPATHSSupport(true);
        LineEnds::SetPolicy(LineEnds::Policy::Keep);
    }

    std::string Path(const std::string& name) const { return m_tree.Dir().Path(name); }
    std::string Read(const std::string& name) const { return m_tree.Dir().Read(name); }
    void Write(const std::string& name, const std::string& text) const { m_tree.Write(name, text); }

    /// Moves the project with no deck open.
    void Move(const std::string& newDir, bool deleteOld = true) const
    {
        DeckManagerFactory::Create(m_tree.OldDir())->MoveProjectDir(newDir, deleteOld);
    }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
    ProjectTree m_tree;
};

} // namespace

TEST_F(ProjectMoveTest, EachKindOfPathIsCorrectedInItsOwnWay)
{
    Write("out/o.inc", "OIL\n");
    Write("zone/proj/common/c.inc", "GAS\n");
    Write("zone/proj/d/inc/a.inc", "WATER\n");
    Write("zone/proj/d/b.inc", "WATER\n");
    struct Case
    {
        const char* what;
        std::string path;
        std::string moved;
    };
    // From `zone/proj/d` to `other/place/deep/p/d`.
    const std::string newDir = Path("other/place/deep/p");
    const Case cases[] = {
        {"a bare leaf", "b.inc", "b.inc"},
        {"inside, relative", "inc/a.inc", "inc/a.inc"},
        {"inside, relative, upwards", "../common/c.inc", "../common/c.inc"},
        {"inside, relative, a detour", "../d/inc/a.inc", "inc/a.inc"},
        {"inside, relative, by the name of the project", "../../proj/common/c.inc", "../common/c.inc"},
        {"inside, complete", Path("zone/proj/common/c.inc"), newDir + "/common/c.inc"},
        {"outside, relative", "../../../out/o.inc", "../../../../../out/o.inc"},
        {"outside, complete", Path("out/o.inc"), Path("out/o.inc")},
        {"nothing, relative", "../../../out/none.inc", "../../../out/none.inc"},
        {"nothing, complete", Path("zone/proj/none.inc"), Path("zone/proj/none.inc")},
        {"a variable", "../../../$DIR/o.inc", "../../../$DIR/o.inc"},
        {"a form of its own, unchanged", ".//inc/./a.inc", ".//inc/./a.inc"},
        {"separators of another system", "..\\common\\c.inc", "..\\common\\c.inc"},
    };
    std::string before = "RUNSPEC\n";
    std::string after = before;
    for (const Case& test : cases) {
        before += "-- " + std::string(test.what) + "\n" + Include(test.path);
        after += "-- " + std::string(test.what) + "\n" + Include(test.moved);
    }
    m_tree.WriteTop("d/d.DATA", before);
    const std::string includes = m_tree.IncludesOf(m_tree.OldDir());
    Move(newDir);
    EXPECT_EQ(Read("other/place/deep/p/d/d.DATA"), after);
    EXPECT_EQ(m_tree.IncludesOf(newDir), includes);
    EXPECT_FALSE(m_tree.Dir().Exists("zone/proj"));
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(ProjectMoveTest, ARelativePathCountsFromTheTopFileOfTheDeck)
{
    Write("out/o.inc", "OIL\n");
    // In the folder of the file itself the path leads to another file.
    Write("zone/proj/out/o.inc", "GAS\n");
    m_tree.WriteTop("d/d.DATA", Include("inc/deep/a.inc"));
    Write("zone/proj/d/inc/deep/a.inc", Include("../../../out/o.inc"));
    Write("zone/proj/d/inc/deep/b.inc", Include("../gone.inc"));
    Write("zone/proj/d/inc/gone.inc", "GAS\n");
    // Nobody includes this one, so its own folder counts.
    Write("zone/proj/d/inc/deep/alone.inc", Include("../../../out/o.inc"));
    const std::string includes = m_tree.IncludesOf(m_tree.OldDir());
    EXPECT_THAT(includes, testing::HasSubstr("out/o.inc"));
    Move(Path("zone/deep/p"));
    EXPECT_EQ(Read("zone/deep/p/d/inc/deep/a.inc"), Include("../../../../out/o.inc"));
    EXPECT_EQ(Read("zone/deep/p/d/inc/deep/alone.inc"), Include("../../../out/o.inc"));
    EXPECT_EQ(m_tree.IncludesOf(Path("zone/deep/p")), includes);
}

TEST_F(ProjectMoveTest, AnOpenDeckOutsideMayIncludeFilesOfTheProject)
{
    Write("zone/proj/d/a.inc", Include("../zone/proj/d/b.inc"));
    Write("zone/proj/d/b.inc", "GAS\n");
    Write("out/top.DATA", "RUNSPEC\n" + Include("../zone/proj/d/a.inc"));
    const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create(m_tree.OldDir());
    IDeck* deck = manager->ImportDeck("top", Path("out/top.DATA"), false, true, false);
    deck->GetDeckKeywords()->GetFiles();
    manager->MoveProjectDir(Path("deep/er/q"), true);
    EXPECT_EQ(Read("deep/er/q/d/a.inc"), Include("../deep/er/q/d/b.inc"));
    EXPECT_EQ(Read("out/top.DATA"), "RUNSPEC\n" + Include("../zone/proj/d/a.inc"));
    // The user hears what its own path would have to be, and in memory the deck is whole.
    ASSERT_EQ(m_log.Count(2), 1);
    EXPECT_THAT(m_log.Texts(2)[0], testing::HasSubstr("After the move it would be \"../deep/er/q/d/a.inc\"."));
    EXPECT_EQ(KeywordsNamed(*deck, "GAS").size(), 1u);
}

TEST_F(ProjectMoveTest, AFileOfDecksInDifferentPlacesGetsANameThatServesAll)
{
    // From both top files the same text leads to the same file; after the move no relative one does.
    Write("out/o.inc", "OIL\n");
    fs::create_directory_symlink(Path("out"), Path("zone/out"));
    Write("zone/proj/common/c.inc", Include("../../out/o.inc") + Include("../../../out/o.inc"));
    m_tree.WriteTop("d/d.DATA", Include("../common/c.inc"));
    m_tree.WriteTop("below/e/e.DATA", Include("../../common/c.inc"));
    const std::string includes = m_tree.IncludesOf(m_tree.OldDir());
    Move(Path("q"));
    EXPECT_EQ(m_tree.IncludesOf(Path("q")), includes);
}

TEST_F(ProjectMoveTest, OnlyTextBelowTheFoldersOfTheProjectIsLookedAt)
{
    Write("out/o.inc", "OIL\n");
    const std::string text = Include("../../../out/o.inc");
    const std::string binary = text + std::string(1, '\0');
    const std::string makefile = "include ../../../out/rules.mk\nall: ../../../out/o.inc\n\ttouch all\n";
    Write("out/rules.mk", "");
    const std::map<std::string, std::string> kept = {
        {"top.inc", text},        {"Cache__/c.inc", text},         {"d/run.PRT", text},
        {"d/run.Xml", text},      {"d/case.FEGRID", text},         {"d/binary.inc", binary},
        {"d/Makefile", makefile}, {"d/sub/GNUmakefile", makefile}, {"d/notes.txt", "INCLUDE me\n../../../out/none\n"},
    };
    for (const auto& [name, content] : kept)
        Write("zone/proj/" + name, content);
    const std::string texts[] = {"d/d.DATA", ".dot/x.inc", "d/README", "d/.y.inc", "d/late.GRDECL"};
    for (const std::string& name : texts)
        Write("zone/proj/" + name, text);
    // The first 2500 bytes decide.
    Write("zone/proj/d/late.inc", text + std::string(2500, ' ') + std::string(1, '\0') + "\n");
    Move(Path("zone/deep/p"));
    for (const auto& [name, content] : kept)
        EXPECT_EQ(Read("zone/deep/p/" + name), content) << name;
    const std::string corrected = Include("../../../../out/o.inc");
    for (const std::string& name : texts)
        EXPECT_EQ(Read("zone/deep/p/" + name), corrected) << name;
    EXPECT_EQ(Read("zone/deep/p/d/late.inc").substr(0, corrected.size()), corrected);
}

TEST_F(ProjectMoveTest, NothingButTheNameChangesInACorrectedFile)
{
    Write("out/o.inc", "OIL\n");
    const std::string before =
        "\xEF\xBB\xBF-- Generated\r\n-- head\r\n\r\nRUNSPEC\r\n--@@@INCLUDE   -- c \xD8\r\n"
        "--@@@\t'../../../out/o.inc'/ behind\r\n\r\n-- above\r\nINCLUDE -- Generated\n-- inside\n"
        "  '../../../out/o.inc' -- no end\r\n\r\nSKIPREST\r\nGRID\r\nPORO\r\n 1\t2 /   \r\n-- the end";
    std::string after = before;
    for (std::size_t at = 0; (at = after.find("../../../out", at)) != std::string::npos; at += 20)
        after.insert(at, "../");
    Write("zone/proj/d/d.DATA", before);
    fs::permissions(Path("zone/proj/d/d.DATA"), fs::perms::owner_read | fs::perms::group_read);
    const fs::perms perms = fs::status(Path("zone/proj/d/d.DATA")).permissions();
    Move(Path("zone/deep/p"));
    EXPECT_EQ(Read("zone/deep/p/d/d.DATA"), after);
    EXPECT_EQ(fs::status(Path("zone/deep/p/d/d.DATA")).permissions(), perms);
}

TEST_F(ProjectMoveTest, LinksLeadWhereTheyLed)
{
    Write("out/o.inc", "OIL\n");
    Write("zone/proj/common/c.inc", Include("../../out/o.inc"));
    fs::create_symlink("../../../out/o.inc", Path("zone/proj/common/relative.inc"));
    fs::create_symlink(Path("out/o.inc"), Path("zone/proj/common/complete.inc"));
    fs::create_symlink("c.inc", Path("zone/proj/common/beside.inc"));
    fs::create_symlink(Path("zone/proj/common/c.inc"), Path("zone/proj/common/inside.inc"));
    fs::create_symlink("../../../gone", Path("zone/proj/common/gone"));
    fs::create_directory_symlink("../../out", Path("zone/proj/folder"));
    m_tree.WriteTop("d/d.DATA", Include("../common/relative.inc") + Include("../folder/o.inc") +
                                    Include(Path("zone/proj/folder/o.inc")) + Include("../common/inside.inc") +
                                    Include("../common/beside.inc"));
    const std::string includes = m_tree.IncludesOf(m_tree.OldDir());
    const std::string newDir = Path("zone/deep/er/p");
    Move(newDir);
    EXPECT_EQ(m_tree.IncludesOf(newDir), includes);
    const std::pair<const char*, std::string> links[] = {{"common/relative.inc", "../../../../../out/o.inc"},
                                                         {"common/complete.inc", Path("out/o.inc")},
                                                         {"common/beside.inc", "c.inc"},
                                                         {"common/inside.inc", newDir + "/common/c.inc"},
                                                         {"common/gone", "../../../../../gone"},
                                                         {"folder", "../../../../out"}};
    for (const auto& [name, target] : links)
        EXPECT_EQ(fs::read_symlink(newDir + "/" + name), target);
    // The files that they name outside are nobody's to correct.
    EXPECT_EQ(Read("out/o.inc"), "OIL\n");
}

TEST_F(ProjectMoveTest, AProjectBehindALinkIsKnownByBothItsNames)
{
    Write("out/o.inc", "OIL\n");
    fs::create_directories(Path("home/far"));
    fs::create_directory_symlink(Path("zone"), Path("home/far/link"));
    Write("zone/proj/d/a.inc", "GAS\n");
    m_tree.WriteTop("d/d.DATA", Include(Path("zone/proj/d/a.inc")) + Include(Path("home/far/link/proj/d/a.inc")) +
                                    Include("../../../out/o.inc"));
    const std::string includes = m_tree.IncludesOf(m_tree.OldDir());
    EXPECT_THAT(includes, testing::Not(testing::HasSubstr("nothing")));
    DeckManagerFactory::Create(Path("home/far/link/proj"))->MoveProjectDir(Path("home/far/link/deep/er/p"), true);
    EXPECT_FALSE(m_tree.Dir().Exists("zone/proj"));
    EXPECT_EQ(m_tree.IncludesOf(Path("zone/deep/er/p")), includes);
}

TEST_F(ProjectMoveTest, AFileOutsideThatNeedsToChangeStopsTheMove)
{
    Write("zone/proj/d/a.inc", "GAS\n");
    Write("out/o.inc", "OIL\n" + Include(Path("zone/proj/d/a.inc")));
    m_tree.WriteTop("d/d.DATA", Include("../../../out/o.inc"));
    const auto before = ProjectTree::ContentOf(Path("zone"));
    // Included from the project: it may be wrong then, and the user hears of it.
    const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create(m_tree.OldDir());
    manager->PlanProjectDirMove(Path("zone/q"));
    ASSERT_EQ(m_log.Count(), 1);
    EXPECT_EQ(m_log.Messages()[0].text, "The INCLUDE path \"" + Path("zone/proj/d/a.inc") +
                                            "\" is not corrected, since the file lies in no folder of the project. "
                                            "After the move it would be \"" +
                                            Path("zone/q/d/a.inc") + "\".");
    EXPECT_EQ(m_log.Messages()[0].file, Path("out/o.inc"));
    EXPECT_EQ(m_log.Messages()[0].line, 2);

    // In the project by a link: to correct it would be to write to a file outside.
    fs::create_symlink("../../../out/o.inc", Path("zone/proj/d/o.inc"));
    m_log.Clear();
    EXPECT_EQ(Refusal(*manager, Path("zone/q")), "DeckManager::KeywordFileManager::FixUnmanagedFileInclude: cannot "
                                                 "update unmanaged file referencing a managed file");
    EXPECT_TRUE(m_log.Contains("leads into the project, and the file lies outside of it."));
    fs::remove(Path("zone/proj/d/o.inc"));
    EXPECT_EQ(ProjectTree::ContentOf(Path("zone")), before);
}

TEST_F(ProjectMoveTest, WhatComesWhileItMovesIsNotDeleted)
{
    m_tree.WriteTop("d/d.DATA", "OIL\n");
    Write("zone/proj/d/run.log", "-- 1\n");
    /// Another program works in the project.
    struct Elsewhere : KeywordFileManager::ICommitter
    {
        void Commit() const override { change(); }
        std::function<void()> change;
    };
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"run.log", [&] { Write("zone/proj/d/run.log", "-- 1\n-- 2\n"); }},
        {"run.log", [&] { Write("zone/proj/d/run.log", "-- 3\n"); }},
        {"result", [&] { Write("zone/proj/d/result", ""); }},
        {"new", [&] { fs::create_symlink("x", Path("zone/proj/d/new")); }},
    };
    for (const auto& [name, change] : cases) {
        m_log.Clear();
        Elsewhere elsewhere;
        elsewhere.change = change;
        KeywordFileManager(m_tree.OldDir()).MoveProjectDir(Path("q"), true, elsewhere);
        ASSERT_EQ(m_log.Count(3), 1) << name;
        EXPECT_EQ(m_log.Messages().back().text, "The project has moved to " + Path("q") + ", where it is whole. " +
                                                    m_tree.OldDir() + " is kept, since the file " + m_tree.OldDir() +
                                                    "/d/" + name + " has come or changed meanwhile.");
        EXPECT_TRUE(m_tree.Dir().Exists("zone/proj/d/run.log"));
        fs::remove(Path("zone/proj/d/result"));
    }
    // What has gone is no reason, and a link to the project goes with it.
    fs::create_directory_symlink(m_tree.OldDir(), Path("link"));
    Elsewhere elsewhere;
    elsewhere.change = [&] { fs::remove(Path("zone/proj/d/run.log")); };
    m_log.Clear();
    KeywordFileManager(Path("link")).MoveProjectDir(Path("q"), true, elsewhere);
    EXPECT_TRUE(m_log.Empty());
    EXPECT_FALSE(m_tree.Dir().Exists("zone/proj") || m_tree.Dir().Exists("link"));
    // Nor is what can't be looked through.
    elsewhere.change = [&] {
        fs::remove_all(Path("q"));
        Write("q", "mine");
    };
    KeywordFileManager(Path("q")).MoveProjectDir(Path("r"), true, elsewhere);
    EXPECT_TRUE(m_log.Contains("The project has moved to " + Path("r") + ", where it is whole. What cannot be "));
    EXPECT_EQ(Read("q"), "mine");
}

TEST_F(ProjectMoveTest, WhatASimulatorSkipsIsCorrectedToo)
{
    Write("out/o.inc", "OIL\n");
    const auto text = [](const std::string& path) {
        return "RUNSPEC\nSKIP300\n" + Include(path) + "ENDSKIP\n" + Include(path) + "WATER\n";
    };
    m_tree.WriteTop("d/d.DATA", text("../../../out/o.inc"));
    m_tree.WriteTop("e/e.DATA", text("../../../out/o.inc"));
    Environment::Instance().EnableSKIPENDSKIP(true, Keywords::SimulatorType::S300);
    const std::string includes = m_tree.IncludesOf(m_tree.OldDir());
    m_tree.ScannedIn(m_tree.OldDir());
    const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create(m_tree.OldDir());
    IDeck* open = manager->OpenExistingDeck("e", true);
    const IKeyword* water = *KeywordsNamed(*open, "WATER").front();
    manager->MoveProjectDir(Path("zone/deep/p"), true);
    EXPECT_EQ(Read("zone/deep/p/d/d.DATA"), text("../../../../out/o.inc"));
    EXPECT_EQ(m_tree.IncludesOf(Path("zone/deep/p")), includes);
    EXPECT_TRUE(Environment::Instance().SKIPENDSKIPEnabled());
    // An open deck knows nothing of it.
    EXPECT_EQ(*water->GetText(), "WATER\n");
    EXPECT_EQ(m_log.Texts(2),
              std::vector<std::string>{"The INCLUDE path \"../../../out/o.inc\" is not corrected, since "
                                       "the file is open and skips it. After the move it would be "
                                       "\"../../../../out/o.inc\"."});
    EXPECT_EQ(m_log.Messages().back().line, 3);
    EXPECT_EQ(Read("zone/deep/p/e/e.DATA"), "RUNSPEC\nSKIP300\n" + Include("../../../out/o.inc") + "ENDSKIP\n" +
                                                Include("../../../../out/o.inc") + "WATER\n");
}

TEST_F(ProjectMoveTest, APathThatAnAliasLeadsAstrayIsTold)
{
    Write("out/o.inc", "OIL\n");
    Write("zone/proj/d/inc/a.inc", "GAS\n");
    const std::string text = "RUNSPEC\nPATHS\n'OUT' '../../../out' /\n'IN' 'inc' /\n'ALL' '" + m_tree.OldDir() +
                             "' /\n/\nINCLUDE\n'$OUT/o.inc' /\nINCLUDE\n'$IN/a.inc' /\nINCLUDE\n'$ALL/d/inc/a.inc' /\n";
    m_tree.WriteTop("d/d.DATA", text);
    DeckManagerFactory::Create(m_tree.OldDir())->PlanProjectDirMove(Path("zone/deep/p"));
    const std::string head = "is not corrected, since it holds an alias. After the move it would have to stand for ";
    ASSERT_EQ(m_log.Texts(2),
              (std::vector<std::string>{"The INCLUDE path \"$OUT/o.inc\" " + head + "\"../../../../out/o.inc\".",
                                        "The INCLUDE path \"$ALL/d/inc/a.inc\" " + head + "\"" +
                                            Path("zone/deep/p/d/inc/a.inc") + "\"."}));
    EXPECT_EQ(m_log.Messages().back().file, Path("zone/proj/d/d.DATA"));
    EXPECT_EQ(m_log.Messages().back().line, 11);
}

TEST_F(ProjectMoveTest, TheManagerKnowsOfItsNewPlaces)
{
    m_tree.WriteTop("d/d.DATA", "RUNSPEC\nOIL\n");
    KeywordFileManager files(m_tree.OldDir());
    struct NoCommit : KeywordFileManager::ICommitter
    {
        void Commit() const override {}
    };
    files.SetTempProjectDir(Service::Directory(Path("zone/proj/temp")));
    const std::shared_ptr<KeywordFile> file = files.GetKeywordFile(m_tree.Dir().File("zone/proj/d/d.DATA"), true);
    const std::shared_ptr<KeywordFile> outside = files.GetKeywordFile(m_tree.Dir().File("zone/projx.inc"), true);
    files.MoveProjectDir(Path("q"), true, NoCommit());
    EXPECT_EQ(files.ProjectDir().Name(), Path("q"));
    EXPECT_EQ(files.TempProjectDir().Name(), Path("q/temp"));
    EXPECT_EQ(files.FindKeywordFile(m_tree.Dir().File("q/d/d.DATA")), file);
    EXPECT_EQ(files.FindKeywordFile(m_tree.Dir().File("zone/proj/d/d.DATA")), nullptr);
    EXPECT_EQ(outside->GetFileName().GetFullName(), Path("zone/projx.inc"));
    // What it learns from now on is kept there.
    file->Begin();
    files.SaveCacheTable();
    EXPECT_TRUE(m_tree.Dir().Exists("q/d/DeckCache.ptd"));
    EXPECT_FALSE(m_tree.Dir().Exists("zone/proj"));
}

TEST(MovedPathsTest, VolumesDecideWhatARelativePathBecomes)
{
    // Names of drives are complete on every platform, and nothing stands there.
    const Service::Directory base("C:/decks/p/d");
    const auto way = [&](const MovedPaths& paths, const char* target) {
        return paths.Way(Service::Directory(target), base).Name();
    };
    const MovedPaths elsewhere{Service::Directory("C:/decks/p"), Service::Directory("D:/q")};
    EXPECT_EQ(way(elsewhere, "C:/decks/out"), "C:/decks/out");
    EXPECT_EQ(way(elsewhere, "C:/decks/p/common"), "../common");
    EXPECT_EQ(elsewhere.Moved(Service::Directory("C:/decks/p/common")).Name(), "D:/q/common");
    EXPECT_EQ(elsewhere.Moved(Service::Directory("C:/decks/px")).Name(), "C:/decks/px");
    const MovedPaths here{Service::Directory("C:/decks/p"), Service::Directory("C:/q")};
    EXPECT_EQ(way(here, "C:/decks/out"), "../../decks/out");
    EXPECT_TRUE(here.IsInManagedArea(Service::Directory("../common"), base));
    EXPECT_TRUE(here.IsInManagedArea(Service::Directory(".."), base));
    EXPECT_FALSE(here.IsInManagedArea(Service::Directory("../.."), base));
    EXPECT_FALSE(here.IsInManagedArea(Service::Directory("D:/decks/p"), base));
}

TEST_F(ProjectMoveTest, PlacesWhereNoProjectCanGo)
{
    Write("zone/file", "x");
    m_tree.WriteTop("d/d.DATA", "OIL\n");
    fs::create_directory_symlink(m_tree.OldDir(), Path("link"));
    const auto before = ProjectTree::ContentOf(m_tree.Dir().Path());
    const std::string invalid = "DeckManager project dir must be a complete path and can not be a file.";
    const std::string nested = "The project directory cannot be moved into itself.";
    const std::pair<std::string, std::string> cases[] = {
        {"relative/path", invalid},
        {Path("zone/file"), invalid},
        {Path("zone/proj/d/below"), nested},
        {Path("zone"), nested},
        {"/", nested},
        {Path("link/d/below"), nested},
        {Path("zone/proj/."), ""},
        {m_tree.OldDir(), ""},
        {Path("link"), ""},
    };
    const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create(m_tree.OldDir());
    for (const auto& [place, message] : cases)
        EXPECT_EQ(Refusal(*manager, place), message) << place;
    // Without a project there is nothing to move.
    DeckManagerFactory::Create()->MoveProjectDir(Path("q"), true);
    EXPECT_EQ(ProjectTree::ContentOf(m_tree.Dir().Path()), before);
}

TEST_F(ProjectMoveTest, WhatStandsAtTheNewPlaceGoesAndTheOldOneMayStay)
{
    m_tree.WriteTop("d/d.DATA", "OIL\n");
    Write("q/old/file", "x");
    Move(Path("q"), false);
    EXPECT_EQ(ProjectTree::ContentOf(Path("q")), ProjectTree::ContentOf(m_tree.OldDir()));
    EXPECT_FALSE(m_tree.Dir().Exists("q/old"));

    // A link is replaced, not what it leads to.
    Write("kept/file", "x");
    fs::create_directory_symlink(Path("kept"), Path("link"));
    Move(Path("link"), false);
    EXPECT_TRUE(fs::is_directory(fs::symlink_status(Path("link"))));
    EXPECT_TRUE(m_tree.Dir().Exists("kept/file"));

    // A project that has gone is a new one at the new place.
    const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create(Path("zone/other"));
    fs::remove_all(Path("zone/other"));
    manager->MoveProjectDir(Path("zone/another"), true);
    EXPECT_TRUE(m_tree.Dir().Exists("zone/another"));
    EXPECT_EQ(manager->GenerateDeckName(), "Deck_1");
}

TEST_F(ProjectMoveTest, OpenDecksGoAlongAndTheirEditsAreWrittenToTheNewPlace)
{
    Write("out/o.inc", "OIL\n");
    Write("zone/proj/d/a.inc", "-- a\n" + Include("../../../out/o.inc") + "WELLDIMS\n 1 /\n");
    m_tree.WriteTop("d/d.DATA", "RUNSPEC\n" + Include("a.inc") + Include("../../../out/o.inc") + "TABDIMS\n 1 /\n");
    m_tree.WriteTop("e/e.DATA", "RUNSPEC\n" + Include("../../../out/o.inc") + "TABDIMS\n 2 /\n");
    const std::string includes = m_tree.IncludesOf(m_tree.OldDir());
    const std::string newDir = Path("zone/deep/p");

    const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create(m_tree.OldDir());
    IDeck* deck = manager->OpenExistingDeck("d", true);
    IDeck* other = manager->OpenExistingDeck("e", true);
    IDeckKeywordsEditor* editor = manager->GetEditor(deck);
    const KeywordIterator tabdims = KeywordsNamed(*deck, "TABDIMS").front();
    ASSERT_TRUE(editor->SetDataText(tabdims, " 7 8 /"));
    const KeywordIterator include = KeywordsNamed(*deck, "INCLUDE").back();
    ASSERT_TRUE(editor->SetComment(include, " no wells"));
    const IKeyword* kept = *KeywordsNamed(*other, "TABDIMS").front();

    manager->MoveProjectDir(newDir, true);
    EXPECT_EQ(Read("zone/deep/p/d/d.DATA"),
              "RUNSPEC\n" + Include("a.inc") + "INCLUDE\n-- no wells\n '../../../../out/o.inc' /\nTABDIMS\n 7 8 /\n");
    EXPECT_EQ(Read("zone/deep/p/d/a.inc"), "-- a\n" + Include("../../../../out/o.inc") + "WELLDIMS\n 1 /\n");
    EXPECT_EQ(Read("zone/deep/p/e/e.DATA"), "RUNSPEC\n" + Include("../../../../out/o.inc") + "TABDIMS\n 2 /\n");
    EXPECT_EQ(m_tree.IncludesOf(newDir), includes);
    // The keywords are those that the host holds, and read the new text.
    EXPECT_EQ(*kept->GetText(), "TABDIMS\n 2 /\n");
    EXPECT_EQ(kept->GetFile()->GetFileName().GetFullName(), newDir + "/e/e.DATA");
    EXPECT_EQ(other->GetDirectory().Name(), newDir + "/e");
    // And the next edit is committed there.
    ASSERT_TRUE(editor->SetDataText(tabdims, " 9 /"));
    editor->Commit();
    EXPECT_THAT(Read("zone/deep/p/d/d.DATA"), testing::EndsWith("TABDIMS\n 9 /\n"));
    EXPECT_FALSE(m_tree.Dir().Exists("zone/proj"));
    EXPECT_EQ(m_tree.ScannedIn(newDir), "");
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(ProjectMoveTest, EditsOfAnIncludeAndOfAPartialCommitGoAlong)
{
    Write("out/o.inc", "OIL\n");
    Write("zone/proj/d/b.inc", "GAS\n");
    m_tree.WriteTop("d/d.DATA", "RUNSPEC\n" + Include("b.inc") + "-- end\n");
    const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create(m_tree.OldDir());
    IDeck* deck = manager->OpenExistingDeck("d", true);
    IDeckKeywordsEditor* editor = manager->GetEditor(deck);
    const KeywordIterator include = KeywordsNamed(*deck, "INCLUDE").front();
    ASSERT_TRUE(editor->SetDataText(include, " '../../../out/o.inc' / new"));
    editor->CommitFile(deck->GetDeckKeywords()->GetDataFile());
    ASSERT_TRUE(m_tree.Dir().Exists("zone/proj/d/d_DATA__.tmp"));
    EXPECT_EQ(Read("zone/proj/d/d.DATA"), "RUNSPEC\n" + Include("b.inc") + "-- end\n");
    manager->MoveProjectDir(Path("zone/deep/p"), true);
    EXPECT_EQ(Read("zone/deep/p/d/d.DATA"), "RUNSPEC\nINCLUDE\n '../../../../out/o.inc' / new\n-- end\n");
    EXPECT_EQ(ProjectTree::ContentOf(Path("zone/deep/p/d")).size(), 2u);
}

TEST_F(ProjectMoveTest, AFileThatHasChangedSinceItWasReadKeepsItsText)
{
    Write("out/o.inc", "OIL\n");
    m_tree.WriteTop("d/d.DATA", "RUNSPEC\n" + Include("../../../out/o.inc"));
    const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create(m_tree.OldDir());
    IDeck* deck = manager->OpenExistingDeck("d", true);
    IDeckKeywordsEditor* editor = manager->GetEditor(deck);
    deck->GetDeckKeywords()->GetFiles();
    const std::string changed = "-- by someone else\nRUNSPEC\n" + Include("../../../out/o.inc") + "GAS\n";
    Write("zone/proj/d/d.DATA", changed);
    manager->MoveProjectDir(Path("zone/deep/p"), true);
    EXPECT_EQ(Read("zone/deep/p/d/d.DATA"),
              "-- by someone else\nRUNSPEC\n" + Include("../../../../out/o.inc") + "GAS\n");
    manager->RefreshDeck("d");
    EXPECT_EQ(KeywordsNamed(*deck, "GAS").size(), 1u);

    // With edits of the old text the move is refused, as a commit is.
    const KeywordIterator include = KeywordsNamed(*deck, "INCLUDE").front();
    ASSERT_TRUE(editor->SetComment(include, "mine"));
    Write("zone/deep/p/d/d.DATA", changed);
    const auto before = ProjectTree::ContentOf(m_tree.Dir().Path());
    const std::string refusal = Refusal(*manager, Path("q"));
    EXPECT_THAT(refusal, testing::HasSubstr("d.DATA has been changed on disk since it was read."));
    EXPECT_THAT(refusal, testing::HasSubstr("\nIt is whole in " + Path("zone/deep/p") + "."));
    EXPECT_EQ(ProjectTree::ContentOf(m_tree.Dir().Path()), before);
}

TEST_F(ProjectMoveTest, ANameThatNoTextCanHoldStopsTheMove)
{
    Write("zone/proj/d/a.inc", "GAS\n");
    m_tree.WriteTop("d/d.DATA", "RUNSPEC\n" + Include(Path("zone/proj/d/a.inc")));
    const auto before = ProjectTree::ContentOf(m_tree.Dir().Path());
    for (const std::string& newDir : {Path("it's"), Path(std::string(140, 'x'))}) {
        EXPECT_EQ(Refusal(*DeckManagerFactory::Create(m_tree.OldDir()), newDir),
                  Path("zone/proj/d/d.DATA") + ", line 2: No INCLUDE can hold the name " + newDir + "/d/a.inc.");
    }
    EXPECT_EQ(ProjectTree::ContentOf(m_tree.Dir().Path()), before);
}

TEST_F(ProjectMoveTest, ALongNameIsKeptAheadOfTheEndOfTheLine)
{
    Write("zone/proj/d/a.inc", "GAS\n");
    const std::string path = Path("zone/proj/d/a.inc");
    m_tree.WriteTop("d/d.DATA", "RUNSPEC\nINCLUDE\n\t '" + path + "' / behind\nINCLUDE\n'" + path +
                                    "'\n/\nINCLUDE -- c\n '" + path + "' -- no end\nOIL\n");
    // A name of 132 columns with its quotes.
    const std::string newDir = Path(std::string(130 - Path("").size() - 8, 'x'));
    const std::string name = "'" + newDir + "/d/a.inc'";
    ASSERT_EQ(name.size(), 132u);
    Move(newDir);
    EXPECT_EQ(ProjectTree::ContentOf(newDir).at("d/d.DATA"), "RUNSPEC\nINCLUDE\n" + name + "\n / behind\nINCLUDE\n" +
                                                                 name + "\n/\nINCLUDE -- c\n" + name +
                                                                 "\n -- no end\nOIL\n");
    EXPECT_THAT(m_tree.IncludesOf(newDir), testing::HasSubstr(":2 -> P/d/a.inc\n"));
}

} // namespace ProjectTests

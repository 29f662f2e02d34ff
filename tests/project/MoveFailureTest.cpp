#include <algorithm>

#include <sys/wait.h>
#include <unistd.h>

#include "tests/project/ProjectTree.h"
#include "tests/support/DeckTest.h"
#include "tests/support/UnprivilegedUser.h"
#include "tests/text/TextGenerator.h"
#include <tarn/service/Strings.h>

// Moves that fail at any of their file operations, or end there, and moves by chance.

namespace ProjectTests {

namespace {

namespace fs = std::filesystem;
using namespace DeckTests;
using TestText::TextGenerator;

/// A small project with an open deck that has edits, another open one, one that is closed, and a link.
struct SmallProject
{
    SmallProject()
    {
        tree.Write("out/o.inc", "OIL\n");
        tree.WriteTop("d/d.DATA", "RUNSPEC\n" + Include("../../../out/o.inc") + "TABDIMS\n 1 /\n");
        tree.WriteTop("e/e.DATA", "RUNSPEC\n" + Include("../../../out/o.inc"));
        tree.WriteTop("f/f.DATA", "RUNSPEC\n" + Include("../../../out/o.inc") + Include(tree.OldDir() + "/f/g.inc"));
        tree.Write("zone/proj/f/g.inc", "GAS\n");
        fs::create_symlink("../../../out/o.inc", tree.Dir().Path("zone/proj/f/link.inc"));
        tree.Write("new/deep/p/was/here", "x");
        includes = tree.IncludesOf(tree.OldDir());
        oldContent = ProjectTree::ContentOf(tree.OldDir());
        newContent = ProjectTree::ContentOf(NewDir());
        manager = DeckManagerFactory::Create(tree.OldDir());
        deck = manager->OpenExistingDeck("d", true);
        manager->OpenExistingDeck("e", true)->GetDeckKeywords()->GetFiles();
        editor = manager->GetEditor(deck);
        Tabdims([&](const KeywordIterator& place) { editor->SetDataText(place, " 7 /"); });
        Places([&](const KeywordIterator& place) { editor->SetComment(place, " mine"); });
    }

    std::string NewDir() const { return tree.Dir().Path("new/deep/p"); }
    /// Moves it on a disk whose n-th call of these kinds fails; whether one did.
    bool MoveWithFailure(int n, const std::set<Call>& kinds, bool forever)
    {
        FailingFileSystem disk;
        disk.FailAt(n, kinds, EIO, forever);
        thrown = Refusal(*manager, NewDir());
        return disk.HasFailed();
    }
    template <class Use>
    void Tabdims(Use use) const
    {
        for (const KeywordIterator& place : KeywordsNamed(*deck, "TABDIMS"))
            use(place);
    }
    template <class Use>
    void Places(Use use) const
    {
        for (const KeywordIterator& place : KeywordsNamed(*deck, "INCLUDE"))
            use(place);
    }

    /// The project as it was, and nothing else but what was there.
    void ExpectUntouched(bool withOpenDecks) const
    {
        EXPECT_EQ(ProjectTree::ContentOf(tree.OldDir()), oldContent);
        EXPECT_EQ(ProjectTree::ContentOf(NewDir()), newContent);
        EXPECT_EQ(Names("new/deep"), "p");
        EXPECT_EQ(Names("zone"), "proj");
        if (!withOpenDecks) return;
        // The edits are still there to be committed.
        EXPECT_EQ(deck->GetDirectory().Name(), tree.OldDir() + "/d");
        editor->Commit();
        EXPECT_EQ(tree.Dir().Read("zone/proj/d/d.DATA"),
                  "RUNSPEC\nINCLUDE\n-- mine\n '../../../out/o.inc' /\nTABDIMS\n 7 /\n");
    }

    void ExpectMoved() const
    {
        EXPECT_EQ(tree.IncludesOf(NewDir()), includes);
        EXPECT_EQ(tree.Dir().Read("new/deep/p/d/d.DATA"),
                  "RUNSPEC\nINCLUDE\n-- mine\n '../../../../out/o.inc' /\nTABDIMS\n 7 /\n");
        EXPECT_EQ(tree.Dir().Read("new/deep/p/f/f.DATA"),
                  "RUNSPEC\n" + Include("../../../../out/o.inc") + Include(NewDir() + "/f/g.inc"));
    }

    std::string Names(const std::string& folder) const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(tree.Dir().Path(folder)))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        std::string all;
        for (const std::string& name : names)
            all += (all.empty() ? "" : " ") + name;
        return all;
    }

    ProjectTree tree;
    std::string includes;
    std::map<std::string, std::string> oldContent;
    std::map<std::string, std::string> newContent;
    std::unique_ptr<IDeckManager> manager;
    IDeck* deck = nullptr;
    IDeckKeywordsEditor* editor = nullptr;
    std::string thrown; ///< by the last move
};

class MoveFailureTest : public testing::Test
{
protected:
    MoveFailureTest() { LineEnds::SetPolicy(LineEnds::Policy::Keep); }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

} // namespace

TEST_F(MoveFailureTest, EveryOperationThatFailsLeavesOneWholeProjectThatIsNamed)
{
    for (const std::set<Call>& kinds :
         {FailingFileSystem::Changes(), {Call::Read}, {Call::Close}, {Call::Status}, {Call::Seek}})
    {
        int refused = 0;
        int moved = 0;
        const bool isHarmless = kinds != FailingFileSystem::Changes();
        for (int n = 1;; ++n) {
            SCOPED_TRACE("operation " + std::to_string(n));
            SmallProject project;
            m_log.Clear();
            const bool hasFailed = project.MoveWithFailure(n, kinds, false);
            const std::string& thrown = project.thrown;
            if (thrown.empty()) {
                ++moved;
                project.ExpectMoved();
                const bool isLeft = project.tree.Dir().Exists("zone/proj");
                EXPECT_EQ(isLeft, m_log.Contains("What cannot be deleted is left in " + project.tree.OldDir()) ||
                                      m_log.Contains(project.tree.OldDir() + " is kept, since the file "));
            } else if (thrown.find("all the same. As it was before, it is kept in ") != std::string::npos) {
                ++moved;
                EXPECT_EQ(ProjectTree::ContentOf(project.tree.OldDir()), project.oldContent);
            } else {
                ++refused;
                if (thrown.starts_with("The project cannot be moved to ")) {
                    EXPECT_THAT(thrown, testing::HasSubstr("\nIt is whole in " + project.tree.OldDir() + "."));
                }
                if (thrown.find(" is left in ") == std::string::npos) project.ExpectUntouched(true);
            }
            if (testing::Test::HasFailure()) {
                ADD_FAILURE() << thrown;
                return;
            }
            if (!hasFailed) break;
        }
        EXPECT_GT(moved, 0);
        EXPECT_GT(refused, isHarmless ? -1 : 30);
    }
}

TEST_F(MoveFailureTest, ADiskThatFailsFromThenOnLosesNothing)
{
    for (int n = 1;; n += 1 + n / 16) {
        SCOPED_TRACE("operation " + std::to_string(n));
        SmallProject project;
        const bool hasFailed = project.MoveWithFailure(n, FailingFileSystem::Changes(), true);
        const std::string& thrown = project.thrown;
        if (thrown.empty()) {
            project.ExpectMoved();
        } else {
            EXPECT_EQ(ProjectTree::ContentOf(project.tree.OldDir()), project.oldContent);
            // What stood at the new place is there, or the message says where.
            const std::string aside = project.NewDir() + ".replaced";
            const bool isAside = thrown.find("is kept as " + aside + ".") != std::string::npos;
            if (isAside || thrown.find(" all the same.") == std::string::npos) {
                EXPECT_EQ(ProjectTree::ContentOf(isAside ? aside : project.NewDir()), project.newContent);
            }
        }
        if (testing::Test::HasFailure() || !hasFailed) {
            EXPECT_FALSE(testing::Test::HasFailure()) << thrown;
            break;
        }
    }
}

TEST_F(MoveFailureTest, AProcessThatEndsLeavesOneWholeProject)
{
    for (int n = 1;; ++n) {
        SCOPED_TRACE("operation " + std::to_string(n));
        const SmallProject project;
        const pid_t child = fork();
        if (child == 0) {
            FailingFileSystem disk;
            disk.ExitAt(n, FailingFileSystem::Changes(), 7);
            project.manager->MoveProjectDir(project.NewDir(), true);
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFEXITED(status));
        const auto old = ProjectTree::ContentOf(project.tree.OldDir());
        if (old != project.oldContent) project.ExpectMoved();
        if (testing::Test::HasFailure() || WEXITSTATUS(status) == 0) break;
    }
}

TEST_F(MoveFailureTest, AFullDiskAndMissingPermissionsAreToldWithTheFile)
{
    SmallProject project;
    const auto reasonFor = [&](const std::string& place) { return Refusal(*project.manager, place); };
    {
        FailingFileSystem disk;
        disk.LimitSpace(10);
        const std::string reason = reasonFor(project.NewDir());
        EXPECT_THAT(reason, testing::HasSubstr("No space left on device."));
        EXPECT_THAT(reason, testing::HasSubstr("The project cannot be moved to " + project.NewDir() + ".\n"));
    }
    const TestSupport::UnprivilegedUser user(project.tree.Dir());
    fs::permissions(project.tree.Dir().Path("new/deep"), static_cast<fs::perms>(0555));
    EXPECT_THAT(reasonFor(project.NewDir()), testing::HasSubstr("new/deep/p.moving: Permission denied.\n"));
    fs::permissions(project.tree.Dir().Path("new/deep"), fs::perms::owner_all);
    fs::permissions(project.tree.Dir().Path("zone/proj/f/g.inc"), fs::perms::none);
    EXPECT_THAT(reasonFor(project.NewDir()), testing::HasSubstr("zone/proj/f/g.inc cannot be read."));
    fs::permissions(project.tree.Dir().Path("zone/proj/f/g.inc"), fs::perms::owner_read | fs::perms::owner_write);
    fs::create_directory(project.tree.Dir().Path("zone/proj/f/closed"));
    fs::permissions(project.tree.Dir().Path("zone/proj/f/closed"), fs::perms::none);
    EXPECT_THAT(reasonFor(project.NewDir()), testing::HasSubstr("zone/proj/f/closed: Permission denied.\n"));
    fs::remove(project.tree.Dir().Path("zone/proj/f/closed"));
    project.ExpectUntouched(true);
}

TEST_F(MoveFailureTest, ProjectsByChanceMoveWholeWhereverTheyGo)
{
    Environment::Instance().SetPATHSSupport(true);
    Environment::Instance().SetPreventEmptyFileCreation(true);
    const std::vector<std::string> places = {"zone/proj2", "zone/pro", "q", "a/b/c/d/e", "out/p", "zone/more/proj"};
    TextGenerator random(11);
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        ProjectTree tree;
        tree.Generate(random, 1 + random.Below(4), 3 + random.Below(20));
        tree.ScannedIn(tree.OldDir());
        ASSERT_EQ(tree.ScannedIn(tree.OldDir()), "");
        const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create(tree.OldDir());
        // Some decks are open, and the last of these has an edit.
        IDeckKeywordsEditor* editor = nullptr;
        IDeck* edited = nullptr;
        for (const std::string& top : tree.Tops()) {
            if (random.Below(2) != 0) continue;
            edited = manager->ImportDeck(top, tree.OldDir() + "/" + top, false, true, false);
            edited->GetDeckKeywords()->GetFiles();
            editor = manager->GetEditor(edited);
        }
        std::set<const IKeyword*> edits;
        if (editor != nullptr && random.Below(3) != 0) {
            for (const KeywordIterator& place : KeywordsNamed(*edited, "WATER")) {
                if (random.Below(2) != 0) continue;
                editor->CommentOut(place);
                edits.insert(*place);
            }
        }
        const bool deleteOld = random.Below(4) != 0;
        const std::string includes = tree.IncludesOf(tree.OldDir());
        const auto before = ProjectTree::ContentOf(tree.OldDir());
        m_log.Clear();
        const std::string newDir = tree.Dir().Path(random.OneOf(places));
        manager->MoveProjectDir(newDir, deleteOld);
        for (const auto& message : m_log.Messages())
            EXPECT_TRUE(message.probe || message.text.find("72 characters") != std::string::npos) << message.text;
        ASSERT_EQ(fs::exists(tree.OldDir()), !deleteOld);
        if (!deleteOld) {
            ASSERT_EQ(ProjectTree::ContentOf(tree.OldDir()), before);
            fs::remove_all(tree.OldDir());
        }
        ASSERT_EQ(tree.IncludesOf(newDir), includes);
        // What the cache knew of the files it still does.
        ASSERT_EQ(tree.ScannedIn(newDir), "");
        // Every line is what it was, but for names and what was edited.
        int changed = 0;
        for (const auto& [name, text] : ProjectTree::ContentOf(newDir)) {
            const std::string& old = before.at(name);
            if (text == old) continue;
            if (old.starts_with("-> ")) continue;
            std::istringstream oldLines(old);
            std::istringstream lines(text);
            std::string oldLine;
            for (std::string line; std::getline(lines, line);) {
                ASSERT_TRUE(std::getline(oldLines, oldLine)) << name;
                const std::size_t quote = line.find('\'');
                if (line == oldLine) continue;
                // What an edit writes afresh has its name in capitals.
                if (Service::NoCaseStringEqual(line, oldLine)) continue;
                if (oldLine.starts_with("WATER")) {
                    ++changed;
                } else {
                    ASSERT_NE(quote, std::string::npos) << name << ": " << line;
                    EXPECT_EQ(line.substr(0, quote), oldLine.substr(0, oldLine.find('\'')));
                    EXPECT_EQ(line.substr(line.rfind('\'')), oldLine.substr(oldLine.rfind('\'')));
                }
            }
            ASSERT_FALSE(std::getline(oldLines, oldLine)) << name;
        }
        EXPECT_EQ(changed, static_cast<int>(edits.size()));
        // What is open is what a fresh look finds.
        for (IDeck* deck : manager->GetDecks()) {
            const auto& open = *deck->GetDeckKeywords();
            const std::unique_ptr<IDeckManager> fresh = DeckManagerFactory::Create();
            IDeck* twin =
                fresh->ImportDeck("twin", open.GetDataFile()->GetFileName().GetFullName(), false, true, false);
            ASSERT_NE(twin, nullptr);
            KeywordIterator place = open.Begin();
            KeywordIterator other = twin->GetDeckKeywords()->Begin();
            for (; *place != nullptr && *other != nullptr; ++place, ++other) {
                ASSERT_EQ(place->GetName(), other->GetName());
                ASSERT_EQ(place->GetPosition(), other->GetPosition());
                ASSERT_EQ(*place->GetText(), *other->GetText());
            }
            EXPECT_TRUE(*place == nullptr && *other == nullptr);
        }
        // Back again, the way that was taken.
        manager->MoveProjectDir(tree.OldDir(), true);
        EXPECT_EQ(tree.IncludesOf(tree.OldDir()), includes);
        EXPECT_EQ(tree.ScannedIn(tree.OldDir()), "");
    }
}

} // namespace ProjectTests

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include "files/KeywordFile.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TestDeck.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>

// A new text on its way into the place of the old: the steps that it takes, what becomes of it where a step is refused,
// and of a text that goes ahead of its deck or replaces a whole file.

namespace {

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;
using TestSupport::FailingFileSystem;
using TestSupport::TestDeck;
using Call = TestSupport::FailingFileSystem::Call;

/// From the first attempt to replace one of these files on, they refuse all changes.
class RefusingFiles : public FailingFileSystem
{
public:
    explicit RefusingFiles(std::set<std::string> paths) : m_paths(std::move(paths)) {}

    bool Rename(const std::string& from, const std::string& to, ErrorCode& error) override
    {
        if (!m_paths.contains(to)) return FailingFileSystem::Rename(from, to, error);
        m_refuses = true;
        error.assign(EBUSY, boost::system::system_category());
        return false;
    }
    int Open(const std::string& path, OpenMode mode, ErrorCode& error) override
    {
        if (!m_refuses || mode == OpenMode::Read || !m_paths.contains(path))
            return FailingFileSystem::Open(path, mode, error);
        error.assign(EACCES, boost::system::system_category());
        return -1;
    }

private:
    std::set<std::string> m_paths;
    bool m_refuses = false;
};

/// A file that can't be replaced, and whose first text that is written over it goes wrong at the end.
class ClosingInVain : public FailingFileSystem
{
public:
    explicit ClosingInVain(std::string path) : m_path(std::move(path)) {}

    bool Rename(const std::string& from, const std::string& to, ErrorCode& error) override
    {
        if (to != m_path) return FailingFileSystem::Rename(from, to, error);
        error.assign(EBUSY, boost::system::system_category());
        return false;
    }
    int Open(const std::string& path, OpenMode mode, ErrorCode& error) override
    {
        const int handle = FailingFileSystem::Open(path, mode, error);
        if (path == m_path && mode == OpenMode::WriteTruncate && !m_hasRefused) m_handle = handle;
        return handle;
    }
    bool Close(int handle, ErrorCode& error) override
    {
        const bool closed = FailingFileSystem::Close(handle, error);
        if (handle != m_handle) return closed;
        m_handle = -1;
        m_hasRefused = true;
        error.assign(EIO, boost::system::system_category());
        return false;
    }
    bool HasRefused() const { return m_hasRefused; }

private:
    std::string m_path;
    int m_handle = -1;
    bool m_hasRefused = false;
};

/// Notes what happens to files of one ending, and to folders; can refuse to close what was written there.
class StepRecorder : public FailingFileSystem
{
public:
    int Open(const std::string& path, OpenMode mode, ErrorCode& error) override
    {
        const int handle = FailingFileSystem::Open(path, mode, error);
        if (mode != OpenMode::Read && path.ends_with("__.tmp")) m_handle = handle;
        return handle;
    }
    bool Close(int handle, ErrorCode& error) override
    {
        const bool closed = FailingFileSystem::Close(handle, error);
        if (handle != m_handle) return closed;
        m_handle = -1;
        if (!refusesClose) return closed;
        error.assign(EDQUOT, boost::system::system_category());
        return false;
    }
    bool Sync(int handle, ErrorCode& error) override
    {
        steps += handle == m_handle ? "flush " : "flush of another file ";
        return FailingFileSystem::Sync(handle, error);
    }
    bool Rename(const std::string& from, const std::string& to, ErrorCode& error) override
    {
        steps += "rename ";
        return FailingFileSystem::Rename(from, to, error);
    }
    bool SyncDirectory(const std::string& path, ErrorCode& error) override
    {
        steps += path.ends_with("/sub") || path.ends_with("/sub/") ? "folder " : "another folder ";
        return FailingFileSystem::SyncDirectory(path, error);
    }

    std::string steps;
    bool refusesClose = false;

private:
    int m_handle = -1;
};

class ReplacementTest : public testing::Test
{
protected:
    ReplacementTest()
    {
        LineEnds::SetPolicy(LineEnds::Policy::Keep);
        m_deck.Walk(true);
    }

    static IDeckKeywordsEditor& EditorOf(const TestDeck& deck) { return *deck.Manager().GetEditor(&deck.Deck()); }
    IDeckKeywordsEditor& Editor() const { return EditorOf(m_deck); }
    std::string Read(const std::string& name) const { return m_deck.Dir().Read(name); }
    std::string Path(const std::string& name) const { return m_deck.Dir().Path(name); }
    void SetEverywhere(const std::string& data) const
    {
        for (int i = 1; i <= 3; ++i)
            EXPECT_TRUE(Editor().SetDataText(m_deck.At("TABDIMS", i), data));
    }
    static std::string Failure(const std::function<void()>& action)
    {
        try {
            action();
        } catch (const DeckManagerException& failure) {
            return failure.what();
        }
        return {};
    }

    const std::string m_top = "RUNSPEC\nTABDIMS\n1 /\nINCLUDE\n'A.INC' /\nINCLUDE\n'B.INC' /\n";
    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
    const TestDeck::Texts m_texts{
        {"TOP.DATA", m_top}, {"A.INC", "-- a\nTABDIMS\n1 /\n"}, {"B.INC", "-- b\nTABDIMS\n1 /\n"}};
    TestDeck m_deck{m_texts};
};

TEST_F(ReplacementTest, WhatCannotTakeItsPlaceIsKeptAndTold)
{
    enum Then
    {
        CommitAgain,
        EditAndCommit,
        Cancel
    };
    const std::string a = Path("A.INC");
    const std::string b = Path("B.INC");
    const auto failureOf = [](const std::string& path, const std::string& text) {
        return "Fails to commit editing because " + path + "\ncannot be modified.\nIts new text is kept in the file " +
               text + ".";
    };
    for (const bool both : {false, true}) {
        for (const Then then : {CommitAgain, EditAndCommit, Cancel}) {
            SCOPED_TRACE(testing::Message() << "both " << both << ", then " << then);
            SetEverywhere(" 7 /");
            m_log.Clear();
            std::string expected = failureOf(a, Path("A_INC__.tmp"));
            if (both) expected = failureOf(b, Path("B_INC__.tmp")) + "\n" + expected;
            {
                const RefusingFiles disk(both ? std::set{a, b} : std::set{a});
                EXPECT_EQ(Failure([&] { Editor().Commit(); }), expected);
            }
            // The others have got theirs.
            EXPECT_EQ(Read("TOP.DATA"), "RUNSPEC\nTABDIMS\n 7 /\nINCLUDE\n'A.INC' /\nINCLUDE\n'B.INC' /\n");
            EXPECT_EQ(Read("A.INC"), "-- a\nTABDIMS\n1 /\n");
            EXPECT_EQ(Read("A_INC__.tmp"), "-- a\nTABDIMS\n 7 /\n");
            EXPECT_EQ(Read("B.INC"), both ? "-- b\nTABDIMS\n1 /\n" : "-- b\nTABDIMS\n 7 /\n");
            EXPECT_EQ(m_deck.Dir().Listing(),
                      both ? "A.INC A_INC__.tmp B.INC B_INC__.tmp TOP.DATA" : "A.INC A_INC__.tmp B.INC TOP.DATA");
            std::vector<std::string> told;
            for (const char* name : {"B", "A"}) {
                if (*name == 'A' || both) {
                    told.push_back("The file " + Path(name + std::string(".INC")) +
                                   " cannot be modified: Device or resource busy. Its new text is kept in the file " +
                                   Path(name + std::string("_INC__.tmp")) + ".");
                }
            }
            EXPECT_EQ(m_log.Texts(), told);
            EXPECT_EQ(m_log.Texts(3), told);
            EXPECT_TRUE(m_deck.File("A.INC").IsModified());
            EXPECT_EQ(m_deck.File("B.INC").IsModified(), both);
            EXPECT_FALSE(m_deck.TopFile().IsModified());

            if (then == EditAndCommit) {
                EXPECT_TRUE(Editor().SetDataText(m_deck.At("TABDIMS", 2), " 8 /"));
            }
            then == Cancel ? Editor().Discard() : Editor().Commit();
            const std::vector<std::string> texts = {"-- a\nTABDIMS\n 7 /\n", "-- a\nTABDIMS\n 8 /\n",
                                                    "-- a\nTABDIMS\n1 /\n"};
            EXPECT_EQ(Read("A.INC"), texts[then]);
            EXPECT_EQ(Read("B.INC"), both && then == Cancel ? "-- b\nTABDIMS\n1 /\n" : "-- b\nTABDIMS\n 7 /\n");
            EXPECT_FALSE(m_deck.File("A.INC").IsModified() || m_deck.File("B.INC").IsModified());
            EXPECT_EQ("-- a\nTABDIMS\n" + *m_deck.Keywords().GetDataText(*m_deck.At("TABDIMS", 2)) + "\n",
                      Read("A.INC"));
            // A text whose name was told is not destroyed.
            const std::string kept =
                both ? "A.INC A_INC__.tmp B.INC B_INC__.tmp TOP.DATA" : "A.INC A_INC__.tmp B.INC TOP.DATA";
            EXPECT_EQ(m_deck.Dir().Listing(), then == Cancel ? kept : "A.INC B.INC TOP.DATA");
            if (then == Cancel) {
                EXPECT_EQ(Read("A_INC__.tmp"), "-- a\nTABDIMS\n 7 /\n");
            }
            // As it was, for the next.
            for (const char* name : {"A_INC__.tmp", "B_INC__.tmp"})
                std::filesystem::remove(Path(name));
            for (const auto& [name, text] : m_texts) {
                m_deck.Dir().Write(name, text);
                m_deck.File(name).Reload();
            }
            m_deck.Walk(true);
        }
    }
}

TEST_F(ReplacementTest, WhereARenameIsRefusedTheTextIsCopied)
{
    SetEverywhere(" 7 /");
    FailingFileSystem disk;
    disk.FailAt(1, {Call::Rename}, EBUSY, true);
    Editor().Commit();
    EXPECT_TRUE(disk.HasFailed());
    EXPECT_EQ(Read("A.INC") + Read("B.INC"), "-- a\nTABDIMS\n 7 /\n-- b\nTABDIMS\n 7 /\n");
    EXPECT_EQ(m_deck.Dir().Listing(), "A.INC B.INC TOP.DATA");
    EXPECT_TRUE(m_log.Empty());
}

/// A copy that fails leaves the old text written over itself, at a new time: that is no change by somebody else.
TEST_F(ReplacementTest, WhereTheCopyFailsTooTheNextCommitGoesOn)
{
    SetEverywhere(" 7 /");
    {
        ClosingInVain disk(Path("A.INC"));
        EXPECT_NE(Failure([&] { Editor().Commit(); }), "");
        EXPECT_TRUE(disk.HasRefused());
    }
    EXPECT_EQ(Read("A.INC") + Read("B.INC"), "-- a\nTABDIMS\n1 /\n-- b\nTABDIMS\n 7 /\n");
    SetEverywhere(" 8 /");
    EXPECT_EQ(Failure([&] { Editor().Commit(); }), "");
    EXPECT_EQ(Read("A.INC") + Read("B.INC"), "-- a\nTABDIMS\n 8 /\n-- b\nTABDIMS\n 8 /\n");
}

/// The end of the file stands in the text that waits, and nowhere else.
TEST_F(ReplacementTest, AFileGoesAheadWhoseTextWaitsForItsPlace)
{
    const TestDeck deck(
        TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\n"}, {"A.INC", "TABDIMS\n1 /\n-- end\n"}});
    EXPECT_TRUE(EditorOf(deck).SetDataText(deck.At("TABDIMS"), " 7 /"));
    {
        RefusingFiles disk({deck.Dir().Path("A.INC")});
        EXPECT_NE(Failure([&] { EditorOf(deck).Commit(); }), "");
    }
    const auto* oil = Environment::Instance().GetSyntaxTable()->FindSyntax("OIL", true);
    ASSERT_NE(EditorOf(deck).InsertKeywordText(*oil, deck.File("A.INC").End(), ""), nullptr);
    EditorOf(deck).CommitFile(&deck.File("A.INC"));
    EXPECT_TRUE(EditorOf(deck).SetDataText(deck.At("TABDIMS"), " 8 /"));
    EditorOf(deck).Commit();
    EXPECT_EQ(deck.Dir().Read("A.INC"), "TABDIMS\n 8 /\nOIL\n\n-- end\n");
    EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
}

TEST_F(ReplacementTest, ATextIsOnTheDiskAheadOfItsReplacement)
{
    const TestDeck deck(TestDeck::Texts{{"sub/TOP.DATA", "RUNSPEC\nTABDIMS\n1 /\nINCLUDE\n'A.INC' /\n"},
                                        {"sub/A.INC", "TABDIMS\n1 /\n"}});
    EXPECT_TRUE(EditorOf(deck).SetDataText(deck.At("TABDIMS", 1), " 7 /"));
    EXPECT_TRUE(EditorOf(deck).SetDataText(deck.At("TABDIMS", 2), " 7 /"));
    StepRecorder disk;
    EditorOf(deck).Commit();
    EXPECT_EQ(disk.steps, "flush flush rename folder rename folder ");
    disk.steps.clear();
    // One that has gone ahead is flushed as a whole.
    EXPECT_TRUE(EditorOf(deck).SetDataText(deck.At("TABDIMS", 2), " 8 /"));
    EditorOf(deck).CommitFile(&deck.File("sub/A.INC"));
    EXPECT_EQ(disk.steps, "");
    EditorOf(deck).Commit();
    EXPECT_EQ(disk.steps, "flush rename folder ");
    disk.steps.clear();
    std::istringstream text("OIL\n");
    EditorOf(deck).OverwriteFile(&deck.File("sub/A.INC"), text, true, true, false);
    EXPECT_EQ(disk.steps, "flush rename folder ");
}

/// Space that is short, a quota, or an error that shows when all has been written.
TEST_F(ReplacementTest, ATextThatIsNotWholeReplacesNothing)
{
    const auto expectRefusal = [&](const std::string& reason) {
        m_log.Clear();
        const std::string message = Failure([&] { Editor().Commit(); });
        const std::string first = Path(message.find("A.INC") != std::string::npos   ? "A.INC"
                                       : message.find("B.INC") != std::string::npos ? "B.INC"
                                                                                    : "TOP.DATA");
        EXPECT_EQ(message, "Fails to commit editing because temporary file for " + first + "\ncannot be created.");
        EXPECT_EQ(m_log.Texts(3),
                  std::vector<std::string>{"The file " + first + " cannot be written: " + reason + "."});
        EXPECT_EQ(Read("TOP.DATA"), m_top);
        EXPECT_EQ(Read("A.INC") + Read("B.INC"), "-- a\nTABDIMS\n1 /\n-- b\nTABDIMS\n1 /\n");
        EXPECT_EQ(m_deck.Dir().Listing(), "A.INC B.INC TOP.DATA");
        EXPECT_TRUE(m_deck.TopFile().IsModified() && m_deck.File("A.INC").IsModified());
        // All are where they were: in the old texts.
        EXPECT_EQ(TestDeck::Extents(m_deck.File("A.INC")), "TABDIMS@5+12");
        EXPECT_EQ(*m_deck.Keywords().GetDataText(*m_deck.At("TABDIMS", 2)), " 700 /");
    };
    SetEverywhere(" 700 /");
    const long long whole = static_cast<long long>(m_top.size() + 2 * std::string("-- a\nTABDIMS\n1 /\n").size()) + 9;
    for (long long space = 0; space < whole; ++space) {
        SCOPED_TRACE(space);
        FailingFileSystem disk;
        disk.LimitSpace(space);
        expectRefusal("No space left on device");
    }
    {
        FailingFileSystem disk;
        disk.FailAt(2, {Call::Sync}, EIO);
        expectRefusal("Input/output error");
    }
    {
        StepRecorder disk;
        disk.refusesClose = true;
        EXPECT_NE(Failure([&] { Editor().Commit(); }), "");
        EXPECT_EQ(Read("TOP.DATA"), m_top);
    }
    Editor().Commit();
    EXPECT_EQ(Read("A.INC") + Read("B.INC"), "-- a\nTABDIMS\n 700 /\n-- b\nTABDIMS\n 700 /\n");
}

TEST_F(ReplacementTest, TwoFilesMayHaveOneTemporaryName)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'A_B.C' /\nINCLUDE\n'A.B_C' /\n"},
                                        {"A_B.C", "TABDIMS\n1 /\n"},
                                        {"A.B_C", "TABDIMS\n2 /\n"}});
    EXPECT_TRUE(EditorOf(deck).SetDataText(deck.At("TABDIMS", 1), " 7 /"));
    EXPECT_TRUE(EditorOf(deck).SetDataText(deck.At("TABDIMS", 2), " 8 /"));
    EditorOf(deck).CommitFile(&deck.File("A_B.C"));
    EditorOf(deck).CommitFile(&deck.File("A.B_C"));
    EditorOf(deck).Commit();
    EXPECT_EQ(deck.Dir().Read("A_B.C") + deck.Dir().Read("A.B_C"), "TABDIMS\n 7 /\nTABDIMS\n 8 /\n");
    EXPECT_EQ(deck.Dir().Listing(), "A.B_C A_B.C TOP.DATA");
}

TEST_F(ReplacementTest, ALinkThatLeadsNowhereIsFilled)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'link.inc' /\n"}, {"real/other.inc", "OIL\n"}});
    Service::FileSystem& files = Service::FileSystem::Instance();
    Service::FileSystem::ErrorCode error;
    ASSERT_TRUE(files.MakeLink("real/none.inc", deck.Dir().Path("link.inc"), error));
    deck.Walk(true);
    const auto* tabdims = Environment::Instance().GetSyntaxTable()->FindSyntax("TABDIMS", true);
    ASSERT_NE(EditorOf(deck).InsertKeywordText(*tabdims, deck.File("link.inc").End(), "TABDIMS\n1 /\n"), nullptr);
    EditorOf(deck).Commit();
    EXPECT_EQ(deck.Dir().Listing(), "TOP.DATA link.inc real/ real/none.inc real/other.inc");
    EXPECT_EQ(deck.Dir().Read("real/none.inc"), "TABDIMS\n1 /\n");
    EXPECT_EQ(files.Status(deck.Dir().Path("link.inc"), false, error).kind, Service::FileStatus::Kind::Link);
}

TEST_F(ReplacementTest, FoldersThatWereMadeGoWithAFailure)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'new/deep/N.INC' /\nTABDIMS\n1 /\n"}});
    deck.Walk(true);
    EXPECT_TRUE(EditorOf(deck).SetDataText(deck.At("TABDIMS"), " 7 /"));
    const auto* oil = Environment::Instance().GetSyntaxTable()->FindSyntax("OIL", true);
    ASSERT_NE(EditorOf(deck).InsertKeywordText(*oil, deck.File("new/deep/N.INC").End(), ""), nullptr);
    for (const int n : {1, 2}) {
        FailingFileSystem disk;
        disk.FailAt(n, {Call::Sync}, EIO);
        EXPECT_NE(Failure([&] { EditorOf(deck).Commit(); }), "");
        EXPECT_EQ(deck.Dir().Listing(), "TOP.DATA");
    }
    EditorOf(deck).Commit();
    EXPECT_EQ(deck.Dir().Listing(), "TOP.DATA new/ new/deep/ new/deep/N.INC");
}

/// A file with the generated tag and one without, by a text with it and one without; the mark at the head of a text
/// stays there.
TEST_F(ReplacementTest, AFileMayKeepItsTagWhateverItsNewTextBears)
{
    for (const std::string own : {"", "-- Generated\n"}) {
        for (const std::string other : {"", "\n-- Generated\n"}) {
            for (const int keepsAndMark : {0, 1, 2, 3}) {
                const bool keeps = keepsAndMark % 2 == 1;
                const std::string mark = keepsAndMark > 1 ? "\xEF\xBB\xBF" : "";
                SCOPED_TRACE(own + "|" + other + (keeps ? "|keeps" : "") + (mark.empty() ? "" : "|mark"));
                const TestDeck deck(
                    TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\n"}, {"A.INC", own + "OIL\n"}});
                deck.Walk(true);
                std::istringstream text(mark + other + "GAS\n");
                EditorOf(deck).OverwriteFile(&deck.File("A.INC"), text, true, false, keeps);
                EXPECT_EQ(deck.Dir().Read("A.INC"), mark + (keeps ? own : other) + "GAS\n");
                EXPECT_EQ(deck.Walk(true), "RUNSPEC INCLUDE GAS");
                EXPECT_EQ(deck.File("A.INC").IsFileTagged(), !(keeps ? own : other).empty());
            }
        }
    }
}

/// Where keywords stood, when they had come to stand elsewhere and the commit has failed.
TEST_F(ReplacementTest, ADiscardGivesBackWhereKeywordsStood)
{
    const auto extents = [&] {
        return TestDeck::Extents(m_deck.TopFile()) + "|" + TestDeck::Extents(m_deck.File("A.INC")) + "|" +
               *m_deck.Keywords().GetDataText(*m_deck.At("TABDIMS", 1)) + "|" +
               *m_deck.Keywords().GetDataText(*m_deck.At("TABDIMS", 2));
    };
    const std::string before = extents();
    for (const bool fails : {false, true}) {
        EXPECT_TRUE(Editor().MoveKeyword(m_deck.At("TABDIMS", 1), m_deck.At("TABDIMS", 2)));
        EXPECT_TRUE(Editor().Suppress(m_deck.At("TABDIMS", 1)));
        EXPECT_TRUE(Editor().CommentOut(m_deck.At("TABDIMS", 2)));
        if (fails) {
            FailingFileSystem disk;
            disk.FailAt(2, {Call::Sync}, EIO);
            EXPECT_NE(Failure([&] { Editor().Commit(); }), "");
        }
        Editor().Discard();
        EXPECT_EQ(extents(), before);
        EXPECT_FALSE(m_deck.TopFile().IsModified() || m_deck.File("A.INC").IsModified());
    }
    EXPECT_TRUE(Editor().SetDataText(m_deck.At("TABDIMS", 3), " 9 /"));
    Editor().Commit();
    EXPECT_EQ(Read("TOP.DATA"), m_top);
    EXPECT_EQ(Read("A.INC") + Read("B.INC"), "-- a\nTABDIMS\n1 /\n-- b\nTABDIMS\n 9 /\n");
}

TEST_F(ReplacementTest, WhatCannotBeOverwrittenIsNamed)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'no/NEW.INC' /\nINCLUDE\n'A.INC' /\n"},
                                        {"A.INC", "OIL\n"},
                                        {"no", "a file where a folder would be"}});
    deck.Walk(true);
    std::filesystem::remove(deck.Dir().Path("A.INC"));
    std::filesystem::create_directory(deck.Dir().Path("A.INC"));
    const auto overwrite = [&](const std::string& name) {
        std::istringstream text("GAS\n");
        EditorOf(deck).OverwriteFile(&deck.File(name), text, true, false, false);
    };
    EXPECT_EQ(Failure([&] { overwrite("A.INC"); }), "Fail to update keyword file by overwrite because the file\n" +
                                                        deck.Dir().Path("A.INC") + "\ncannot be modified/created.");
    EXPECT_EQ(Failure([&] { overwrite("no/NEW.INC"); }),
              "Fail to update keyword file by overwrite because the directory\n" + deck.Dir().Path("no") +
                  "\ncannot be created.");
    EXPECT_EQ(deck.Dir().Listing(), "A.INC/ TOP.DATA no");
    EXPECT_EQ(deck.Dir().Read("no"), "a file where a folder would be");
}

/// Longer than any buffer.
const std::string longData = std::string().append(100000, '\n').append("1 /\n");

/// Of one file, by way of its text beside it; and what replaces a whole file. Each operation fails, or ends the
/// process.
class SingleFileFailureTest : public testing::Test
{
protected:
    struct Way
    {
        const char* what;
        std::function<void(const TestDeck&)> before;
        std::function<void(const TestDeck&)> action;
        bool replaces; ///< the file itself
    };

    SingleFileFailureTest() { LineEnds::SetPolicy(LineEnds::Policy::Keep); }

    static IDeckKeywordsEditor& EditorOf(const TestDeck& deck) { return *deck.Manager().GetEditor(&deck.Deck()); }
    static void Append(const TestDeck& deck, const std::string& text)
    {
        const auto* syntax = Environment::Instance().GetSyntaxTable()->FindSyntax("EQLDIMS", true);
        EXPECT_NE(EditorOf(deck).InsertKeywordText(*syntax, deck.File("A.INC").End(), text), nullptr);
    }
    static void SetData(const TestDeck& deck) { EXPECT_TRUE(EditorOf(deck).SetDataText(deck.At("TABDIMS"), " 7 /")); }
    static void GoAhead(const TestDeck& deck) { EditorOf(deck).CommitFile(&deck.File("A.INC")); }
    static void Overwrite(const TestDeck& deck, bool keepTag)
    {
        std::istringstream text("OIL\n-- new\n");
        EditorOf(deck).OverwriteFile(&deck.File("A.INC"), text, true, false, keepTag);
    }

    const std::vector<Way> m_ways = {
        {"ahead", SetData, GoAhead, false},
        {"ahead once more",
         [](const TestDeck& deck) {
             SetData(deck);
             GoAhead(deck);
             Append(deck, longData);
         },
         GoAhead, false},
        {"ahead, written anew",
         [](const TestDeck& deck) {
             Append(deck, "1 /\n");
             GoAhead(deck), SetData(deck);
         },
         GoAhead, false},
        {"overwritten", [](const TestDeck&) {}, [](const TestDeck& deck) { Overwrite(deck, false); }, true},
        {"overwritten, with the tag kept", [](const TestDeck&) {}, [](const TestDeck& deck) { Overwrite(deck, true); },
         true},
    };
    const TestDeck::Texts m_texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\n"},
                                  {"A.INC", "-- Generated\n\n-- a\nTABDIMS\n1 /\n-- end\n"}};
    const std::string m_old = m_texts[1].second;
    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

TEST_F(SingleFileFailureTest, EveryOperationMayFail)
{
    std::set<Call> operations = FailingFileSystem::Changes();
    operations.insert({Call::Close, Call::Read});
    int points = 0;
    for (const Way& way : m_ways) {
        const TestDeck whole(m_texts);
        whole.Walk(true);
        way.before(whole);
        way.action(whole);
        EditorOf(whole).Commit();
        const std::string expected = whole.Dir().Read("A.INC");
        for (const bool forever : {false, true}) {
            for (const bool cancels : {false, true}) {
                for (int n = 1; !testing::Test::HasFailure(); ++n) {
                    SCOPED_TRACE(testing::Message() << way.what << ", operation " << n << ", forever " << forever
                                                    << ", cancel " << cancels);
                    const TestDeck deck(m_texts);
                    deck.Walk(true);
                    way.before(deck);
                    const std::string listing = deck.Dir().Listing();
                    const std::string ahead =
                        deck.Dir().Exists("A_INC__.tmp") ? deck.Dir().Read("A_INC__.tmp") : std::string();
                    FailingFileSystem failing;
                    failing.FailAt(n, operations, ENOSPC, forever);
                    bool refused = false;
                    try {
                        way.action(deck);
                    } catch (const DeckManagerException&) {
                        refused = true;
                    }
                    const bool hasFailed = failing.HasFailed();
                    failing.Pass();
                    if (!way.replaces || refused) {
                        EXPECT_EQ(deck.Dir().Read("A.INC"), m_old);
                    }
                    const bool mayLeaveFiles = hasFailed && (forever || failing.FirstFailed() == Call::Unlink);
                    if (refused && !mayLeaveFiles) {
                        EXPECT_EQ(deck.Dir().Listing(), listing);
                        if (!ahead.empty()) {
                            EXPECT_TRUE(deck.Dir().Read("A_INC__.tmp") == ahead);
                        }
                    }
                    if (cancels) {
                        const bool isNew = way.replaces && !refused;
                        // Its own load may have been what failed.
                        if (isNew && hasFailed) deck.File("A.INC").Reload();
                        EditorOf(deck).Discard();
                        EXPECT_EQ(deck.Dir().Read("A.INC"), isNew ? expected : m_old);
                        EXPECT_EQ(deck.Walk(true), isNew ? "RUNSPEC INCLUDE OIL" : "RUNSPEC INCLUDE TABDIMS");
                    } else {
                        if (refused) way.action(deck);
                        EditorOf(deck).Commit();
                        EXPECT_TRUE(deck.Dir().Read("A.INC") == expected);
                    }
                    if (!mayLeaveFiles) {
                        EXPECT_EQ(deck.Dir().Listing(), "A.INC TOP.DATA");
                    }
                    if (!hasFailed) break;
                    ++points;
                }
            }
        }
    }
    RecordProperty("points", points);
    EXPECT_GT(points, 200);
}

TEST_F(SingleFileFailureTest, TheProcessMayEndAtEveryOperation)
{
    int points = 0;
    for (const Way& way : m_ways) {
        for (int n = 1; !testing::Test::HasFailure(); ++n) {
            SCOPED_TRACE(testing::Message() << way.what << ", operation " << n);
            const TestDeck deck(m_texts);
            deck.Walk(true);
            way.before(deck);
            const pid_t child = fork();
            if (child == 0) {
                FailingFileSystem failing;
                failing.ExitAt(n, FailingFileSystem::Changes(), 7);
                way.action(deck);
                _exit(0);
            }
            int status = 0;
            ASSERT_EQ(waitpid(child, &status, 0), child);
            ASSERT_TRUE(WIFEXITED(status));
            const std::string text = deck.Dir().Read("A.INC");
            const std::string replaced = std::string(way.what).find("tag") != std::string::npos
                                             ? "-- Generated\nOIL\n-- new\n"
                                             : "OIL\n-- new\n";
            if (!way.replaces || text != replaced) {
                EXPECT_EQ(text, m_old);
            }
            if (WEXITSTATUS(status) != 7) {
                EXPECT_EQ(WEXITSTATUS(status), 0);
                EXPECT_EQ(text, way.replaces ? replaced : m_old);
                break;
            }
            ++points;
        }
    }
    RecordProperty("points", points);
    EXPECT_GT(points, 20);
}

} // namespace

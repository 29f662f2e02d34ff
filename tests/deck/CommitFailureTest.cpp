#include <optional>

#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/DeckTest.h"

// A commit while the disk fails, or the process ends: every file of the deck is old or new, never anything else, and
// nothing that was edited is lost.

namespace {

using namespace DeckTests;

std::string NameOf(int file)
{
    return file == 0 ? "TOP.DATA" : "sub/F" + std::to_string(file) + ".INC";
}

/// The file was written long ago: who writes it now changes its time, however coarse the clock.
void Age(const TestDeck& deck, const std::string& name)
{
    Service::FileSystem::ErrorCode error;
    Service::FileSystem::Instance().SetTimeLastModified(deck.Dir().Path(name), 1500000000000000000, error);
}

/// The top file, and below it the others, all changed by the same edits.
class EditedDeck
{
public:
    EditedDeck(int files, bool afterPartialCommit, bool keepsLineEnds) : m_count(files), m_deck(Texts(files))
    {
        if (keepsLineEnds) LineEnds::SetPolicy(LineEnds::Policy::Keep);
        for (int i = 0; i < files; ++i)
            Age(m_deck, NameOf(i));
        m_deck.Walk(true);
        m_listing = m_deck.Dir().Listing();
        for (int i = 0; i < files; ++i)
            m_old.push_back(Read(i));
        IDeckKeywordsEditor& editor = Editor();
        const auto edit = [&](const std::string& name, const std::string& inserted) {
            for (int i = 0; i < m_count; ++i) {
                KeywordFile& file = m_deck.File(NameOf(i));
                for (KeywordFileIterator place = file.Begin(); place != file.End(); ++place) {
                    if ((*place)->GetName() == name) editor.SetDataText(place, " 7 8 /");
                }
                editor.InsertKeywordText(SyntaxOf("EQLDIMS"), file.End(), inserted);
            }
        };
        edit("TABDIMS", "EQLDIMS\n 5 /\n");
        if (afterPartialCommit) {
            for (int i = 0; i < m_count; ++i)
                editor.CommitFile(&m_deck.File(NameOf(i)));
            edit("", "EQLDIMS\n 6 /\n");
        }
        if (files > 1) {
            // What one file loses another gains.
            editor.MoveKeyword(m_deck.At("OIL"), KeywordIterator(m_deck.At("WATER")));
        }
    }

    int Count() const { return m_count; }
    IDeckKeywordsEditor& Editor() { return *m_deck.Manager().GetEditor(&m_deck.Deck()); }
    std::string Read(int file) const
    {
        return m_deck.Dir().Exists(NameOf(file)) ? m_deck.Dir().Read(NameOf(file)) : "(missing)";
    }
    const std::string& Old(int file) const { return m_old[static_cast<std::size_t>(file)]; }
    const TestDeck& Deck() const { return m_deck; }
    /// What there was ahead of the edits.
    const std::string& Listing() const { return m_listing; }

private:
    static TestDeck::Texts Texts(int files)
    {
        std::string top = "-- head\nRUNSPEC\nOIL\n-- above\nTABDIMS\n1 2 /\n-- between\n";
        for (int i = 1; i < files; ++i)
            top += "INCLUDE\n'" + NameOf(i) + "' /\n";
        TestDeck::Texts texts{{NameOf(0), top + "-- end"}};
        for (int i = 1; i < files; ++i) {
            // One is longer than any buffer, ahead of the edit and behind it.
            std::string line;
            if (i == 1) line.append(100000, '-').append(1, '\n');
            const std::string text = "-- head\n" + line + "WATER\nTABDIMS\n1 2 /\n" + line;
            texts.emplace_back(NameOf(i), text + "-- end\n");
        }
        return texts;
    }

    TestSupport::CleanEnvironment m_environment;
    int m_count;
    TestDeck m_deck;
    std::vector<std::string> m_old;
    std::string m_listing;
};

struct Shape
{
    int files;
    bool afterPartialCommit;
    bool keepsLineEnds;
};

std::vector<std::string> CommittedTexts(const Shape& shape)
{
    EditedDeck deck(shape.files, shape.afterPartialCommit, shape.keepsLineEnds);
    deck.Editor().Commit();
    std::vector<std::string> texts;
    for (int i = 0; i < deck.Count(); ++i) {
        texts.push_back(deck.Read(i));
        EXPECT_NE(texts.back(), deck.Old(i));
    }
    return texts;
}

/// How many files are new; fails the test for a file that is neither.
int CountNew(const EditedDeck& deck, const std::vector<std::string>& expected)
{
    int count = 0;
    for (int i = 0; i < deck.Count(); ++i) {
        const std::string text = deck.Read(i);
        if (text == expected[static_cast<std::size_t>(i)])
            ++count;
        else
            EXPECT_EQ(text, deck.Old(i)) << NameOf(i);
    }
    return count;
}

const std::set<Call>& Operations()
{
    static const std::set<Call> operations = [] {
        std::set<Call> calls = FailingFileSystem::Changes();
        calls.insert(Call::Close);
        calls.insert(Call::Read);
        return calls;
    }();
    return operations;
}

/// Commits in another process, which ends at the n-th of the operations. False when it came to its own end.
bool EndsAtOperation(int n, const std::set<Call>& operations, IDeckKeywordsEditor& editor)
{
    const pid_t child = fork();
    if (child == 0) {
        FailingFileSystem failing;
        failing.ExitAt(n, operations, 7);
        editor.Commit();
        _exit(0);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 7) return true;
    EXPECT_EQ(WEXITSTATUS(status), 0);
    return false;
}

/// The commit, of which the n-th operation fails, and with `forever` all behind it until it has given up. Then another,
/// or a discard. Gives the kind of the operation; none when there was no such one.
std::optional<Call> FailsAtOperation(const Shape& shape, const std::vector<std::string>& expected, bool cancels,
                                     bool forever, int n)
{
    EditedDeck deck(shape.files, shape.afterPartialCommit, shape.keepsLineEnds);
    FailingFileSystem failing;
    failing.FailAt(n, Operations(), ENOSPC, forever);
    const std::string message = Thrown<DeckManagerException>([&] { deck.Editor().Commit(); });
    const bool hasFailed = failing.HasFailed();
    failing.Pass();
    const int newFiles = CountNew(deck, expected);
    if (message.empty()) {
        EXPECT_EQ(newFiles, deck.Count());
    } else if (!cancels) {
        // All edits are still there.
        EXPECT_NO_THROW(deck.Editor().Commit()) << message;
        EXPECT_EQ(CountNew(deck, expected), deck.Count());
    } else {
        deck.Editor().Discard();
        EXPECT_EQ(CountNew(deck, expected), newFiles);
    }
    EXPECT_EQ(deck.Deck().Walk(true), deck.Deck().WalkOfDisk()) << message;
    // Only what can't be removed is left.
    const bool mayLeaveFiles = hasFailed && (forever || failing.FirstFailed() == Call::Unlink);
    if (!mayLeaveFiles) {
        EXPECT_EQ(deck.Deck().Dir().Listing(), deck.Listing()) << message;
    }
    return hasFailed ? std::optional(failing.FirstFailed()) : std::nullopt;
}

/// A test for each, since they take their time.
class CommitFailureOf : public testing::TestWithParam<Shape>
{
};

TEST_P(CommitFailureOf, EveryOperationMayFail)
{
    const TestSupport::LogRecorder log;
    const Shape& shape = GetParam();
    const std::vector<std::string> expected = CommittedTexts(shape);
    std::set<Call> met;
    int points = 0;
    for (const bool forever : {false, true}) {
        for (const bool cancels : {false, true}) {
            for (int n = 1; !testing::Test::HasFailure(); ++n) {
                SCOPED_TRACE(testing::Message()
                             << "operation " << n << ", forever " << forever << ", cancel " << cancels);
                const std::optional<Call> failed = FailsAtOperation(shape, expected, cancels, forever, n);
                if (!failed) break;
                met.insert(*failed);
                ++points;
            }
        }
    }
    RecordProperty("points", points);
    EXPECT_GE(points, shape.files * 80);
    std::set<Call> calls = {Call::Open, Call::Close,         Call::Read,   Call::Write,
                            Call::Sync, Call::SyncDirectory, Call::Rename, Call::Unlink};
    // The system copies what is long, where it stays as it is.
    if (shape.files > 1 && shape.keepsLineEnds) calls.insert(Call::CopyRange);
    for (const Call call : calls)
        EXPECT_EQ(met.count(call), 1U) << static_cast<int>(call);
}

TEST_P(CommitFailureOf, TheProcessMayEndAtEveryOperation)
{
    const Shape& shape = GetParam();
    const std::vector<std::string> expected = CommittedTexts(shape);
    int points = 0;
    for (int n = 1; !testing::Test::HasFailure(); ++n) {
        SCOPED_TRACE(testing::Message() << "operation " << n);
        EditedDeck deck(shape.files, shape.afterPartialCommit, shape.keepsLineEnds);
        const bool ended = EndsAtOperation(n, Operations(), deck.Editor());
        const int newFiles = CountNew(deck, expected);
        if (!ended) {
            EXPECT_EQ(newFiles, deck.Count());
            break;
        }
        ++points;
    }
    RecordProperty("points", points);
    EXPECT_GE(points, shape.files * 20);
}

INSTANTIATE_TEST_SUITE_P(Decks, CommitFailureOf,
                         testing::Values(Shape{1, false, false}, Shape{1, true, true}, Shape{7, false, true},
                                         Shape{7, true, false}),
                         [](const testing::TestParamInfo<Shape>& shape) {
                             return std::to_string(shape.param.files) + (shape.param.files == 1 ? "File" : "Files") +
                                    (shape.param.afterPartialCommit ? "AfterAPartialCommit" : "");
                         });

/// Does something to a file after the first piece of it that is copied to the new text.
class Meddler : public FailingFileSystem
{
public:
    explicit Meddler(std::function<void()> meddle) : m_meddle(std::move(meddle)) {}

    int Open(const std::string& path, OpenMode mode, ErrorCode& error) override
    {
        const int handle = FailingFileSystem::Open(path, mode, error);
        if (mode == OpenMode::WriteNew) m_target = handle;
        return handle;
    }
    std::int64_t Write(int handle, const void* data, std::size_t size, ErrorCode& error) override
    {
        const std::int64_t count = FailingFileSystem::Write(handle, data, size, error);
        if (handle == m_target) Meddle();
        return count;
    }
    std::int64_t CopyRange(int from, std::int64_t offset, int to, std::size_t size, ErrorCode& error) override
    {
        const std::int64_t count = FailingFileSystem::CopyRange(from, offset, to, size, error);
        if (count > 0) Meddle();
        return count;
    }

private:
    void Meddle()
    {
        if (const auto meddle = std::exchange(m_meddle, {})) meddle();
    }

    std::function<void()> m_meddle;
    int m_target = -1;
};

TEST(CommitFailureTest, AFileThatChangesWhileItIsCopiedIsNotReplaced)
{
    const TestSupport::LogRecorder log;
    for (const bool keepsLineEnds : {false, true}) {
        for (const std::size_t copies : {0, 30000}) {
            for (const char* manner : {"cut", "grown", "other text"}) {
                SCOPED_TRACE(testing::Message() << manner << ", keep " << keepsLineEnds << ", copies " << copies);
                EditedDeck deck(2, false, keepsLineEnds);
                const std::string path = deck.Deck().Dir().Path(NameOf(1));
                std::string theirs = deck.Old(1);
                if (manner[0] == 'c') theirs.resize(120000);
                if (manner[0] == 'g') theirs += "-- more\n";
                if (manner[0] == 'o') theirs[150000] = 'x';
                Meddler disk([&] {
                    if (manner[0] == 'c')
                        std::filesystem::resize_file(path, theirs.size());
                    else
                        deck.Deck().Dir().Write(NameOf(1), theirs);
                });
                disk.LimitCopies(copies);
                EXPECT_THROW(deck.Editor().Commit(), DeckManagerException);
                EXPECT_TRUE(deck.Read(1) == theirs) << "it was replaced";
                EXPECT_EQ(deck.Read(0), deck.Old(0));
                EXPECT_EQ(deck.Deck().Dir().Listing(), "TOP.DATA sub/ sub/F1.INC");
            }
        }
    }
}

/// It breaks off the text that goes ahead of its deck as well, or, where that has what was read, the commit behind it.
TEST(CommitFailureTest, AFileThatChangesWhileItGoesAheadIsNotReplaced)
{
    const TestSupport::LogRecorder log;
    for (const char* manner : {"cut", "grown", "other text"}) {
        SCOPED_TRACE(manner);
        EditedDeck deck(2, false, true);
        const std::string path = deck.Deck().Dir().Path(NameOf(1));
        // Its keywords have not moved.
        deck.Editor().Discard();
        deck.Editor().SetDataText(deck.Deck().Keywords().GetFileIterator(deck.Deck().At("TABDIMS", 2)), " 7 8 /");
        std::string theirs = deck.Old(1);
        if (manner[0] == 'c') theirs.resize(50000);
        if (manner[0] == 'g') theirs += "-- more\n";
        if (manner[0] == 'o') theirs[150000] = 'x';
        {
            Meddler disk([&] { deck.Deck().Dir().Write(NameOf(1), theirs); });
            disk.LimitCopies(30000);
            if (manner[0] == 'c') {
                EXPECT_THROW(deck.Editor().CommitFile(&deck.Deck().File(NameOf(1))), DeckManagerException);
                EXPECT_EQ(deck.Deck().Dir().Listing(), deck.Listing());
            } else {
                deck.Editor().CommitFile(&deck.Deck().File(NameOf(1)));
            }
        }
        EXPECT_THROW(deck.Editor().Commit(), DeckManagerException);
        EXPECT_TRUE(deck.Read(1) == theirs) << "it was replaced";
        deck.Editor().Discard();
        EXPECT_EQ(deck.Deck().Dir().Listing(), deck.Listing());
    }
}

/// Runs `meddle` behind the first read of a file.
class ReadMeddler : public FailingFileSystem
{
public:
    explicit ReadMeddler(std::function<void()> meddle) : m_meddle(std::move(meddle)) {}

    std::int64_t Read(int handle, void* data, std::size_t size, ErrorCode& error) override
    {
        return Meddled(FailingFileSystem::Read(handle, data, size, error));
    }
    std::int64_t ReadAt(int handle, void* data, std::size_t size, std::int64_t offset, ErrorCode& error) override
    {
        return Meddled(FailingFileSystem::ReadAt(handle, data, size, offset, error));
    }

private:
    std::int64_t Meddled(std::int64_t count)
    {
        if (const auto meddle = std::exchange(m_meddle, {})) meddle();
        return count;
    }

    std::function<void()> m_meddle;
};

/// What a scan has passed by counts as read then, and not when the scan is through.
TEST(CommitFailureTest, AFileThatChangesWhileItIsScannedIsNotReplaced)
{
    const TestSupport::CleanEnvironment environment;
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nTABDIMS\n1 /\nOIL\n"}});
    const std::string theirs = "RUNSPEC\nTABDIMS\n2 /\nGAS\n";
    Age(deck, "TOP.DATA");
    {
        const ReadMeddler disk([&] { deck.Dir().Write("TOP.DATA", theirs); });
        ASSERT_EQ(deck.Walk(true), "RUNSPEC TABDIMS OIL");
    }
    IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
    ASSERT_TRUE(editor.RemoveKeyword(deck.At("OIL")));
    EXPECT_THROW(editor.Commit(), DeckManagerException);
    EXPECT_EQ(deck.Dir().Read("TOP.DATA"), theirs);
}

/// A text so long that it goes to the disk in steps.
TEST(CommitFailureTest, StepsToTheDiskMayFail)
{
    enum Way
    {
        CommitAgain,
        Cancel,
        EndOfProcess
    };
    const TestSupport::CleanEnvironment environment;
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    const TestSupport::LogRecorder log;
    const std::set<Call> steps = {Call::CopyRange, Call::StartSync};
    const std::string behind = std::string(20000000, ' ').append("\nOIL\n");
    const std::string old = "RUNSPEC\nTABDIMS\n1 /\n" + behind;
    int points = 0;
    // With the second the pages of both texts don't line up.
    for (const std::string first : {"7", "123"}) {
        const std::string expected = "RUNSPEC\nTABDIMS\n" + first + " /\n" + behind;
        for (const Way way : {CommitAgain, Cancel, EndOfProcess}) {
            for (int n = 1; !testing::Test::HasFailure(); ++n) {
                SCOPED_TRACE(testing::Message() << first << ", way " << way << ", operation " << n);
                const TestDeck deck(TestDeck::Texts{{"TOP.DATA", old}});
                IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
                editor.SetDataText(deck.At("TABDIMS"), first + " /");
                if (way == EndOfProcess) {
                    const bool ended = EndsAtOperation(n, steps, editor);
                    EXPECT_TRUE(deck.Dir().Read("TOP.DATA") == (ended ? old : expected));
                    if (!ended) break;
                    ++points;
                    continue;
                }
                FailingFileSystem disk;
                disk.FailAt(n, steps, ENOSPC);
                bool refused = false;
                try {
                    editor.Commit();
                } catch (const DeckManagerException&) {
                    refused = true;
                }
                if (!disk.HasFailed()) {
                    EXPECT_GT(n, 2);
                    break;
                }
                ++points;
                EXPECT_TRUE(deck.Dir().Read("TOP.DATA") == (refused ? old : expected));
                EXPECT_EQ(deck.Dir().Listing(), "TOP.DATA");
                way == CommitAgain ? editor.Commit() : editor.Discard();
                EXPECT_TRUE(deck.Dir().Read("TOP.DATA") == (refused && way == Cancel ? old : expected));
            }
        }
    }
    RecordProperty("points", points);
    EXPECT_GT(points, 12);
}

} // namespace

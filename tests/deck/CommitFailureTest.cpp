#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/FailingFileSystem.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TestDeck.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>

// A commit while the disk fails, or the process ends: every file of the deck is old or new, never anything else, and
// nothing that was edited is lost.

namespace {

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;
using TestSupport::FailingFileSystem;
using TestSupport::TestDeck;
using Call = TestSupport::FailingFileSystem::Call;

std::string NameOf(int file)
{
    return file == 0 ? "TOP.DATA" : "sub/F" + std::to_string(file) + ".INC";
}

/// The top file, and below it the others, all changed by the same edits.
class EditedDeck
{
public:
    EditedDeck(int files, bool afterPartialCommit) : m_count(files), m_deck(Texts(files))
    {
        m_deck.Walk(true);
        for (int i = 0; i < files; ++i)
            m_old.push_back(Read(i));
        IDeckKeywordsEditor& editor = Editor();
        const auto edit = [&](const std::string& name, const std::string& inserted) {
            for (int i = 0; i < m_count; ++i) {
                KeywordFile& file = m_deck.File(NameOf(i));
                for (KeywordFileIterator place = file.Begin(); place != file.End(); ++place) {
                    if ((*place)->GetName() == name) editor.SetDataText(place, " 7 8 /");
                }
                editor.InsertKeywordText(*Environment::Instance().GetSyntaxTable()->FindSyntax("EQLDIMS", true),
                                         file.End(), inserted);
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

private:
    static TestDeck::Texts Texts(int files)
    {
        std::string top = "-- head\nRUNSPEC\nOIL\n-- above\nTABDIMS\n1 2 /\n-- between\n";
        for (int i = 1; i < files; ++i)
            top += "INCLUDE\n'" + NameOf(i) + "' /\n";
        TestDeck::Texts texts{{NameOf(0), top + "-- end"}};
        for (int i = 1; i < files; ++i) {
            // One is longer than any buffer.
            std::string text = "-- head\nWATER\nTABDIMS\n1 2 /\n";
            if (i == 1) text.append(100000, '-').append("\n");
            texts.emplace_back(NameOf(i), text + "-- end\n");
        }
        return texts;
    }

    TestSupport::CleanEnvironment m_environment;
    int m_count;
    TestDeck m_deck;
    std::vector<std::string> m_old;
};

struct Shape
{
    int files;
    bool afterPartialCommit;
};
const std::vector<Shape> shapes = {{1, false}, {1, true}, {7, false}, {7, true}};

std::vector<std::string> CommittedTexts(const Shape& shape)
{
    EditedDeck deck(shape.files, shape.afterPartialCommit);
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

/// The deck as whoever opens it now finds it.
std::string WalkOfDisk(const EditedDeck& deck)
{
    const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create();
    IDeck* fresh = manager->ImportDeck("Fresh", deck.Deck().Dir().Path(NameOf(0)), false, true, false);
    std::string names;
    IDeckKeywords& keywords = *fresh->GetDeckKeywords();
    for (KeywordIterator place = keywords.Begin(); place != keywords.PhysicalEnd(); ++place)
        names += (names.empty() ? "" : " ") + place->GetName();
    return names;
}

TEST(CommitFailureTest, EveryOperationMayFail)
{
    const TestSupport::LogRecorder log;
    int points = 0;
    for (const Shape& shape : shapes) {
        const std::vector<std::string> expected = CommittedTexts(shape);
        for (const bool cancels : {false, true}) {
            for (int n = 1;; ++n) {
                SCOPED_TRACE(testing::Message() << shape.files << " files, partial " << shape.afterPartialCommit
                                                << ", operation " << n << ", cancel " << cancels);
                EditedDeck deck(shape.files, shape.afterPartialCommit);
                FailingFileSystem failing;
                failing.FailAt(n, Operations(), ENOSPC);
                std::string message;
                try {
                    deck.Editor().Commit();
                } catch (const DeckManagerException& failure) {
                    message = failure.what();
                }
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
                    EXPECT_EQ(deck.Deck().Walk(true), WalkOfDisk(deck));
                }
                if (!hasFailed || testing::Test::HasFailure()) break;
                ++points;
            }
        }
    }
    RecordProperty("points", points);
    EXPECT_GT(points, 400);
}

TEST(CommitFailureTest, TheProcessMayEndAtEveryOperation)
{
    int points = 0;
    for (const Shape& shape : shapes) {
        const std::vector<std::string> expected = CommittedTexts(shape);
        for (int n = 1;; ++n) {
            SCOPED_TRACE(testing::Message()
                         << shape.files << " files, partial " << shape.afterPartialCommit << ", operation " << n);
            EditedDeck deck(shape.files, shape.afterPartialCommit);
            const pid_t child = fork();
            if (child == 0) {
                FailingFileSystem failing;
                failing.ExitAt(n, Operations(), 7);
                deck.Editor().Commit();
                _exit(0);
            }
            int status = 0;
            ASSERT_EQ(waitpid(child, &status, 0), child);
            ASSERT_TRUE(WIFEXITED(status));
            const int newFiles = CountNew(deck, expected);
            if (WEXITSTATUS(status) != 7) {
                EXPECT_EQ(WEXITSTATUS(status), 0);
                EXPECT_EQ(newFiles, deck.Count());
                break;
            }
            ++points;
            if (testing::Test::HasFailure()) return;
        }
    }
    RecordProperty("points", points);
    EXPECT_GT(points, 200);
}

} // namespace

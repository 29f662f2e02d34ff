#include <algorithm>
#include <iterator>
#include <random>

#include "tests/support/DeckTest.h"
#include <deckmanager/Exporter.h>

// Edits by chance, of the deck and of a list of texts; the text of the deck must be that list, joined.

namespace {

using namespace DeckTests;

constexpr const char* names[] = {"TABDIMS", "EQLDIMS", "WELLDIMS", "DIMENS"};

/// A file as texts: each keyword's own, and what stands ahead of it.
struct PlainFile
{
    struct Keyword
    {
        std::string ahead;
        std::string own;
        const IKeyword* keyword = nullptr;
    };

    std::string head;
    std::vector<Keyword> keywords;
    std::string tail;

    std::string Text() const
    {
        std::string text = head;
        const auto add = [&text](const std::string& piece) {
            if (!piece.empty() && !text.empty() && text.back() != '\n') text += '\n';
            text += piece;
        };
        for (const Keyword& keyword : keywords) {
            add(keyword.ahead);
            add(keyword.own);
        }
        add(tail);
        return text;
    }
};

class EditedDeck
{
public:
    explicit EditedDeck(unsigned seed) : m_chance(seed), m_files{Make(), Make()}
    {
        // The files are reached through a further one, which stays as it is.
        m_deck =
            std::make_unique<TestDeck>(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\nA.INC /\nINCLUDE\nB.INC /\n"},
                                                       {"A.INC", m_files[0].Text()},
                                                       {"B.INC", m_files[1].Text()}});
        m_listing = m_deck->Dir().Listing();
        NoteKeywords();
        m_unedited = m_files;
    }

    void EditSomething()
    {
        const std::size_t from = Below(2);
        const std::size_t to = Below(2);
        std::vector<PlainFile::Keyword>& source = m_files[from].keywords;
        std::vector<PlainFile::Keyword>& target = m_files[to].keywords;
        const std::size_t at = Below(source.size() + 1);
        const std::size_t place = Below(target.size() + 1);
        switch (Below(commits ? 10 : 8)) {
        case 0:
            Editor().Discard();
            m_files = m_unedited;
            NoteKeywords();
            break;
        case 8:
            Editor().CommitFile(&File(from));
            // What stands above the first keyword is the file's head from now on.
            if (File(from).IsListUnchanged()) GoIntoHead(m_files[from]);
            break;
        case 9:
            Commit();
            break;
        case 1:
        case 2: {
            const std::string name = names[Below(4)];
            const std::string own = name + "\n 7 /\n";
            const IKeyword* keyword = Editor().InsertKeywordText(SyntaxOf(name), PlaceOf(to, place), own);
            ASSERT_NE(keyword, nullptr);
            target.insert(target.begin() + static_cast<std::ptrdiff_t>(place), {"", own, keyword});
            break;
        }
        case 3:
        case 4: {
            ASSERT_EQ(Editor().RemoveKeyword(PlaceOf(from, at)), at < source.size());
            if (at == source.size()) break;
            std::string& heir = at + 1 < source.size() ? source[at + 1].ahead : m_files[from].tail;
            heir = source[at].ahead + heir;
            source.erase(source.begin() + static_cast<std::ptrdiff_t>(at));
            break;
        }
        default: {
            const bool moves = at < source.size() && (from != to || (place != at && place != at + 1));
            ASSERT_EQ(Editor().MoveKeyword(PlaceOf(from, at), PlaceOf(to, place)), moves);
            if (!moves) break;
            PlainFile::Keyword moved = source[at];
            source.erase(source.begin() + static_cast<std::ptrdiff_t>(at));
            const std::size_t goesTo = from == to && place > at ? place - 1 : place;
            target.insert(target.begin() + static_cast<std::ptrdiff_t>(goesTo), std::move(moved));
            break;
        }
        }
    }

    void Commit()
    {
        Editor().Commit();
        for (PlainFile& file : m_files) {
            GoIntoHead(file);
            if (!file.keywords.empty()) continue;
            file.head = file.Text();
            file.tail.clear();
        }
        m_unedited = m_files;
        EXPECT_EQ(m_deck->Dir().Read("A.INC"), m_files[0].Text());
        EXPECT_EQ(m_deck->Dir().Read("B.INC"), m_files[1].Text());
        EXPECT_EQ(m_deck->Dir().Listing(), m_listing);
        // Whoever reads the files now finds the keywords where the deck has them.
        const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create();
        IDeck* fresh = manager->ImportDeck("Fresh", m_deck->Dir().Path("TOP.DATA"), false, true, false);
        EXPECT_EQ(Describe(m_deck->Deck()), Describe(*fresh));
    }

    void Compare(unsigned seed)
    {
        ASSERT_TRUE(
            m_deck->Keywords().ExportToDirectory(m_deck->Dir().Path("copy"), Keywords::SimulatorType::Any, false));
        EXPECT_EQ(m_deck->Dir().Read("copy/A.INC"), m_files[0].Text()) << seed;
        EXPECT_EQ(m_deck->Dir().Read("copy/B.INC"), m_files[1].Text()) << seed;
        // The flat file has each in the place of its INCLUDE.
        const std::string flat = m_deck->Dir().Path("FLAT.DATA");
        const IDeckKeywords& keywords = m_deck->Keywords();
        ASSERT_TRUE(Exporter::ExportToSingleFile(keywords, keywords.Begin(), keywords.PhysicalEnd(), flat,
                                                 ExportOptions(), nullptr));
        std::string expected = "RUNSPEC\n";
        for (const PlainFile& file : m_files) {
            expected += file.Text();
            if (expected.back() != '\n') expected += '\n';
        }
        std::string text = m_deck->Dir().Read("FLAT.DATA");
        if (text.back() != '\n') text += '\n';
        EXPECT_EQ(text, expected) << seed;
        for (std::size_t i = 0; i < 2; ++i) {
            KeywordFileIterator place = File(i).Begin();
            for (const PlainFile::Keyword& keyword : m_files[i].keywords)
                ASSERT_EQ(*place++, keyword.keyword) << seed;
            ASSERT_EQ(place, File(i).End()) << seed;
        }
    }

    bool commits = false; ///< edits by chance are also committed

private:
    static std::string Describe(IDeck& deck)
    {
        std::string text;
        IDeckKeywords& keywords = *deck.GetDeckKeywords();
        for (KeywordIterator place = keywords.Begin(); place != keywords.PhysicalEnd(); ++place)
            text += std::string((*place)->GetName()) + " " + std::to_string((*place)->GetLine()) + " [" +
                    keywords.GetComment(place, false) + "]" + *keywords.GetRawText(*place) + "\n";
        for (IKeywordFile* file : keywords.GetFiles()) {
            const KeywordFile& keywordFile = *file->AsKeywordFile();
            if (keywordFile.GetFileName().GetExtension() != "INC") continue;
            const std::string own = keywordFile.GetFileName().GetFileName() + TestDeck::Extents(keywordFile) + " " +
                                    std::to_string(keywordFile.HeaderBegin()) + " " +
                                    std::to_string(keywordFile.HeaderEnd()) + " " +
                                    std::to_string(keywordFile.TailBegin()) + "\n";
            text = keywordFile.GetFileName().GetRootName() == "A" ? own + text : text + own;
        }
        return text;
    }

    static void GoIntoHead(PlainFile& file)
    {
        // A line that was open is ended when something follows.
        std::string* ahead = nullptr;
        const auto pass = [&ahead](std::string& piece) {
            if (piece.empty()) return;
            if (ahead != nullptr && ahead->back() != '\n') *ahead += '\n';
            ahead = &piece;
        };
        pass(file.head);
        for (PlainFile::Keyword& keyword : file.keywords) {
            pass(keyword.ahead);
            pass(keyword.own);
        }
        pass(file.tail);
        if (file.keywords.empty()) return;
        file.head += file.keywords.front().ahead;
        file.keywords.front().ahead.clear();
    }

    void NoteKeywords()
    {
        m_deck->Walk(true);
        for (std::size_t i = 0; i < 2; ++i) {
            KeywordFileIterator place = File(i).Begin();
            for (PlainFile::Keyword& keyword : m_files[i].keywords)
                keyword.keyword = *place++;
        }
    }

    std::size_t Below(std::size_t n) { return m_chance() % n; }
    IDeckKeywordsEditor& Editor() { return *m_deck->Manager().GetEditor(&m_deck->Deck()); }
    KeywordFile& File(std::size_t i) { return m_deck->File(i == 0 ? "A.INC" : "B.INC"); }

    KeywordFileIterator PlaceOf(std::size_t file, std::size_t at)
    {
        KeywordFileIterator place = File(file).Begin();
        for (; at > 0; --at)
            ++place;
        return place;
    }

    std::string Comments()
    {
        std::string text;
        for (std::size_t i = Below(3); i > 0; --i)
            text += (Below(3) == 0 ? "\n" : "") + ("-- comment " + std::to_string(m_next++)) + "\n";
        return text;
    }

    PlainFile Make()
    {
        PlainFile file;
        file.head = Comments();
        const std::size_t count = 1 + Below(5);
        for (std::size_t i = 0; i < count; ++i) {
            const std::string own = std::string(names[Below(4)]) + "\n" + std::to_string(m_next++) + " /\n";
            file.keywords.push_back({i > 0 ? Comments() : "", own});
        }
        file.tail = Comments();
        if (Below(3) == 0) {
            std::string& last = file.tail.empty() ? file.keywords.back().own : file.tail;
            last.pop_back();
        }
        return file;
    }

    std::mt19937 m_chance;
    int m_next = 1;
    std::string m_listing;
    std::vector<PlainFile> m_files;
    std::vector<PlainFile> m_unedited;
    std::unique_ptr<TestDeck> m_deck;
};

TEST(EditedListPropertyTest, TheTextIsTheListJoined)
{
    const TestSupport::CleanEnvironment environment;
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    for (unsigned seed = 1; seed <= 150 && !testing::Test::HasFailure(); ++seed) {
        EditedDeck deck(seed);
        for (unsigned edits = seed % 12; edits > 0 && !testing::Test::HasFatalFailure(); --edits)
            deck.EditSomething();
        deck.Compare(seed);
    }
}

TEST(EditedListPropertyTest, ACommitWritesThatText)
{
    const TestSupport::CleanEnvironment environment;
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    for (unsigned seed = 1; seed <= 600 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        EditedDeck deck(seed);
        deck.commits = true;
        for (unsigned edits = seed % 20; edits > 0 && !testing::Test::HasFailure(); --edits)
            deck.EditSomething();
        if (!testing::Test::HasFailure()) deck.Commit();
    }
}

} // namespace

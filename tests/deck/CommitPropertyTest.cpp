#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "files/FileRing.h"
#include "files/IteratorAccess.h"
#include "files/KeywordFile.h"
#include "keywords/Keyword.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/TestDeck.h"
#include <deckmanager/Context.h>
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/LineEnds.h>
#include <deckmanager/SetCommentAbove.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordKind.h>

// Decks and edits by chance. After a commit whoever reads the files finds the deck that is in memory, no comment is
// lost that no edit was about, and a keyword that nobody edited has its bytes; after a discard all is as it was.

namespace {

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;
using TestSupport::TestDeck;

/// What a deck is to its reader, keyword by keyword.
std::string Describe(IDeck& deck)
{
    std::ostringstream text;
    IDeckKeywords& keywords = *deck.GetDeckKeywords();
    KeywordIterator place = keywords.Begin();
    place.SetIgnoreLogicalEnds(true);
    for (; *place != nullptr; ++place) {
        const auto& keyword = static_cast<const Keyword&>(**place);
        const std::shared_ptr<std::string> data = keywords.GetDataText(&keyword);
        text << keyword.GetName() << " section " << static_cast<int>(keywords.SectionOf(place)) << " line "
             << keyword.GetLine() << " at " << keyword.Position() << "+" << keyword.Size() << " in "
             << keyword.GetFile()->GetFileName().GetFileName() << " tagged " << keyword.IsGenerated() << " suppressed "
             << keyword.IsSuppressed() << " comment [" << keyword.GetComment() << "] above ["
             << keywords.GetComment(place, false) << "] data [" << (data ? *data : "none") << "]\n"
             << *keywords.GetRawText(&keyword);
    }
    std::map<std::string, std::string> files;
    for (IKeywordFile* file : keywords.GetFiles()) {
        const KeywordFile& keywordFile = *file->AsKeywordFile();
        std::ostringstream places;
        places << " head " << keywordFile.HeaderBegin() << " to " << keywordFile.HeaderEnd() << ", tail "
               << keywordFile.TailBegin() << " [" << keywordFile.HeaderText() << "] [" << keywordFile.TailText()
               << "] tagged " << keywordFile.IsFileTagged() << "\n";
        files[keywordFile.GetFileName().GetFileName()] = places.str();
    }
    for (const auto& [name, places] : files)
        text << name << places;
    return text.str();
}

class ChanceDeck
{
public:
    explicit ChanceDeck(unsigned seed)
        : m_chance(seed), m_lineEnd(Below(3) == 0 ? "\r\n" : "\n"), m_editsSections(Below(3) == 0),
          m_hasSections(!m_editsSections && Below(4) == 0), m_isProject(Below(3) == 0)
    {
        std::vector<std::string> texts;
        for (int file = 3; file >= 0; --file)
            texts.insert(texts.begin(), Text(file));
        const TestDeck::Texts files{
            {"TOP.DATA", texts[0]}, {"F1.INC", texts[1]}, {"F2.INC", texts[2]}, {"F3.INC", texts[3]}};
        m_deck = std::make_unique<TestDeck>(files, true, m_isProject);
        m_deck->Walk(true);
        NoteDisk();
    }

    IDeckKeywordsEditor& Editor() { return *m_deck->Manager().GetEditor(&m_deck->Deck()); }
    const std::vector<std::string>& Edits() const { return m_edits; }
    const TestDeck& Deck() const { return *m_deck; }

    void EditSomething(bool commits)
    {
        IDeckKeywordsEditor& editor = Editor();
        const KeywordFileIterator place = SomePlace();
        const KeywordFileIterator other = SomePlace();
        KeywordFile& file = *IteratorFile(place);
        const bool atEnd = place == file.End();
        const auto* keyword = atEnd ? nullptr : static_cast<const Keyword*>(*place);
        const std::string number = std::to_string(m_next++);
        const auto note = [&](const std::string& what) {
            m_edits.push_back(what + " " + (keyword != nullptr ? keyword->GetName() : "(end)") + " in " +
                              file.GetFileName().GetFileName() + " (" + number + ")");
        };
        switch (Below(m_editsSections ? 24 : 22)) {
        case 0:
        case 1:
            note("insert");
            editor.InsertKeywordText(SyntaxOf(WithData()), place, WithData() + "\n " + number + " /\n");
            break;
        case 2:
            note("insert without data");
            editor.InsertKeywordText(SyntaxOf(WithoutData()), place, WithoutData() + "\n");
            break;
        case 3:
            if (keyword == nullptr || IsStructure(*keyword)) break;
            note("remove");
            Touch(*keyword, true);
            editor.RemoveKeyword(place);
            break;
        case 4:
        case 5:
            if (keyword == nullptr || IsStructure(*keyword)) break;
            note("move ahead of " + (other == IteratorFile(other)->End() ? "(end)" : (*other)->GetName()) + " in " +
                 IteratorFile(other)->GetFileName().GetFileName() + ":");
            editor.MoveKeyword(place, other);
            break;
        case 6:
        case 7:
            if (keyword == nullptr || IsStructure(*keyword) || keyword->GetSyntax()->GetMetaData() == nullptr) break;
            if (keyword->GetName() == "INCLUDE") {
                if (const std::string name = SomeNameFor(file); !name.empty()) {
                    note("name " + name);
                    Touch(*keyword, true);
                    editor.SetDataText(place, "'" + name + "' /");
                }
                break;
            }
            note("data");
            Touch(*keyword, true);
            editor.SetDataText(place, keyword->GetName() == "TITLE" ? "Run " + number : " " + number + " /");
            break;
        case 21:
            note("insert open data");
            editor.InsertKeywordText(SyntaxOf(WithOpenData()), place,
                                     WithOpenData() + "\n W" + number + (Below(2) == 0 ? " /" : ""));
            break;
        case 16: {
            if (keyword == nullptr || IsStructure(*keyword) || keyword->GetSyntax()->GetMetaData() == nullptr) break;
            note("tree");
            Touch(*keyword, true);
            std::unique_ptr<Keywords::IKeywordData> data = editor.GetAndResetData(keyword);
            ASSERT_TRUE(editor.SetData(place, std::move(data)));
            break;
        }
        case 17:
            // It outlives a discard.
            if (!commits) break;
            note("header");
            editor.SetHeaderComment(&file, "h " + number);
            break;
        case 18: {
            if (keyword == nullptr || IsStructure(*keyword)) break;
            KeywordIterator last = m_deck->Keywords().FindKeyword(keyword);
            const KeywordIterator first = last;
            if (first == m_deck->Keywords().End()) break;
            note("range");
            for (std::size_t i = Below(4) + 1; i > 0 && *last != nullptr; --i) {
                const auto& gone = static_cast<const Keyword&>(**last);
                if (IsStructure(gone)) break;
                Touch(gone, true);
                ++last;
            }
            editor.RemoveKeywords(first, last);
            break;
        }
        case 19: {
            const std::string name = SomeNameFor(file);
            if (name.empty()) break;
            note("include " + name);
            editor.InsertKeywordText(SyntaxOf("INCLUDE"), place, "INCLUDE\n'" + name + "' /\n");
            break;
        }
        case 22:
        case 23: {
            const std::string section = SomeSection();
            note("insert " + section);
            editor.InsertKeywordText(SyntaxOf(section), place, section + "\n");
            break;
        }
        case 20:
            note("insert with comments");
            editor.InsertKeywordText(SyntaxOf(WithData()), place,
                                     "-- c" + number + "\n" + WithData() + " -- beside\n-- c in " + number +
                                         "\n 1 /\n");
            break;
        case 8:
            if (keyword == nullptr) break;
            note("comment");
            Touch(*keyword, true);
            editor.SetComment(place, "set " + number);
            break;
        case 9:
            if (keyword == nullptr || IsStructure(*keyword)) break;
            note("comment out");
            Touch(*keyword, false);
            editor.CommentOut(place);
            break;
        case 10:
            if (keyword == nullptr || IsStructure(*keyword)) break;
            note("suppress");
            Touch(*keyword, false);
            editor.Suppress(place);
            break;
        case 11:
            if (keyword == nullptr || IsStructure(*keyword)) break;
            note("unsuppress");
            Touch(*keyword, false);
            editor.Unsuppress(place);
            break;
        case 12:
            if (keyword == nullptr || keyword->GetSyntax()->GetName() == "INCLUDE") break;
            note("tag");
            Touch(*keyword, false);
            editor.TagKeyword(keyword);
            break;
        case 13:
            if (keyword == nullptr || keyword->GetSyntax()->GetName() == "INCLUDE") break;
            note("untag");
            Touch(*keyword, false);
            editor.UntagKeyword(keyword);
            break;
        case 14:
            note("partial commit");
            editor.CommitFile(&file);
            break;
        default:
            if (keyword == nullptr) break;
            note("text above");
            if (SetCommentAbove(editor, place, "-- above " + number)) m_mayLoseComments = true;
            break;
        }
    }

    void Commit(bool mayFail)
    {
        m_edits.push_back("commit");
        if (mayFail) FailToCommit();
        Editor().Commit();
        const auto fresh = [this](const std::string& projectDir) {
            const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create(projectDir);
            return Describe(*manager->ImportDeck("Fresh", m_deck->Dir().Path("TOP.DATA"), false, true, false));
        };
        ASSERT_EQ(Describe(m_deck->Deck()), fresh(""));
        if (m_isProject) {
            ASSERT_EQ(Describe(m_deck->Deck()), fresh(m_deck->Dir().Path()));
        }
        // What could not be removed when it failed is left.
        if (!mayFail) {
            ASSERT_EQ(Listing(), "F1.INC F2.INC F3.INC TOP.DATA");
        }
        const std::string all = Files();
        for (const std::string& comment : m_comments) {
            if (!m_mayLoseComments && all.find(comment) == std::string::npos)
                FAIL() << comment << " is lost\n" << m_files << "\nnow\n" << Files();
        }
        // Where all lines get the same end, no keyword keeps its bytes.
        if (LineEnds::GetPolicy() != LineEnds::Policy::Keep) m_untouched.clear();
        for (const auto& [keyword, text] : m_untouched) {
            ASSERT_NE(all.find(text), std::string::npos) << text;
        }
        NoteDisk();
    }

    /// A commit of which an operation fails, or all from one on; and, by chance, further edits.
    void FailToCommit()
    {
        {
            using TestSupport::FailingFileSystem;
            using Call = FailingFileSystem::Call;
            // Not what is read: that the files are read anew behind the commit is another matter.
            std::set<Call> operations = FailingFileSystem::Changes();
            operations.erase(Call::Open);
            operations.insert(Call::Close);
            FailingFileSystem disk;
            disk.FailAt(static_cast<int>(1 + Below(80)), operations, ENOSPC, Below(2) == 0);
            bool fails = false;
            try {
                Editor().Commit();
            } catch (const DeckManagerException&) {
                fails = true;
            }
            disk.Pass();
            if (fails) m_edits.push_back("commit fails");
            // Where some files have got their texts, what is left to be lost isn't known any more.
            if (!fails) {
                NoteDisk();
            } else if (Files() != m_files) {
                m_mayLoseComments = true;
                m_untouched.clear();
            }
        }
        for (std::size_t edits = Below(3); edits > 0; --edits)
            EditSomething(true);
    }

    void Discard()
    {
        m_edits.push_back("discard");
        Editor().Discard();
        ASSERT_EQ(Describe(m_deck->Deck()), m_described);
        ASSERT_EQ(Files(), m_files);
        NoteDisk();
    }

private:
    static KeywordFile* IteratorFile(const KeywordFileIterator& place);
    static const Keywords::IKeywordSyntax& SyntaxOf(const std::string& name)
    {
        return *Environment::Instance().GetSyntaxTable()->FindSyntax(name, true);
    }
    /// What these hold together must stay, or the walk would be another one.
    bool IsStructure(const Keyword& keyword) const
    {
        const std::string& name = keyword.GetName();
        if (name == "SKIP" || name == "ENDSKIP") return true;
        return !m_editsSections && keyword.GetSyntax()->GetKind() == Keywords::KeywordKind::Section;
    }

    /// A deck of several sections has keywords that are at home in each, which read the same wherever they move.
    std::string WithData() const { return m_hasSections ? "EXTRAPMS" : "EQLDIMS"; }
    std::string WithOpenData() const { return m_hasSections ? "MESSAGE" : "WELSPECS"; }
    std::string WithoutData() const { return m_hasSections ? "NOECHO" : "OIL"; }

    std::string SomeSection()
    {
        static const std::vector<std::string> names{"GRID", "PROPS", "REGIONS", "SOLUTION", "SUMMARY", "SCHEDULE"};
        return names[Below(names.size())];
    }

    std::size_t Below(std::size_t n) { return m_chance() % n; }

    std::vector<KeywordFile*> FilesOfDeck() const
    {
        std::map<std::string, KeywordFile*> files;
        for (IKeywordFile* file : m_deck->Keywords().GetFiles())
            files[file->GetFileName().GetFileName()] = file->AsKeywordFile();
        std::vector<KeywordFile*> sorted;
        for (const auto& [name, file] : files)
            sorted.push_back(file);
        return sorted;
    }

    /// Of a file that an INCLUDE in that one may name, without a ring; empty: none was found.
    std::string SomeNameFor(KeywordFile& including)
    {
        const std::string name = "F" + std::to_string(1 + Below(3)) + ".INC";
        for (IKeywordFile* file : m_deck->Manager().GetKeywordFiles()) {
            if (file->GetFileName().GetFileName() != name) continue;
            file->AsKeywordFile()->Begin();
            return FileRing::Closing(including, *file->AsKeywordFile()).empty() ? name : std::string();
        }
        // One that nobody has read leads nowhere.
        return m_deck->Dir().Read(name).find("INCLUDE") == std::string::npos ? name : std::string();
    }

    KeywordFileIterator SomePlace()
    {
        KeywordFile& file = *FilesOfDeck().at(Below(FilesOfDeck().size()));
        std::size_t count = 0;
        for (KeywordFileIterator place = file.Begin(); place != file.End(); ++place)
            ++count;
        // Nothing goes ahead of the section keyword.
        std::size_t at = Below(count + 1);
        if (&file == &m_deck->TopFile() && !m_editsSections) at = std::max<std::size_t>(at, 1);
        KeywordFileIterator place = file.Begin();
        for (; at > 0; --at)
            ++place;
        return place;
    }

    /// `isReplaced`: the comments in the keyword's own text may go.
    void Touch(const Keyword& keyword, bool isReplaced)
    {
        const auto found = m_own.find(&keyword);
        // Text that is no keyword's in its section is none of the keyword's own, and the comment ahead of it is.
        const std::string shown = keyword.HasValidExtent() ? keyword.GetComment() : std::string();
        // Of a file that has come into the deck since, not all is known.
        if (found == m_own.end()) m_mayLoseComments |= isReplaced && keyword.HasValidExtent();
        if (found == m_own.end()) return;
        for (auto comment = m_comments.begin(); comment != m_comments.end() && isReplaced;) {
            const bool isOwn = found->second.find(*comment) != std::string::npos;
            if (isOwn || shown.find(comment->substr(std::string("--").size())) != std::string::npos)
                comment = m_comments.erase(comment);
            else
                ++comment;
        }
        m_untouched.erase(&keyword);
    }

    std::string Files() const
    {
        std::string text;
        for (const char* name : {"TOP.DATA", "F1.INC", "F2.INC", "F3.INC"})
            text += m_deck->Dir().Read(name) + "\n====\n";
        return text + Listing();
    }

    /// Without the cache.
    std::string Listing() const
    {
        std::istringstream names(m_deck->Dir().Listing());
        std::string listing;
        for (std::string name; names >> name;) {
            if (!name.starts_with("Cache__") && name != "DeckCache.ptd") listing += (listing.empty() ? "" : " ") + name;
        }
        return listing;
    }

    void NoteDisk()
    {
        m_described = Describe(m_deck->Deck());
        m_files = Files();
        m_comments.clear();
        m_own.clear();
        m_mayLoseComments = false;
        std::istringstream lines(m_files);
        for (std::string line; std::getline(lines, line);) {
            const std::size_t at = line.find("-- c");
            if (at == 0) m_comments.insert(line.substr(0, line.find('\r')));
        }
        IDeckKeywords& keywords = m_deck->Keywords();
        for (KeywordIterator place = keywords.Begin(); place != keywords.PhysicalEnd(); ++place) {
            const auto& keyword = static_cast<const Keyword&>(**place);
            if (!keyword.HasValidExtent()) continue;
            const std::string file = m_deck->Dir().Read(keyword.GetFile()->GetFileName().GetFileName());
            m_own[&keyword] = file.substr(static_cast<std::size_t>(keyword.Position()),
                                          static_cast<std::size_t>(keyword.OwnSize(Context())));
        }
        m_untouched = m_own;
    }

    std::string Comments()
    {
        std::string text;
        for (std::size_t i = Below(3); i > 0; --i) {
            if (Below(3) == 0) text += Below(2) == 0 ? m_lineEnd : " \t" + m_lineEnd;
            text += "-- c" + std::to_string(m_next++) + m_lineEnd;
        }
        return text;
    }

    /// With a keyword comment, suppress markers, tags, tabs and text of no keyword by chance.
    std::string KeywordText()
    {
        const std::string number = std::to_string(m_next++);
        const std::string remark = Below(4) == 0 ? " -- r" + number : "";
        const std::string tag = Below(5) == 0 ? "   -- Generated" : "";
        std::string text;
        if (m_hasSections) {
            switch (Below(4)) {
            case 0:
                return "NOECHO" + tag + m_lineEnd;
            case 1:
                return "MESSAGE" + remark + m_lineEnd + Comments() + " 'Text " + number + "' / behind" + m_lineEnd;
            default:
                return "MESSAGES" + remark + tag + m_lineEnd + Comments() + "\t" + number + " /" + m_lineEnd;
            }
        }
        switch (Below(10)) {
        case 0:
            return "OIL" + tag + m_lineEnd;
        case 6: // text that goes on to the next keyword
            return "SKIPZR" + remark + m_lineEnd + "any / text " + number + m_lineEnd + m_lineEnd + " more" + m_lineEnd;
        case 1:
            return "TITLE" + remark + m_lineEnd + "A title " + number + m_lineEnd;
        case 2:
            text = "EQUIL" + remark + m_lineEnd + "1000 " + number + " /" + m_lineEnd + "\t2000 7 / two" + m_lineEnd;
            break;
        case 3:
            text = "PORO" + tag + m_lineEnd + Comments() + " 3*0." + number + m_lineEnd + "-- c in " + number +
                   m_lineEnd + "2*7 /" + remark + m_lineEnd;
            break;
        case 4: {
            const std::string mark = "--@@@";
            text = mark + "TABDIMS" + m_lineEnd + mark + " " + number + " /" + m_lineEnd;
            break;
        }
        case 5:
            text = "WELLDIMS" + m_lineEnd + number + " / " + m_lineEnd + " NOSUCH " + number + m_lineEnd;
            break;
        default:
            text = (Below(2) == 0 ? "DIMENS" : "TABDIMS") + remark + tag + m_lineEnd + Comments() + "\t" + number +
                   " /" + m_lineEnd;
            break;
        }
        return text;
    }

    /// Data whose end only that of the file is: whatever stands behind them would be more of them.
    std::string OpenText()
    {
        const std::string number = std::to_string(m_next++);
        if (m_hasSections) return "MESSAGE" + m_lineEnd + Comments() + " W" + number + m_lineEnd;
        switch (Below(5)) {
        case 0:
            return "TITLE" + m_lineEnd;
        case 1:
            return "PYINPUT" + m_lineEnd + "x = " + number + m_lineEnd;
        case 2:
            return "--@@@WELSPECS" + m_lineEnd + "--@@@ W" + number + " /" + m_lineEnd;
        case 3:
            return "START" + m_lineEnd + " 1 JAN" + m_lineEnd;
        default:
            return "WELSPECS" + m_lineEnd + Comments() + " W" + number + " /" + m_lineEnd;
        }
    }

    std::string Text(int file)
    {
        std::string text = Below(8) == 0 ? "\xEF\xBB\xBF" : "";
        if (file > 0 && Below(6) == 0) text += "-- Generated" + m_lineEnd;
        text += Comments();
        if (file == 0) text += "RUNSPEC" + m_lineEnd;
        if (file == 1 && m_hasSections) text += KeywordText() + Comments() + "PROPS" + m_lineEnd;
        for (std::size_t i = Below(6); i > 0; --i) {
            text += KeywordText() + Comments();
            if (m_editsSections && Below(4) == 0) text += SomeSection() + m_lineEnd + Comments();
            // What stands behind is dead text, which keeps its place and its bytes.
            if (Below(14) == 0) text += (file == 0 ? "END" : "ENDINC") + m_lineEnd + Comments();
            // A section keyword that recurs is none.
            if (Below(12) == 0) text += "RUNSPEC" + m_lineEnd + Comments();
            if (Below(12) == 0)
                text += "SKIP" + m_lineEnd + "-- c" + std::to_string(m_next++) + m_lineEnd + "WATER" + m_lineEnd +
                        "ENDSKIP" + m_lineEnd;
        }
        if ((file == 1 || file == 2) && Below(2) == 0)
            text += "INCLUDE" + m_lineEnd + "F3.INC /" + m_lineEnd + Comments();
        if (file == 0) {
            if (m_hasSections) text += "GRID" + m_lineEnd + Comments() + KeywordText();
            text += "INCLUDE" + m_lineEnd + "'F1.INC' /" + m_lineEnd + Comments() + "INCLUDE" + m_lineEnd + "F2.INC /" +
                    m_lineEnd + Comments();
        }
        if (Below(4) == 0) text += OpenText() + Comments();
        if (Below(4) == 0 && text.ends_with(m_lineEnd)) text.resize(text.size() - m_lineEnd.size());
        // A text without line ends gives none to what is moved into it.
        return text.find('\n') == std::string::npos ? text + m_lineEnd : text;
    }

    std::mt19937 m_chance;
    std::string m_lineEnd;
    bool m_editsSections; ///< words are keywords here and not there, and sections come and go
    bool m_hasSections;
    bool m_isProject;
    int m_next = 1;
    std::unique_ptr<TestDeck> m_deck;
    std::vector<std::string> m_edits;
    std::string m_described;
    std::string m_files;
    std::set<std::string> m_comments;
    std::map<const Keyword*, std::string> m_own; ///< the bytes of each keyword
    std::map<const Keyword*, std::string> m_untouched;
    bool m_mayLoseComments = false;
};

KeywordFile* ChanceDeck::IteratorFile(const KeywordFileIterator& place)
{
    return IteratorAccess::File(place);
}

void EditAndCommit(unsigned firstSeed, unsigned lastSeed, bool mayFail = false)
{
    Environment::Instance().EnableSKIPENDSKIP(true, Keywords::SimulatorType::S100);
    for (unsigned seed = firstSeed; seed <= lastSeed && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        ChanceDeck deck(seed);
        for (int round = 0; round < 3 && !testing::Test::HasFailure(); ++round) {
            const bool commits = seed % 3 != 0 || round != 1;
            for (unsigned edits = (seed + static_cast<unsigned>(round)) % 9; edits > 0; --edits)
                deck.EditSomething(commits);
            commits ? deck.Commit(mayFail) : deck.Discard();
        }
        if (!testing::Test::HasFailure()) continue;
        std::string edits;
        for (const std::string& edit : deck.Edits())
            edits += edit + "\n";
        ADD_FAILURE() << edits;
    }
}

TEST(CommitPropertyTest, TheDiskIsWhatTheDeckWas)
{
    const TestSupport::CleanEnvironment environment;
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    EditAndCommit(1, 120);
}

TEST(CommitPropertyTest, SoItIsWhereACommitHasFailed)
{
    const TestSupport::CleanEnvironment environment;
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    EditAndCommit(2001, 2120, true);
}

TEST(CommitPropertyTest, SoItIsWhereLineEndsAreChanged)
{
    const TestSupport::CleanEnvironment environment;
    EditAndCommit(1001, 1060);
}

} // namespace

#include <algorithm>
#include <map>

#include "files/IteratorAccess.h"
#include "merge/DeckMerger.h"
#include "merge/MergeTerms.h"
#include "merge/PositionSearch.h"
#include "tests/merge/DeckPairs.h"
#include "tests/merge/LiteralPositionSearch.h"
#include <tarn/service/Strings.h>

// Merges of decks by chance: the search through indexes gives the answers of the search by walking, and nothing of the
// user's is lost.

namespace {

using namespace MergeTests;

/// Notes each question of a merge with its answer.
class RecordingSearch : public IPositionSearch
{
public:
    RecordingSearch(std::unique_ptr<IPositionSearch> search, std::vector<std::string>& notes)
        : m_search(std::move(search)), m_notes(notes)
    {
    }

    KeywordIterator FindCounterpart(const KeywordIterator& keyword, const KeywordIterator* head,
                                    const MergeRange& range) override
    {
        KeywordIterator found = m_search->FindCounterpart(keyword, head, range);
        Note("counterpart", keyword, *found == *range.end ? "none" : NameOf(found));
        return found;
    }
    KeywordFileIterator FindDatesPosition(const KeywordIterator& keyword, const KeywordIterator& scope) override
    {
        KeywordFileIterator place = m_search->FindDatesPosition(keyword, scope);
        Note("dates", keyword, NameOf(place));
        return place;
    }
    KeywordFileIterator FindUserKeywordPosition(const KeywordIterator& scope, const KeywordIterator& keyword,
                                                const KeywordIterator& head) override
    {
        KeywordFileIterator place = m_search->FindUserKeywordPosition(scope, keyword, head);
        Note("place", keyword, NameOf(place));
        return place;
    }
    KeywordIterator TargetScopeEnd(const KeywordIterator& position) override
    {
        KeywordIterator end = m_search->TargetScopeEnd(position);
        Note("end", position, NameOf(end));
        return end;
    }
    KeywordIterator SourceScopeEnd(const KeywordIterator& position) override
    {
        KeywordIterator end = m_search->SourceScopeEnd(position);
        Note("end", position, NameOf(end));
        return end;
    }
    KeywordIterator TargetPositionOf(const KeywordFileIterator& place) override
    {
        return m_search->TargetPositionOf(place);
    }
    Service::Time SourceTimeAhead(const KeywordIterator& position) override
    {
        const Service::Time time = m_search->SourceTimeAhead(position);
        Note("time", position, time.ToString());
        return time;
    }
    Service::Time TargetTimeAhead(const KeywordIterator& position) override
    {
        const Service::Time time = m_search->TargetTimeAhead(position);
        Note("time", position, time.ToString());
        return time;
    }
    bool IsAheadInTarget(const KeywordIterator& position, const KeywordIterator& other) override
    {
        const bool isAhead = m_search->IsAheadInTarget(position, other);
        Note("ahead", position, isAhead ? "yes" : "no");
        return isAhead;
    }
    void OnInserted(const KeywordFileIterator& place) override { m_search->OnInserted(place); }
    void OnRemoving(const KeywordFileIterator& place) override { m_search->OnRemoving(place); }
    void OnTagChanged(const KeywordFileIterator& place) override { m_search->OnTagChanged(place); }
    void OnRebuilt() override { m_search->OnRebuilt(); }

private:
    static std::string NameOf(KeywordFileIterator place)
    {
        const KeywordFile* file = IteratorAccess::File(place);
        std::size_t ordinal = 0;
        const KeywordFileIterator begin = file->Begin();
        const std::string name = place != file->End() ? place->GetName() : "end";
        for (; place != begin; --place)
            ++ordinal;
        return name + "@" + LeafName(*file) + ":" + std::to_string(ordinal);
    }
    static std::string NameOf(const KeywordIterator& position)
    {
        return NameOf(IteratorAccess::CurrentFileIter(position));
    }
    void Note(const char* question, const KeywordIterator& keyword, const std::string& answer)
    {
        m_notes.push_back(std::string(question) + " " + NameOf(keyword) + " -> " + answer);
    }

    std::unique_ptr<IPositionSearch> m_search;
    std::vector<std::string>& m_notes;
};

struct Result
{
    std::vector<std::string> notes;
    std::vector<std::string> messages;
    std::vector<std::string> files;
    std::vector<std::string> committed;
    std::string replaced;
    bool isWhole = false;
    bool hasRepeatedFiles = false; ///< the target
};

bool HasRepeatedFiles(const IDeckKeywords& keywords)
{
    std::set<const IKeywordFile*> seen;
    for (IKeywordFile* file : keywords.GetFiles()) {
        for (const KeywordFileIterator& include : file->GetINCLUDEKeywords()) {
            const IKeywordFile* included = keywords.GetIncludedFile(*include);
            if (included != nullptr && !seen.insert(included).second) return true;
        }
    }
    return false;
}

template <class Search>
Result Merged(const DeckPairs& pairs)
{
    Result result;
    TwoDecks decks(pairs.oldFiles, pairs.newFiles);
    const TestSupport::LogRecorder log;
    IDeckKeywordsEditor& editor = *decks.Manager().GetEditor(&decks.New());
    const auto makeSearch = [&](MergeWork& work) {
        return std::make_unique<RecordingSearch>(std::make_unique<Search>(work), result.notes);
    };
    {
        DeckMerger merger(editor, decks.Old(), decks.includeNames, &decks.report, makeSearch);
        result.isWhole = merger.MergeUserKeywords(decks.replaced, {});
    }
    DeckMerger merger(editor, decks.Old(), decks.includeNames, &decks.report, makeSearch);
    merger.MergeComments({});
    result.files = decks.TextsOf(pairs.newFiles);
    editor.Commit();
    for (const auto& entry : pairs.newFiles)
        result.committed.push_back(WithoutTags(decks.Dir().Read("new/" + entry.first)));
    for (std::string message : log.Texts()) {
        Service::StringReplace(message, decks.Dir().Path(""), "");
        result.messages.push_back(message);
    }
    result.replaced = decks.Replaced();
    result.hasRepeatedFiles = HasRepeatedFiles(*decks.New().GetDeckKeywords());
    return result;
}

std::string Show(const Texts& files)
{
    std::string text;
    for (const auto& [name, content] : files)
        text += "=== " + name + "\n" + content;
    return text;
}

TEST(MergePropertyTest, TheIndexedSearchAnswersAsTheWalkingOne)
{
    const TestSupport::CleanEnvironment environment;
    for (unsigned seed = 1; seed <= 200 && !testing::Test::HasFailure(); ++seed) {
        const DeckPairs pairs(seed);
        // Positions in a file that is there twice are equal whichever way they were come to, and confuse a walk.
        const Result walking = Merged<LiteralPositionSearch>(pairs);
        const Result indexed = Merged<PositionSearch>(pairs);
        if (walking.hasRepeatedFiles) continue;
        SCOPED_TRACE("seed " + std::to_string(seed) + "\n--- OLD\n" + Show(pairs.oldFiles) + "--- NEW\n" +
                     Show(pairs.newFiles));
        const auto [ours, theirs] =
            std::mismatch(indexed.notes.begin(), indexed.notes.end(), walking.notes.begin(), walking.notes.end());
        ASSERT_TRUE(ours == indexed.notes.end() && theirs == walking.notes.end())
            << (ours != indexed.notes.end() ? *ours : "nothing") << " and by walking "
            << (theirs != walking.notes.end() ? *theirs : "nothing");
        EXPECT_EQ(indexed.messages, walking.messages);
        EXPECT_EQ(indexed.files, walking.files);
        EXPECT_EQ(indexed.replaced, walking.replaced);
        EXPECT_EQ(indexed.isWhole, walking.isWhole);
    }
}

std::size_t CountOf(const std::string& part, const std::string& text)
{
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size())
        ++count;
    return count;
}

TEST(MergePropertyTest, EachUserKeywordAndEachCommentIsThereOnce)
{
    const TestSupport::CleanEnvironment environment;
    for (unsigned seed = 3000; seed <= 3300 && !testing::Test::HasFailure(); ++seed) {
        const DeckPairs pairs(seed);
        const Result result = Merged<PositionSearch>(pairs);
        std::string all;
        for (const std::string& text : result.files)
            all += text;
        SCOPED_TRACE("seed " + std::to_string(seed) + "\n--- OLD\n" + Show(pairs.oldFiles) + "--- NEW\n" +
                     Show(pairs.newFiles) + "--- MERGED\n" + all);
        for (const int number : pairs.userNumbers) {
            const std::string text = std::to_string(number);
            const std::string date = std::to_string(number + 2000);
            // Its comment may name it once more.
            const std::size_t count =
                CountOf(text, all) - CountOf("-- of " + text, all) - CountOf("-- " + text + " is", all);
            EXPECT_TRUE(count == 1 || (count == 0 && CountOf("JAN " + date, all) == 1)) << number;
        }
        for (const std::string& comment : pairs.comments)
            EXPECT_TRUE(all.empty() || CountOf(comment + "\n", all) == 1) << comment;
        EXPECT_EQ(result.committed, result.files);
    }
}

/// The number of a user's keyword; 0 for one that has none.
int NumberOf(const IKeyword& keyword, const IDeck& deck, const std::set<int>& numbers)
{
    // The comment above the next keyword is part of the text.
    if (IsInclude(keyword)) return 0;
    const std::shared_ptr<std::string> text = deck.GetDeckKeywords()->GetDataText(&keyword);
    for (std::size_t at = 0; text && at < text->size(); ++at) {
        std::size_t end = at;
        while (end < text->size() && Service::IsDigit((*text)[end]))
            ++end;
        if (end == at + 4) {
            const int number = std::stoi(text->substr(at, 4));
            for (const int candidate : {number, number - 2000}) {
                if (numbers.count(candidate) > 0) return candidate;
            }
        }
        at = end;
    }
    return 0;
}

/// Neighbours of the user's in the source, with nothing between, which no rule on the order has a say in.
std::vector<std::pair<int, int>> NeighboursIn(const IDeck& deck, const std::set<int>& numbers)
{
    const auto isOrdered = [](const IKeyword& keyword) {
        return keyword.GetSyntax()->HasOrderingRules() || keyword.GetName() == "SPECGRID";
    };
    std::vector<std::pair<int, int>> pairs;
    for (IKeywordFile* file : deck.GetDeckKeywords()->GetFiles()) {
        const IKeyword* previous = nullptr;
        for (KeywordFileIterator place = file->Begin(); place != file->End(); ++place) {
            const int number = IsUserKeyword(**place) ? NumberOf(**place, deck, numbers) : 0;
            if (number != 0 && previous != nullptr && !isOrdered(*previous) && !isOrdered(**place))
                pairs.emplace_back(NumberOf(*previous, deck, numbers), number);
            previous = number != 0 ? *place : nullptr;
        }
    }
    return pairs;
}

/// Where each number stands in a walk.
std::map<int, std::vector<int>> PlacesIn(const IDeck& deck, const std::set<int>& numbers)
{
    std::map<int, std::vector<int>> places;
    int place = 0;
    for (KeywordIterator walk = deck.GetDeckKeywords()->Begin(); *walk != nullptr; ++walk, ++place) {
        if (const int number = NumberOf(**walk, deck, numbers)) places[number].push_back(place);
    }
    return places;
}

TEST(MergePropertyTest, NeighboursStayInTheirOrderAndASecondMergePutsEachOnceMore)
{
    const TestSupport::CleanEnvironment environment;
    const TestSupport::LogRecorder log;
    std::size_t checked = 0;
    for (unsigned seed = 7000; seed <= 7150 && !testing::Test::HasFailure(); ++seed) {
        const DeckPairs pairs(seed);
        TwoDecks decks(pairs.oldFiles, pairs.newFiles);
        const std::set<int> numbers(pairs.userNumbers.begin(), pairs.userNumbers.end());
        const auto neighbours = NeighboursIn(decks.Old(), numbers);
        for (std::size_t copies = 1; copies <= 2; ++copies) {
            decks.MergeUserKeywords();
            // A user's INCLUDE may bring a file in once more.
            if (HasRepeatedFiles(*decks.New().GetDeckKeywords())) break;
            SCOPED_TRACE("seed " + std::to_string(seed) + "\n--- OLD\n" + Show(pairs.oldFiles) + "--- NEW\n" +
                         Show(pairs.newFiles) + "--- MERGED\n" + decks.Text("T.DATA"));
            std::map<int, std::vector<int>> places = PlacesIn(decks.New(), numbers);
            for (const int number : numbers)
                EXPECT_EQ(places[number].size(), copies) << number;
            for (const auto& [first, second] : neighbours) {
                for (std::size_t copy = 0; copy < copies && !testing::Test::HasFailure(); ++copy)
                    EXPECT_LT(places[first][copy], places[second][copy]) << first << " " << second;
            }
        }
        checked += neighbours.size();
    }
    EXPECT_GT(checked, 100u);
}

TEST(MergePropertyTest, ADeckWithoutAUsersWorkChangesNothing)
{
    const TestSupport::CleanEnvironment environment;
    for (unsigned seed = 2000; seed <= 2040 && !testing::Test::HasFailure(); ++seed) {
        const DeckPairs pairs(seed);
        TwoDecks decks(pairs.newFiles, pairs.newFiles);
        EXPECT_TRUE(decks.MergeUserKeywords());
        decks.MergeComments();
        const std::vector<std::string> merged = decks.TextsOf(pairs.newFiles);
        for (std::size_t i = 0; i < merged.size(); ++i)
            EXPECT_EQ(merged[i], pairs.newFiles[i].second) << "seed " << seed;
        EXPECT_TRUE(decks.report.entries.empty());
    }
}

} // namespace

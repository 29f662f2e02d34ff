// The part of `DeckKeywordsEditor` that merges decks.

#include "deck/Deck.h"
#include "deck/DeckKeywords.h"
#include "deck/DeckKeywordsEditor.h"
#include "merge/DeckMerger.h"
#include <deckmanager/KeywordIterator.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// Read-only files are open to edits until the end of the scope, however that is left.
class MergingMark
{
public:
    explicit MergingMark(bool& merging) : m_merging(merging) { m_merging = true; }
    ~MergingMark() { m_merging = false; }
    MergingMark(const MergingMark&) = delete;
    MergingMark& operator=(const MergingMark&) = delete;

private:
    bool& m_merging;
};

} // namespace

bool DeckKeywordsEditor::MergeUserKeywords(const IDeck& source, std::set<KeywordIterator>& replaced,
                                           const std::set<IKeywordFile*>& excluded,
                                           const std::map<std::string, std::string>& includeNames, MergeReport* report)
{
    if (m_deck == nullptr) return false;
    bool isWhole = false;
    {
        const MergingMark merging(m_merging);
        isWhole = DeckMerger(*this, source, includeNames, report).MergeUserKeywords(replaced, excluded);
    }
    m_deck->Keywords().RebuildContext();
    return isWhole;
}

void DeckKeywordsEditor::MergeComments(const IDeck& source, const std::set<IKeywordFile*>& excluded,
                                       const std::map<std::string, std::string>& includeNames, MergeReport* report)
{
    if (m_deck == nullptr) return;
    const MergingMark merging(m_merging);
    DeckMerger(*this, source, includeNames, report).MergeComments(excluded);
}

} // namespace Tarn::Fjel::Core::DeckManager

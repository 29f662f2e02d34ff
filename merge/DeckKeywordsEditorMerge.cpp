// The part of `DeckKeywordsEditor` that merges decks.

#include "deck/Deck.h"
#include "deck/DeckKeywords.h"
#include "deck/DeckKeywordsEditor.h"
#include "merge/DeckMerger.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/KeywordIterator.h>
#include <tarn/service/FileStream.h>

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

/// A search that meets the end of a text too early finds a wrong place, or no comment, and says nothing.
void RefuseUnlessRead(const Service::ReadWatch& reading)
{
    if (reading.SawFailure())
        throw DeckManagerException("The decks cannot be merged: a file of one of them cannot be read.");
}

} // namespace

bool DeckKeywordsEditor::MergeUserKeywords(const IDeck& source, std::set<KeywordIterator>& replaced,
                                           const std::set<IKeywordFile*>& excluded,
                                           const std::map<std::string, std::string>& includeNames, MergeReport* report)
{
    if (m_deck == nullptr) return false;
    const Service::ReadWatch reading;
    bool isWhole = false;
    {
        const MergingMark merging(m_merging);
        isWhole = DeckMerger(*this, source, includeNames, report).MergeUserKeywords(replaced, excluded);
    }
    m_deck->Keywords().RebuildContext();
    RefuseUnlessRead(reading);
    return isWhole;
}

void DeckKeywordsEditor::MergeComments(const IDeck& source, const std::set<IKeywordFile*>& excluded,
                                       const std::map<std::string, std::string>& includeNames, MergeReport* report)
{
    if (m_deck == nullptr) return;
    const Service::ReadWatch reading;
    const MergingMark merging(m_merging);
    DeckMerger(*this, source, includeNames, report).MergeComments(excluded);
    RefuseUnlessRead(reading);
}

} // namespace Tarn::Fjel::Core::DeckManager

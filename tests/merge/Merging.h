#pragma once

#include <map>

#include "merge/IPositionSearch.h"
#include "tests/support/DeckTest.h"
#include <deckmanager/MergeReport.h>

namespace MergeTests {

using namespace DeckTests;

using Texts = std::vector<std::pair<std::string, std::string>>;

/// Text in which "~" at the end of a line stands for the generated tag, in its own column.
std::string WithTags(const std::string& text);
/// The other way round.
std::string WithoutTags(const std::string& text);

/// Two decks of one manager in folders of their own, of which the first is to be carried into the second.
class TwoDecks
{
public:
    /// The first file of each is its top file.
    TwoDecks(const Texts& oldFiles, const Texts& newFiles);

    IDeckManager& Manager() const { return *m_manager; }
    IDeck& Old() const { return *m_old; }
    IDeck& New() const { return *m_new; }
    const TempDir& Dir() const { return m_directory; }

    bool MergeUserKeywords();
    void MergeComments();

    /// The text of a file of the target, as it is now, tags as "~".
    std::string Text(const std::string& name) const;
    /// Those of several files, written once.
    std::vector<std::string> TextsOf(const Texts& files) const;
    /// The names of the user's keywords that took the place of generated ones.
    std::string Replaced() const;

    std::set<IKeywordFile*> excluded;
    IncludeNames includeNames;
    std::set<KeywordIterator> replaced;
    MergeReport report;

private:
    TempDir m_directory;
    std::unique_ptr<IDeckManager> m_manager;
    IDeck* m_old = nullptr;
    IDeck* m_new = nullptr;
};

} // namespace MergeTests

#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "files/KeywordFile.h"
#include "keywords/ForceRewrite.h"
#include "tests/support/TempDir.h"
#include <deckmanager/Environment.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IDeckManager.h>
#include <deckmanager/LineEnds.h>

namespace TestSupport {

namespace Decks = Tarn::Fjel::Core::DeckManager;

/// The process-wide settings stand at their defaults at the beginning and at the end of the scope.
class CleanEnvironment
{
public:
    CleanEnvironment() { Reset(); }
    ~CleanEnvironment() { Reset(); }
    CleanEnvironment(const CleanEnvironment&) = delete;
    CleanEnvironment& operator=(const CleanEnvironment&) = delete;

private:
    static void Reset()
    {
        Decks::Environment::Instance().destroy();
        Decks::LineEnds::SetPolicy(Decks::LineEnds::Policy::CrLf);
        Decks::ForceRewrite::Reset();
    }
};

/// A deck made from literal text: files in a temporary directory, of which the first is the top file.
class TestDeck
{
public:
    using Texts = std::vector<std::pair<std::string, std::string>>;

    /// `isProject`: the directory is that of a project, with a cache.
    explicit TestDeck(const Texts& files, bool allowVariables = true, bool isProject = false);

    const TempDir& Dir() const { return m_directory; }
    Decks::IDeckManager& Manager() const { return *m_manager; }
    Decks::IDeck& Deck() const { return *m_deck; }
    Decks::IDeckKeywords& Keywords() const { return *m_deck->GetDeckKeywords(); }
    Decks::KeywordFile& TopFile() const { return *Keywords().GetDataFile()->AsKeywordFile(); }
    /// The file of that relative name; fails the test when the manager holds none.
    Decks::KeywordFile& File(const std::string& relativeName) const;

    /// The names of the keywords from `Begin` to the end of the walk, with one blank between.
    std::string Walk(bool ignoreLogicalEnds = false) const;
    /// The names of all keywords as whoever opens the deck now finds them on the disk.
    std::string WalkOfDisk() const;
    /// The same as `Walk` backwards, from the last keyword to the first.
    std::string WalkBack() const;
    /// The position of the n-th keyword of that name (from 1) in the walk that ignores logical ends.
    Decks::KeywordIterator At(const std::string& name, int n = 1) const;

    /// The keywords of one file as "NAME@position+size", with one blank between.
    static std::string Extents(const Decks::KeywordFile& file);

private:
    TempDir m_directory;
    std::unique_ptr<Decks::IDeckManager> m_manager;
    Decks::IDeck* m_deck = nullptr;
};

} // namespace TestSupport

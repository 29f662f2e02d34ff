#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/support/TempDir.h"
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckManager.h>
#include <deckmanager/KeywordIterator.h>

namespace TestText {
class TextGenerator;
}

namespace ProjectTests {

/// The keywords of that name in a deck.
std::vector<Tarn::Fjel::Core::DeckManager::KeywordIterator>
KeywordsNamed(const Tarn::Fjel::Core::DeckManager::IDeck& deck, const std::string& name);

/// The text of an INCLUDE of that path.
std::string Include(const std::string& path);

/// What a move of the project is refused with; empty when it moves.
std::string Refusal(Tarn::Fjel::Core::DeckManager::IDeckManager& manager, const std::string& newDir);

/// A project `zone/proj` with decks in it, and files beside it that they include.
class ProjectTree
{
public:
    ProjectTree();

    const TestSupport::TempDir& Dir() const { return m_directory; }
    std::string OldDir() const { return m_directory.Path("zone/proj"); }

    /// The top file of a deck, below the project. `IncludesOf` walks from there.
    void WriteTop(const std::string& name, const std::string& text);
    void Write(const std::string& name, const std::string& text) const { m_directory.Write(name, text); }
    const std::vector<std::string>& Tops() const { return m_tops; }

    /// Writes `decks` decks with about `files` files in all, and with every way to include one.
    void Generate(TestText::TextGenerator& random, int decks, int files);

    /// What each INCLUDE of the decks of a project leads to, a line each: the project is `P`.
    std::string IncludesOf(const std::string& projectDir) const;
    /// The files that a walk over all decks of the project has to scan, and enters in its cache.
    std::string ScannedIn(const std::string& projectDir) const;
    /// All that lies in a directory, links as links, without cache files: by relative name.
    static std::map<std::string, std::string> ContentOf(const std::string& directory);

private:
    TestSupport::TempDir m_directory;
    std::vector<std::string> m_tops; ///< below the project
};

} // namespace ProjectTests

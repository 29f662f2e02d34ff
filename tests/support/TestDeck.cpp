#include "tests/support/TestDeck.h"

#include <stdexcept>

#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/IKeyword.h>
#include <tarn/service/FileName.h>

namespace TestSupport {

TestDeck::TestDeck(const Texts& files, bool allowVariables, bool isProject)
    : m_manager(Decks::DeckManagerFactory::Create(isProject ? m_directory.Path() : std::string()))
{
    for (const auto& [name, text] : files) {
        m_directory.Write(name, text);
    }
    m_deck = m_manager->ImportDeck("Test", m_directory.Path(files.front().first), false, allowVariables, false);
    if (m_deck == nullptr) throw std::runtime_error("The test deck can't be opened");
}

Decks::KeywordFile& TestDeck::File(const std::string& relativeName) const
{
    const std::string path = m_directory.Path(relativeName);
    for (Decks::IKeywordFile* file : m_manager->GetKeywordFiles()) {
        if (file->GetFileName().GetFullName() == path) return *file->AsKeywordFile();
    }
    throw std::runtime_error("The manager holds no file " + relativeName);
}

std::string TestDeck::Walk(bool ignoreLogicalEnds) const
{
    std::string names;
    Decks::KeywordIterator position = Keywords().Begin();
    position.SetIgnoreLogicalEnds(ignoreLogicalEnds);
    for (; *position != nullptr; ++position) {
        names += (names.empty() ? "" : " ") + position->GetName();
    }
    return names;
}

std::string TestDeck::WalkOfDisk() const
{
    const std::unique_ptr<Decks::IDeckManager> manager = Decks::DeckManagerFactory::Create();
    const std::string& path = Keywords().GetDataFile()->GetFileName().GetFullName();
    const Decks::IDeck* const fresh = manager->ImportDeck("Fresh", path, false, true, false);
    if (fresh == nullptr) throw std::runtime_error("The deck can't be opened anew");
    std::string names;
    const Decks::IDeckKeywords& keywords = *fresh->GetDeckKeywords();
    for (Decks::KeywordIterator place = keywords.Begin(); place != keywords.PhysicalEnd(); ++place)
        names += (names.empty() ? "" : " ") + place->GetName();
    return names;
}

std::string TestDeck::WalkBack() const
{
    std::string names;
    Decks::KeywordIterator position = Keywords().PhysicalEnd();
    for (--position; *position != nullptr; --position) {
        names += (names.empty() ? "" : " ") + position->GetName();
    }
    return names;
}

Decks::KeywordIterator TestDeck::At(const std::string& name, int n) const
{
    Decks::KeywordIterator position = Keywords().Begin();
    position.SetIgnoreLogicalEnds(true);
    for (; *position != nullptr; ++position) {
        if (position->GetName() == name && --n == 0) return position;
    }
    throw std::runtime_error("The deck has no such " + name);
}

std::string TestDeck::Extents(const Decks::KeywordFile& file)
{
    std::string extents;
    for (Decks::KeywordFileIterator place = file.Begin(); place != file.End(); ++place) {
        extents += (extents.empty() ? "" : " ") + place->GetName() + "@" + std::to_string(place->GetPosition()) + "+" +
                   std::to_string(place->GetSize());
    }
    return extents;
}

} // namespace TestSupport

#pragma once

#include <memory>
#include <string>

#include <deckmanager/IDeck.h>

namespace Tarn::Fjel::Core::DeckManager {

class DeckKeywords;
class IKeywordFileManager;

/// Decides where the root file of a deck lies, and can swap it for another one.
class Deck : public IDeck
{
public:
    /// Without `openExisting` the deck's place on disk is cleared: the content of its folder in a project, else its
    /// root file.
    Deck(IKeywordFileManager& fileManager, const std::string& name, bool openExisting, bool allowVariables);
    ~Deck() override;

    const std::string& GetName() const override { return m_name; }
    IDeckKeywords* GetDeckKeywords() const override;
    bool IsValidForSimulator(Keywords::SimulatorType simulator, DeckInconsistencyInfo* info,
                             Keywords::SectionType section) const override;
    bool AllowsVariables() const override { return m_variablesAllowed; }
    Service::Directory GetDirectory() const override;

    /// The deck's folder keeps the name that the deck had at creation.
    void SetName(const std::string& name) { m_name = name; }

    /// Puts the deck on the file at `path`. See `IDeckManager::ImportDeck`.
    bool ImportDeck(const std::string& path, bool managed, bool checkDataFiles);

    DeckKeywords& Keywords() const { return *m_keywords; }

private:
    IKeywordFileManager& m_fileManager;
    std::string m_name;
    std::string m_directoryName;
    bool m_variablesAllowed;
    std::unique_ptr<DeckKeywords> m_keywords;
};

} // namespace Tarn::Fjel::Core::DeckManager

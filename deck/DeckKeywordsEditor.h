#pragma once

#include <deckmanager/IDeckKeywordsEditor.h>

namespace Tarn::Fjel::Core::DeckManager {

class Deck;
class IKeywordFileManager;

/// The one editor of a deck manager.
class DeckKeywordsEditor : public IDeckKeywordsEditor
{
public:
    explicit DeckKeywordsEditor(IKeywordFileManager& fileManager) : m_fileManager(fileManager) {}
    ~DeckKeywordsEditor() override;

    IDeck* GetDeck() const override;
    void Close() override;
    void Discard() override;
    bool ImportDeck(const std::string& fileName, bool managed, bool checkDataFiles) override;

    /// Makes a deck current. Uncommitted changes of the one that was are dropped.
    void SetDeck(Deck* deck);

private:
    void CleanUp();
    void Release();

    IKeywordFileManager& m_fileManager;
    Deck* m_deck = nullptr;
};

} // namespace Tarn::Fjel::Core::DeckManager

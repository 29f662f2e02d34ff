#pragma once

#include <list>
#include <memory>
#include <string>
#include <vector>

#include <deckmanager/IDeckManager.h>
#include <deckmanager/KeywordFileManager.h>

namespace Tarn::Fjel::Core::DeckManager {

class Deck;
class DeckKeywordsEditor;

/// The implementation behind `DeckManagerFactory`.
class DeckManager : public IDeckManager
{
public:
    explicit DeckManager(const std::string& projectDir);
    ~DeckManager() override;
    DeckManager(const DeckManager&) = delete;
    DeckManager& operator=(const DeckManager&) = delete;

    std::string GenerateDeckName() const override;
    IDeck* CreateDeck(const std::string& name, bool allowVariables) override;
    IDeck* ImportDeck(const std::string& name, const std::string& path, bool managed, bool allowVariables,
                      bool checkDataFiles) override;
    IDeck* OpenDeck(const std::string& path, bool allowVariables) override;
    IDeck* OpenExistingDeck(const std::string& name, bool allowVariables) override;
    void RefreshDeck(const std::string& name) override;
    bool RemoveDeck(IDeck* deck) override;
    void Clear() override;
    const std::list<IDeck*>& GetDecks() const override { return m_deckList; }
    bool ContainsDeck(const IDeck* deck) const override;
    IDeck* FindDeck(const std::string& name) const override;
    bool RenameDeck(IDeck* deck, const std::string& name) override;
    IDeckKeywordsEditor* GetEditor(IDeck* deck) override;
    IDeckKeywordsEditor* GetEditor() override;
    void MoveProjectDir(const std::string& path, bool deleteOld) override;
    void UpdateKeywordFilePath(const std::string& oldName, const std::string& newName) override;
    void NotifyDirectoryDeleted(const std::string& directory) override;
    void ReservedOperation() override {}
    void FlushCache() override;
    void SetTempProjectDir(const std::string& directory) override;
    std::list<IKeywordFile*> GetKeywordFiles() const override;
    ProjectMovePlan PlanProjectDirMove(const std::string& path) override;

private:
    bool IsDeckNameAvailable(const std::string& name) const;
    Deck* AddDeck(const std::string& name, bool openExisting, bool allowVariables);
    void DestroyDeck(IDeck* deck);
    DeckKeywordsEditor& Editor();

    // Destroyed from below: the editor, the decks, the files.
    KeywordFileManager m_fileManager;
    std::vector<std::unique_ptr<Deck>> m_decks;
    std::list<IDeck*> m_deckList;
    std::unique_ptr<DeckKeywordsEditor> m_editor;
};

} // namespace Tarn::Fjel::Core::DeckManager

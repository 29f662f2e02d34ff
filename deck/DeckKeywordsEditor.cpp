#include "deck/DeckKeywordsEditor.h"

#include <exception>

#include "deck/Deck.h"
#include "deck/DeckKeywords.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/IKeywordFileManager.h>

namespace Tarn::Fjel::Core::DeckManager {

DeckKeywordsEditor::~DeckKeywordsEditor()
{
    try {
        DeckKeywordsEditor::Discard();
    } catch (...) {
        // A destructor has nobody to tell.
    }
    Release();
}

IDeck* DeckKeywordsEditor::GetDeck() const
{
    return m_deck;
}

void DeckKeywordsEditor::Close()
{
    Discard();
    Release();
}

void DeckKeywordsEditor::Release()
{
    if (m_deck != nullptr) m_deck->Keywords().SetEdited(false);
    m_deck = nullptr;
}

void DeckKeywordsEditor::Discard()
{
    if (m_deck == nullptr) return;
    m_deck->Keywords().Rollback();
    CleanUp();
}

void DeckKeywordsEditor::SetDeck(Deck* deck)
{
    if (deck == m_deck) return;
    Close();
    m_deck = deck;
    if (deck != nullptr) deck->Keywords().SetEdited(true);
}

bool DeckKeywordsEditor::ImportDeck(const std::string& fileName, bool managed, bool checkDataFiles)
{
    if (m_deck == nullptr) return false;
    bool result = false;
    std::exception_ptr failure;
    try {
        result = m_deck->ImportDeck(fileName, managed, checkDataFiles);
    } catch (const DeckManagerException&) {
        // Files that the attempt has brought in go before the caller hears of it.
        failure = std::current_exception();
    }
    CleanUp();
    if (failure) std::rethrow_exception(failure);
    return result;
}

void DeckKeywordsEditor::CleanUp()
{
    m_fileManager.ClearUnreferencedFiles();
    m_fileManager.SaveCacheTable();
}

} // namespace Tarn::Fjel::Core::DeckManager

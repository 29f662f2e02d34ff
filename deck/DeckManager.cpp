#include "deck/DeckManager.h"

#include <algorithm>
#include <exception>

#include <boost/filesystem/path.hpp>

#include "deck/Deck.h"
#include "deck/DeckFactory.h"
#include "deck/DeckKeywords.h"
#include "deck/DeckKeywordsEditor.h"
#include "files/KeywordFile.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/DeckReader.h>
#include <tarn/service/Directory.h>
#include <tarn/service/FileName.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

DeckManager::DeckManager(const std::string& projectDir) : m_fileManager(projectDir) {}

DeckManager::~DeckManager()
{
    try {
        DeckManager::Clear();
    } catch (...) {
        // A destructor has nobody to tell.
    }
}

// --- decks ---------------------------------------------------------------------------------------------------------

bool DeckManager::IsDeckNameAvailable(const std::string& name) const
{
    if (FindDeck(name) != nullptr) return false;
    if (!m_fileManager.HasProjectDir()) return true;
    Service::Directory directory = m_fileManager.ProjectDir();
    directory.Append(name);
    return std::none_of(m_decks.begin(), m_decks.end(),
                        [&directory](const std::unique_ptr<Deck>& deck) { return deck->GetDirectory() == directory; });
}

Deck* DeckManager::AddDeck(const std::string& name, bool openExisting, bool allowVariables)
{
    if (FindDeck(name) != nullptr) return nullptr;
    m_decks.push_back(DeckFactory::Create(m_fileManager, name, openExisting, allowVariables));
    m_deckList.push_back(m_decks.back().get());
    return m_decks.back().get();
}

void DeckManager::DestroyDeck(IDeck* deck)
{
    m_deckList.remove(deck);
    const auto isDeck = [deck](const std::unique_ptr<Deck>& owned) { return owned.get() == deck; };
    m_decks.erase(std::remove_if(m_decks.begin(), m_decks.end(), isDeck), m_decks.end());
}

std::string DeckManager::GenerateDeckName() const
{
    for (int i = 1;; ++i) {
        std::string name = "Deck_" + std::to_string(i);
        if (IsDeckNameAvailable(name)) return name;
    }
}

IDeck* DeckManager::CreateDeck(const std::string& name, bool allowVariables)
{
    return AddDeck(name, false, allowVariables);
}

IDeck* DeckManager::ImportDeck(const std::string& name, const std::string& path, bool managed, bool allowVariables,
                               bool checkDataFiles)
{
    Deck* deck = AddDeck(name, true, allowVariables);
    if (deck == nullptr) return nullptr;

    bool imported = false;
    std::exception_ptr failure;
    try {
        imported = deck->ImportDeck(path, managed, checkDataFiles);
    } catch (const DeckManagerException&) {
        failure = std::current_exception();
    }
    if (!imported) {
        DestroyDeck(deck);
        deck = nullptr;
    }
    m_fileManager.ClearUnreferencedFiles();
    m_fileManager.SaveCacheTable();
    if (failure) std::rethrow_exception(failure);
    return deck;
}

IDeck* DeckManager::OpenDeck(const std::string& path, bool allowVariables)
{
    Deck* deck = AddDeck(boost::filesystem::path(path).stem().string(), true, allowVariables);
    GetEditor(deck);
    return deck;
}

IDeck* DeckManager::OpenExistingDeck(const std::string& name, bool allowVariables)
{
    Deck* deck = AddDeck(name, true, allowVariables);
    m_fileManager.SaveCacheTable();
    return deck;
}

void DeckManager::RefreshDeck(const std::string& name)
{
    auto* deck = static_cast<Deck*>(FindDeck(name));
    if (deck == nullptr) return;
    if (m_editor && m_editor->GetDeck() == deck) {
        m_editor->Discard();
    } else if (m_editor && m_editor->GetDeck() != nullptr) {
        const std::set<IKeywordFile*> edited = m_editor->GetDeck()->GetDeckKeywords()->GetFiles();
        for (const KeywordFile* file : deck->Keywords().FilesInDeckOrder()) {
            if (edited.count(const_cast<KeywordFile*>(file)) > 0 && file->IsModified()) {
                throw DeckManagerException("Attempt to refresh a shared deck file that has uncommitted changes made "
                                           "through editing another deck.");
            }
        }
    }
    deck->Keywords().Refresh(true);
    m_fileManager.ClearUnreferencedFiles();
}

bool DeckManager::RemoveDeck(IDeck* deck)
{
    if (!ContainsDeck(deck)) return false;
    if (m_editor && m_editor->GetDeck() == deck) m_editor->Close();
    DestroyDeck(deck);
    m_fileManager.ClearUnreferencedFiles();
    return true;
}

void DeckManager::Clear()
{
    if (m_editor) m_editor->Close();
    m_deckList.clear();
    m_decks.clear();
    m_fileManager.Clear();
}

bool DeckManager::ContainsDeck(const IDeck* deck) const
{
    return std::find(m_deckList.begin(), m_deckList.end(), deck) != m_deckList.end();
}

IDeck* DeckManager::FindDeck(const std::string& name) const
{
    const auto found = std::find_if(m_deckList.begin(), m_deckList.end(), [&name](const IDeck* deck) {
        return Service::NoCaseStringEqual(deck->GetName(), name);
    });
    return found != m_deckList.end() ? *found : nullptr;
}

bool DeckManager::RenameDeck(IDeck* deck, const std::string& name)
{
    if (!ContainsDeck(deck)) return false;
    std::string trimmed = name;
    Service::StringTrimBlank(trimmed);
    if (!Service::NoCaseStringEqual(trimmed, deck->GetName()) && !IsDeckNameAvailable(trimmed)) return false;
    static_cast<Deck*>(deck)->SetName(trimmed);
    return true;
}

// --- the editor and the files --------------------------------------------------------------------------------------

DeckKeywordsEditor& DeckManager::Editor()
{
    if (!m_editor) m_editor = std::make_unique<DeckKeywordsEditor>(m_fileManager);
    return *m_editor;
}

IDeckKeywordsEditor* DeckManager::GetEditor()
{
    return &Editor();
}

IDeckKeywordsEditor* DeckManager::GetEditor(IDeck* deck)
{
    DeckKeywordsEditor& editor = Editor();
    if (ContainsDeck(deck)) editor.SetDeck(static_cast<Deck*>(deck));
    return &editor;
}

namespace {

/// Only the editor's deck has uncommitted changes.
class Committer : public KeywordFileManager::ICommitter
{
public:
    explicit Committer(IDeckManager& manager) : m_manager(&manager) {}
    void Commit() const override { m_manager->GetEditor()->Commit(); }

private:
    IDeckManager* m_manager;
};

} // namespace

void DeckManager::MoveProjectDir(const std::string& path, bool deleteOld)
{
    m_fileManager.MoveProjectDir(path, deleteOld, Committer(*this));
}

ProjectMovePlan DeckManager::PlanProjectDirMove(const std::string& path)
{
    return m_fileManager.PlanProjectDirMove(path);
}

void DeckManager::UpdateKeywordFilePath(const std::string& oldName, const std::string& newName)
{
    const std::shared_ptr<KeywordFile> file = m_fileManager.FindKeywordFile(Service::FileName(oldName));
    if (!file) throw DeckManagerException("Attempt to update path for unknown keyword file.");
    m_fileManager.KeywordFileMoved(*file, Service::FileName(newName));
}

void DeckManager::NotifyDirectoryDeleted(const std::string& directory)
{
    m_fileManager.DirectoryDeleted(Service::Directory(directory));
    m_fileManager.SaveCacheTable();
}

void DeckManager::FlushCache()
{
    m_fileManager.FlushCache();
}

void DeckManager::SetTempProjectDir(const std::string& directory)
{
    m_fileManager.SetTempProjectDir(Service::Directory(directory));
}

std::list<IKeywordFile*> DeckManager::GetKeywordFiles() const
{
    std::list<IKeywordFile*> files;
    for (const std::shared_ptr<KeywordFile>& file : m_fileManager.Files()) {
        files.push_back(file.get());
    }
    return files;
}

// --- entry ---------------------------------------------------------------------------------------------------------

std::unique_ptr<IDeckManager> DeckManagerFactory::Create(const std::string& projectDir)
{
    return CreateSafely(projectDir);
}

std::unique_ptr<IDeckManager> DeckManagerFactory::Create()
{
    return CreateSafely();
}

std::unique_ptr<IDeckManager> DeckManagerFactory::CreateSafely(const std::string& projectDir)
{
    return std::make_unique<DeckManager>(projectDir);
}

std::unique_ptr<IDeckManager> DeckManagerFactory::CreateSafely()
{
    return CreateSafely(std::string());
}

DeckReader::DeckReader() : m_manager(std::make_unique<std::unique_ptr<IDeckManager>>(DeckManagerFactory::Create())) {}

DeckReader::~DeckReader() = default;

IDeck* DeckReader::Read(const std::string& fileName)
{
    if (!Service::FileName(fileName).IsFile()) return nullptr;

    // Making a deck clears its place on disk: take a name under which nobody's file stands.
    IDeckManager& manager = **m_manager;
    std::string name = manager.GenerateDeckName();
    for (int i = 1; manager.FindDeck(name) != nullptr ||
                    Service::FileName(Service::Directory::Current(), name + ".DATA").FileExists();
         ++i)
    {
        name = "Deck_" + std::to_string(i);
    }
    IDeck* deck = manager.CreateDeck(name, false);
    if (deck == nullptr) return nullptr;
    IDeckKeywordsEditor* editor = manager.GetEditor(deck);
    editor->ImportDeck(fileName, false, false);
    editor->Close();
    return deck;
}

} // namespace Tarn::Fjel::Core::DeckManager

#include "deck/DeckKeywordsEditor.h"

#include <exception>

#include "deck/Deck.h"
#include "deck/DeckKeywords.h"
#include "deck/FileRenames.h"
#include "files/KeywordFile.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/IKeywordFileManager.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileStream.h>

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

void DeckKeywordsEditor::Commit()
{
    if (m_deck == nullptr) return;
    m_deck->Keywords().Commit();
    CleanUp();
}

void DeckKeywordsEditor::CommitFile(IKeywordFile* file)
{
    if (m_deck == nullptr || file == nullptr) return;
    if (KeywordFile* keywordFile = file->AsKeywordFile()) m_deck->Keywords().CommitFile(*keywordFile);
}

bool DeckKeywordsEditor::SetHeaderComment(IKeywordFile* file, const std::string& text)
{
    KeywordFile* keywordFile = file != nullptr ? file->AsKeywordFile() : nullptr;
    return IsOpenToEdits(keywordFile) && keywordFile->SetHeaderComment(text);
}

void DeckKeywordsEditor::OverwriteFileFromPath(IKeywordFile* file, const std::string& path, bool commitFirst,
                                               bool keepTag)
{
    if (!Service::FileName(path).IsFile()) return;
    Service::FileInputStream stream(path);
    if (stream.good()) OverwriteFile(file, stream, true, commitFirst, keepTag);
}

void DeckKeywordsEditor::OverwriteFile(IKeywordFile* file, std::istream& stream, bool replace, bool commitFirst,
                                       bool keepTag)
{
    KeywordFile* keywordFile = file != nullptr && m_deck != nullptr ? file->AsKeywordFile() : nullptr;
    if (keywordFile == nullptr || !IsOfDeck(keywordFile)) return;
    const std::shared_ptr<KeywordFile> hold = keywordFile->shared_from_this();
    if (commitFirst)
        Commit();
    else
        Discard();
    if (!IsOfDeck(keywordFile)) return;
    keywordFile->OverwriteFile(stream, replace, keepTag);
    m_fileManager.ClearUnreferencedFiles();
    m_deck->Keywords().SettleSections();
}

bool DeckKeywordsEditor::ApplyFileRenames(const std::map<Service::FileName, Service::FileName>& names,
                                          bool generatedOnly)
{
    if (m_deck == nullptr) return false;
    const FileRenames::Leaves leaves = FileRenames::LeavesOf(names);
    bool isAny = false;
    std::exception_ptr failure;
    try {
        FileRenames renames(m_deck->Keywords(), m_fileManager, leaves, generatedOnly);
        isAny = renames.IsAny();
        if (isAny) {
            renames.Check();
            m_deck->Keywords().RequireCommittable();
            renames.Apply();
            CommitRenamed(renames);
        }
    } catch (...) {
        failure = std::current_exception();
    }
    m_fileManager.SaveCacheTable();
    if (failure) std::rethrow_exception(failure);
    return isAny;
}

FileRenamePlan DeckKeywordsEditor::PlanFileRenames(const std::map<Service::FileName, Service::FileName>& names,
                                                   bool generatedOnly)
{
    if (m_deck == nullptr) return {};
    const FileRenames::Leaves leaves = FileRenames::LeavesOf(names);
    const FileRenames renames(m_deck->Keywords(), m_fileManager, leaves, generatedOnly);
    renames.Check();
    return renames.Plan();
}

FileRenamePlan FileRenamePlan::Of(IDeckKeywordsEditor& editor,
                                  const std::map<Service::FileName, Service::FileName>& names, bool generatedOnly)
{
    auto* deckEditor = dynamic_cast<DeckKeywordsEditor*>(&editor);
    return deckEditor != nullptr ? deckEditor->PlanFileRenames(names, generatedOnly) : FileRenamePlan();
}

void DeckKeywordsEditor::CommitRenamed(FileRenames& renames)
{
    try {
        m_deck->Keywords().Commit();
    } catch (...) {
        // Once a new text has taken its place, the files must be called what it says.
        if (!m_deck->Keywords().IsPending()) {
            renames.TakeBack();
            throw;
        }
        renames.Settle();
        throw;
    }
    renames.Settle();
    m_fileManager.ClearUnreferencedFiles();
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

#include <algorithm>

#include "deck/DeckKeywords.h"
#include "deck/DiskOrder.h"
#include "deck/FilePaths.h"
#include "deck/KeywordNames.h"
#include "files/FileRing.h"
#include "files/KeywordFile.h"
#include "keywords/Keyword.h"
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::KeywordKind;

namespace {

/// The decks that editors work on: at most one of each manager. Never destroyed, since a manager may be held by a
/// static object.
std::vector<const DeckKeywords*>& EditedDecks()
{
    static auto& decks = *new std::vector<const DeckKeywords*>;
    return decks;
}

} // namespace

void DeckKeywords::SetEdited(bool edited)
{
    std::vector<const DeckKeywords*>& decks = EditedDecks();
    decks.erase(std::remove(decks.begin(), decks.end(), this), decks.end());
    if (edited) decks.push_back(this);
}

/// Only the editor changes files: what is uncommitted belongs to the deck that it works on.
bool DeckKeywords::IsEditedByAnother(const KeywordFile& file) const
{
    const std::vector<const DeckKeywords*>& decks = EditedDecks();
    const auto isAnother = [&](const DeckKeywords* deck) {
        return deck != this && &deck->m_rootFile->Manager() == &file.Manager();
    };
    return std::any_of(decks.begin(), decks.end(), isAnother) && file.IsModified();
}

void DeckKeywords::Rollback()
{
    CancelAll();
    SettleSections();
}

void DeckKeywords::CancelAll()
{
    // A file that was never read has no changes, and is not read for this.
    std::vector<std::shared_ptr<KeywordFile>> files;
    for (KeywordFile* file : FilePaths::ReadFromBelow(*m_rootFile))
        files.push_back(file->shared_from_this());
    {
        const FileRing::Truce truce;
        for (const std::shared_ptr<KeywordFile>& file : files) {
            if (!IsEditedByAnother(*file)) file->CancelChanges();
        }
    }
    // Links that waited for others to go.
    for (const std::shared_ptr<KeywordFile>& file : files) {
        if (file->IsLoaded()) file->IncludedFiles();
    }
    DropAll();
}

void DeckKeywords::Refresh(bool allFiles)
{
    CancelAll();
    // A file goes after the files that it includes, so that no INCLUDE keyword goes through which one is still reached.
    // Each tells the decks that share it. A file that was never read has nothing to drop, and is not read for this.
    std::vector<std::shared_ptr<KeywordFile>> files;
    if (allFiles) {
        for (KeywordFile* file : FilePaths::ReadFromBelow(*m_rootFile)) {
            files.push_back(file->shared_from_this());
        }
    } else {
        files.push_back(m_rootFile);
    }
    for (const std::shared_ptr<KeywordFile>& file : files) {
        if (!IsEditedByAnother(*file)) file->Reload();
    }
    if (allFiles) m_sectionsSettled = KeywordFile::ChangesOfSections();
    DropAll();
}

void DeckKeywords::OnKeywordFileChanged(KeywordFileEventArgs& args)
{
    m_scopes.reset();
    m_names.reset();
    switch (args.GetKind()) {
    case KeywordFileEventArgs::Insert:
    case KeywordFileEventArgs::Remove:
    case KeywordFileEventArgs::Move: {
        const int kind =
            args.GetKeyword() != nullptr ? args.GetKeyword()->GetSyntax()->GetKind() : KeywordKind::Ordinary;
        if (kind == KeywordKind::End || kind == KeywordKind::EndInc || kind == KeywordKind::Include) {
            DropAll();
        } else if (kind == KeywordKind::Section) {
            m_sections.reset();
        }
        if (args.GetKind() == KeywordFileEventArgs::Move) {
            const auto& move = static_cast<const KeywordFileMoveEventArgs&>(args);
            const bool isBetweenFiles = &move.Target() != &move.File();
            if (isBetweenFiles && m_movesHeard + 1 == KeywordFile::MovesBetweenFiles()) ++m_movesHeard;
        }
        break;
    }
    case KeywordFileEventArgs::Cancel:
    case KeywordFileEventArgs::Overwrite:
        DropAll();
        break;
    case KeywordFileEventArgs::KeywordUpdated:
        if (args.GetKeyword() != nullptr && args.GetKeyword()->GetSyntax()->GetKind() == KeywordKind::Include)
            DropAll();
        break;
    }
}

/// A move from a file of another deck alone into one that both share goes out at the former.
void DeckKeywords::DropWhatMissedMoves() const
{
    if (m_movesHeard == KeywordFile::MovesBetweenFiles()) return;
    DropAll();
    m_movesHeard = KeywordFile::MovesBetweenFiles();
}

void DeckKeywords::DropAll() const
{
    m_logicalEnd.reset();
    m_physicalEnd.reset();
    m_sections.reset();
    m_scopes.reset();
    m_names.reset();
    m_diskOrder.reset();
    m_paths.reset();
}

} // namespace Tarn::Fjel::Core::DeckManager

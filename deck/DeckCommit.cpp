// The part of `DeckKeywords` that brings changes to the disk.

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

#include "deck/DeckKeywords.h"
#include "deck/FilePaths.h"
#include "files/KeywordFile.h"
#include "files/ScanComparison.h"
#include "keywords/Keyword.h"
#include <deckmanager/DeckManagerException.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

using Files = std::vector<std::shared_ptr<KeywordFile>>;

/// Held, since an INCLUDE that is commented out lets its file go. What was edited in a file while an INCLUDE named it
/// counts too; else such a file is left alone.
Files FilesOf(KeywordFile& root)
{
    const std::vector<KeywordFile*> all = FilePaths::ReadFromBelow(root);
    const std::vector<KeywordFile*> present = FilePaths::ReadFromBelow(root, false);
    const std::unordered_set<const KeywordFile*> isPresent(present.begin(), present.end());
    Files files;
    for (KeywordFile* file : all) {
        if (isPresent.count(file) > 0 || file->IsModified()) files.push_back(file->shared_from_this());
    }
    std::reverse(files.begin(), files.end());
    return files;
}

void ForAll(const Files& files, void (KeywordFile::*step)())
{
    for (const std::shared_ptr<KeywordFile>& file : files)
        ((*file).*step)();
}

void RequireUnchanged(const Files& files)
{
    for (const std::shared_ptr<KeywordFile>& file : files) {
        if (file->IsModified() && file->HasChangedOnDisk()) {
            throw DeckManagerException("The file " + file->GetFileName().GetFullName() +
                                       " has been changed on disk since it was read.");
        }
    }
}

/// Looks at each file before any is touched.
void RequireWritable(const Files& files)
{
    RequireUnchanged(files);
    std::string names;
    for (const std::shared_ptr<KeywordFile>& file : files) {
        if (!file->CheckWritable()) names += file->GetFileName().GetFullName() + "\n";
    }
    if (names.empty()) return;
    throw DeckManagerException("Fails to commit changes due to insufficient privileges to create/modify:\n" + names);
}

/// Which of the section keywords count that recur only a scan of all files can tell.
bool SectionsRecur(const Files& files)
{
    std::set<Keywords::SectionType> sections;
    for (const std::shared_ptr<KeywordFile>& file : files) {
        if (file->HasDroppedSections()) return true;
        if (!file->IsLoaded()) continue;
        for (const std::shared_ptr<IKeyword>& keyword : file->DiskList()) {
            if (keyword->GetSyntax()->GetKind() != Keywords::KeywordKind::Section) continue;
            if (!sections.insert(KeywordFile::SectionBegunBy(*keyword)).second) return true;
        }
    }
    return false;
}

struct SectionsRead
{
    /// Files were read anew: where they end may be another section now, which those that include them have not seen.
    bool isAny = false;
    bool isWhole = true; ///< no text could not be read
};

/// Reads the files anew in which a scan finds other keywords than they list, by the sections that are in force in them
/// now. Goes as the reading of the deck does, so that each file is looked at in the section in which it would be read:
/// that in which it is included first.
SectionsRead ReadAnewBySections(KeywordFile& root)
{
    struct Level
    {
        std::shared_ptr<KeywordFile> file;
        std::size_t next; ///< of its INCLUDE keywords
    };
    SectionsRead result;
    std::unordered_set<const KeywordFile*> seen;
    std::vector<Level> levels;
    const auto enter = [&](KeywordFile& file, Keywords::SectionType start) {
        if (!file.IsLoaded()) file.ForgetSectionToReadIn();
        if (!file.IsLoaded() || !seen.insert(&file).second) return;
        if (file.IsPending() || file.LoadFailed()) {
            // Where its keywords stand now, and with them the files below, its text will not tell.
            result.isWhole = false;
            return;
        }
        levels.push_back({file.shared_from_this(), 0});
        switch (CompareWithScan(file, start)) {
        case ScanComparison::Same:
            file.CountAsReadIn(start);
            break;
        case ScanComparison::Unreadable:
            result.isWhole = false;
            break;
        case ScanComparison::Other:
            file.ReloadIn(start);
            result.isAny = true;
            break;
        }
    };
    enter(root, root.GetStartSection());
    while (!levels.empty()) {
        Level& level = levels.back();
        const std::vector<KeywordFileIterator>& includes = level.file->GetINCLUDEKeywords();
        if (level.next == includes.size()) {
            levels.pop_back();
            continue;
        }
        const auto& include = static_cast<const Keyword&>(**includes[level.next++]);
        KeywordFile* file = KeywordFile::IncludedFileOf(&include);
        if (file != nullptr) enter(*file, include.FoundIn().value_or(Keywords::SectionType::None));
    }
    return result;
}

void Reload(const Files& files, bool (*isToGo)(const KeywordFile&))
{
    // As in a refresh: a file goes after those that it includes.
    for (auto file = files.rbegin(); file != files.rend(); ++file) {
        if (isToGo(**file)) (*file)->Reload();
    }
}

/// Reads the files anew whose lists a scan would not find. Which section keywords count depends on all files of a deck,
/// so where some recur, these go together. `settled`: how many changes of sections have been looked at before. False
/// where texts can't be read: that is still to be seen.
bool ReadAnew(const Files& files, KeywordFile& root, unsigned long long settled)
{
    const bool isAny = std::any_of(files.begin(), files.end(), [settled](const auto& file) {
        return file->IsToBeReadAnew() || file->LastChangeOfSections() > settled;
    });
    if (!isAny) return true;
    if (!SectionsRecur(files)) {
        Reload(files, [](const KeywordFile& file) { return file.IsToBeReadAnew(); });
        FilePaths::ReadFromBelow(root, false);
        SectionsRead read;
        // The deck is right up to a file more with each time.
        for (std::size_t times = 0; times == 0 || (times <= files.size() && read.isAny); ++times)
            read = ReadAnewBySections(root);
        // Of the files that have been read, some may bring a section again.
        if (!SectionsRecur(FilesOf(root))) return read.isWhole;
    }
    Reload(FilesOf(root), [](const KeywordFile& file) { return file.IsLoaded() && !file.IsPending(); });
    // All of them at once, in the order of the deck: one that is read later can't tell where sections were dropped.
    FilePaths(root).Files();
    return true;
}

} // namespace

void DeckKeywords::RequireCommittable() const
{
    RequireWritable(FilesOf(*m_rootFile));
}

bool DeckKeywords::IsPending() const
{
    const std::vector<KeywordFile*> files = FilePaths::ReadFromBelow(*m_rootFile);
    return std::any_of(files.begin(), files.end(),
                       [](const KeywordFile* file) { return file->IsPending() && file->Rest() == nullptr; });
}

void DeckKeywords::Commit()
{
    const Files files = FilesOf(*m_rootFile);
    RequireWritable(files);
    try {
        for (const std::shared_ptr<KeywordFile>& file : files)
            file->WriteToTemporary(false);
        // A large text is not copied in a moment.
        RequireUnchanged(files);
    } catch (...) {
        ForAll(files, &KeywordFile::DropWritten);
        throw;
    }
    ForAll(files, &KeywordFile::TakeOver);

    std::string failures;
    for (const std::shared_ptr<KeywordFile>& file : files) {
        try {
            file->FinishCommit();
        } catch (const DeckManagerException& failure) {
            if (!failures.empty()) failures += "\n";
            failures += failure.what();
        }
    }
    bool isRead = false;
    try {
        isRead = ReadAnew(files, *m_rootFile, m_sectionsSettled);
    } catch (const DeckManagerException&) {
        // The texts are in their places, and which one can't be read has been told.
    }
    if (isRead) ForAll(files, &KeywordFile::StoreList);
    if (!failures.empty()) throw DeckManagerException(failures);
    for (KeywordFile* file : FilePaths::ReadFromBelow(*m_rootFile))
        file->ForgetFormerFiles();
    if (isRead) m_sectionsSettled = KeywordFile::ChangesOfSections();
}

void DeckKeywords::SettleSections()
{
    const Files files = FilesOf(*m_rootFile);
    // What is read anew has no edits any more.
    if (std::any_of(files.begin(), files.end(), [](const auto& file) { return file->IsModified(); })) return;
    if (!ReadAnew(files, *m_rootFile, m_sectionsSettled)) return;
    ForAll(files, &KeywordFile::StoreList);
    m_sectionsSettled = KeywordFile::ChangesOfSections();
}

void DeckKeywords::CommitFile(KeywordFile& file)
{
    RequireWritable({file.shared_from_this()});
    file.CommitToTemporary(true);
}

} // namespace Tarn::Fjel::Core::DeckManager

// The part of `DeckKeywords` that brings changes to the disk.

#include <algorithm>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "deck/DeckKeywords.h"
#include "deck/FilePaths.h"
#include "files/KeywordFile.h"
#include <deckmanager/DeckManagerException.h>

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

/// Reads the files anew whose lists a scan would not find. Which section keywords count depends on all files of a deck,
/// so where some recur, these go together.
void ReadAnew(const Files& files, KeywordFile& root)
{
    const auto is = [&files](bool (KeywordFile::*question)() const) {
        return std::any_of(files.begin(), files.end(), [&](const auto& file) { return ((*file).*question)(); });
    };
    const bool someDiffer = is(&KeywordFile::IsToBeReadAnew);
    if (!someDiffer && !is(&KeywordFile::HasOtherIncludes)) return;
    const bool allGo = is(&KeywordFile::HasRecurringSections);
    if (!someDiffer && !allGo) return;
    // As in a refresh: a file goes after those that it includes.
    for (auto file = files.rbegin(); file != files.rend(); ++file) {
        if ((*file)->IsToBeReadAnew() || (allGo && (*file)->IsLoaded() && !(*file)->IsPending())) (*file)->Reload();
    }
    FilePaths::ReadFromBelow(root);
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
        for (const std::shared_ptr<KeywordFile>& file : files)
            file->DropWritten();
        throw;
    }
    for (const std::shared_ptr<KeywordFile>& file : files)
        file->TakeOver();

    std::string failures;
    for (const std::shared_ptr<KeywordFile>& file : files) {
        try {
            file->FinishCommit();
        } catch (const DeckManagerException& failure) {
            if (!failures.empty()) failures += "\n";
            failures += failure.what();
        }
    }
    ReadAnew(files, *m_rootFile);
    if (!failures.empty()) throw DeckManagerException(failures);
    for (KeywordFile* file : FilePaths::ReadFromBelow(*m_rootFile))
        file->ForgetFormerFiles();
}

void DeckKeywords::CommitFile(KeywordFile& file)
{
    RequireWritable({file.shared_from_this()});
    file.CommitToTemporary(true);
}

} // namespace Tarn::Fjel::Core::DeckManager

// The part of `DeckKeywords` that brings changes to the disk.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "deck/DeckKeywords.h"
#include "deck/FilePaths.h"
#include "files/KeywordFile.h"
#include <deckmanager/DeckManagerException.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

using Files = std::vector<std::shared_ptr<KeywordFile>>;

/// Held, since an INCLUDE that is commented out lets its file go. Those that a removed INCLUDE named count too.
Files FilesOf(KeywordFile& root)
{
    Files files;
    for (KeywordFile* file : FilePaths::ReadFromBelow(root))
        files.push_back(file->shared_from_this());
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
    if (!failures.empty()) throw DeckManagerException(failures);
}

void DeckKeywords::CommitFile(KeywordFile& file)
{
    RequireWritable({file.shared_from_this()});
    file.CommitToTemporary(true);
}

} // namespace Tarn::Fjel::Core::DeckManager

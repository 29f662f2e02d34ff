#pragma once

#include <vector>

#include <deckmanager/KeywordFileIterator.h>
#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::Service {
class FileName;
}

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;
class KeywordFile;

/// One text file of a deck as a list of keywords. The list is loaded at the first operation that needs it; keyword data
/// are not read for it.
class IKeywordFile
{
public:
    /// The complete path.
    virtual const Service::FileName& GetFileName() const = 0;

    /// The first keyword. Loads the file.
    virtual KeywordFileIterator Begin() const = 0;

    /// Behind the last keyword. Loads the file.
    virtual KeywordFileIterator End() const = 0;

    /// The first keyword that ends the file (END, unless `Environment` says that it does not; ENDINC), else `End()`.
    virtual KeywordFileIterator LogicalEnd() const = 0;

    /// The position of that keyword object; `End()` when it does not stand in this file.
    virtual KeywordFileIterator Find(const IKeyword* keyword) const = 0;

    /// All INCLUDE keywords in file order. The reference lasts until an INCLUDE comes or goes.
    virtual const std::vector<KeywordFileIterator>& GetINCLUDEKeywords() const = 0;

    /// Some keyword, section keywords aside, is not generated.
    virtual bool HasUserKeywords() const = 0;

    /// There are edits that no commit has written.
    virtual bool IsModified() const = 0;

    /// Drops the list, and uncommitted edits with it; the next use reads the file anew.
    virtual void Reload() = 0;

    /// The editor refuses changes to the keywords of such a file.
    virtual bool IsReadOnly() const = 0;

    /// Makes the file read-only; nothing makes it writable again.
    virtual void SetReadOnly() = 0;

    virtual ~IKeywordFile() = default;

    virtual KeywordFile* AsKeywordFile() = 0;

    /// The section in force at the top of the file, as the file that includes it says; `None` when that is unknown.
    virtual Keywords::SectionType GetStartSection() const = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager

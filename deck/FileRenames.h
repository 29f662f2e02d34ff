#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <deckmanager/FileRenamePlan.h>
#include <deckmanager/KeywordFileIterator.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileUtils.h>

namespace Tarn::Fjel::Core::DeckManager {

class DeckKeywords;
class FileReferencingKeyword;
class IKeywordFileManager;
class KeywordFile;

/// New leaf names for files of a deck: the files move on the disk, and the keywords that name them say so. All that can
/// be known to go wrong is found before anything moves, and what moved can be taken back.
class FileRenames
{
public:
    /// Old leaf names, with the new ones.
    using Leaves = std::map<std::string, std::string, Service::FileUtils::FileNameLess>;
    static Leaves LeavesOf(const std::map<Service::FileName, Service::FileName>& names);

    /// Finds out what the renames come to; with `generatedOnly`, by generated keywords alone. Throws
    /// `DeckManagerException` for a name that a keyword would have to hold and can't, and when a file can't be read.
    FileRenames(DeckKeywords& keywords, IKeywordFileManager& fileManager, const Leaves& leaves, bool generatedOnly);
    ~FileRenames();
    FileRenames(const FileRenames&) = delete;
    FileRenames& operator=(const FileRenames&) = delete;

    /// A file or a grid keyword gets another name, or an INCLUDE bears one of the old ones.
    bool IsAny() const { return m_isAny; }
    /// What it comes to.
    FileRenamePlan Plan() const;
    /// Throws `DeckManagerException` when two files would get one name, when a file of the deck stands under a new name
    /// and keeps it, and for a keyword in a file that is closed to edits.
    void Check() const;
    /// Moves the files and changes the keywords, uncommitted. A file that stands under a new name and is not the deck's
    /// is put aside. When a file can't be moved, all is taken back, and `DeckManagerException` thrown.
    void Apply();
    /// Undoes that.
    void TakeBack();
    /// It stays: what was put aside goes.
    void Settle();

private:
    struct Move
    {
        KeywordFile* file = nullptr; ///< null: no file of keywords
        Service::FileName from;
        Service::FileName to;
        Service::FileName now;   ///< where it is
        Service::FileName aside; ///< where what stood at `to` is; not set: nothing stood there
    };
    struct Change
    {
        FileReferencingKeyword* keyword;
        std::string text;
        std::shared_ptr<std::string> before;
    };

    const std::string* NewLeaf(const std::string& leaf) const;
    void AddMove(KeywordFile* file, const Service::FileName& from, const std::string& leaf);
    void AddChange(FileReferencingKeyword& keyword, const std::string& value, const std::string& leaf);
    void FindKeywordFiles(bool generatedOnly);
    void FindGridFiles(const char* name, bool generatedOnly);
    void FindGridFile(FileReferencingKeyword& keyword, const std::string& value, bool hasManyFiles);
    void Go(Move& move, const Service::FileName& to);
    bool IsFileOfDeck(const Service::FileName& name) const;

    DeckKeywords& m_keywords;
    IKeywordFileManager& m_fileManager;
    const Leaves& m_leaves;
    std::vector<Move> m_moves;
    std::vector<Change> m_changes;
    bool m_isAny = false;
};

} // namespace Tarn::Fjel::Core::DeckManager

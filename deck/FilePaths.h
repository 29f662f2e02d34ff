#pragma once

#include <unordered_map>
#include <vector>

#include "files/IteratorPath.h"

namespace Tarn::Fjel::Core::DeckManager {

class KeywordFile;

/// The files of a deck, and how a walk comes to each of them. Made from one look at the INCLUDE keywords, so that
/// finding a keyword's position needs no walk over the deck. Stale after any change of the files.
class FilePaths
{
public:
    explicit FilePaths(KeywordFile& root);

    /// All files, each once, in the order in which a walk that ignores logical ends comes to them.
    const std::vector<KeywordFile*>& Files() const { return m_files; }
    /// The root, and the files below it as far as they have been read, each behind those that it includes. A file that
    /// was read and has been reset is read again, since it leads to others. `withFormer`: also what is below a file
    /// that an INCLUDE named until an edit changed it or took it away.
    static std::vector<KeywordFile*> ReadFromBelow(KeywordFile& root, bool withFormer = true);
    bool Contains(KeywordFile* file) const { return m_entries.count(file) > 0; }

    /// Whether a walk that heeds logical ends comes to a place.
    bool IsWalked(const KeywordFileIterator& place) const;
    /// The way to a place in one of the files. Where the file is reached more than once, the first way on which no
    /// INCLUDE keyword stands behind a logical end; without such a way, the first. Empty for a file that is not of the
    /// deck.
    IteratorPath::Places PathTo(const KeywordFileIterator& place) const;

private:
    /// The INCLUDE keyword that leads to a file; of the root: none.
    struct Entry
    {
        KeywordFileIterator first;  ///< on the first way
        KeywordFileIterator walked; ///< on the first way on which nothing stands behind a logical end
        bool isWalked = false;
    };

    void Visit(KeywordFile& root, bool walkedOnly);

    KeywordFile* m_root;
    std::vector<KeywordFile*> m_files;
    std::unordered_map<KeywordFile*, Entry> m_entries;
};

} // namespace Tarn::Fjel::Core::DeckManager

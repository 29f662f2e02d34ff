#pragma once

#include <unordered_map>
#include <vector>

namespace Tarn::Fjel::Core::DeckManager {

class Keyword;
class KeywordFile;
class KeywordFileReader;

/// The keywords of some files by the places of their text on the disk. Edits move keywords in and between lists; their
/// text stays where it is until the next commit or discard. Stale after these, and where files came or went.
class DiskOrder
{
public:
    explicit DiskOrder(const std::vector<KeywordFile*>& files);

    /// The file in which the keyword's text stands was among them, and read.
    bool Knows(const Keyword& keyword) const;
    /// The keyword whose text begins nearest ahead of that of `keyword` in the same file on the disk; null for the
    /// first. REQUIRES: a valid extent.
    const Keyword* Ahead(const Keyword& keyword) const;

private:
    std::unordered_map<const KeywordFileReader*, std::vector<const Keyword*>> m_keywords;
};

} // namespace Tarn::Fjel::Core::DeckManager

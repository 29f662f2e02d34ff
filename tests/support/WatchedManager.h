#pragma once

#include <string>

#include "cache/CacheEntry.h"
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/KeywordFileManager.h>

namespace TestSupport {

/// A manager that tells how its files came to their lists.
class WatchedManager : public Tarn::Fjel::Core::DeckManager::KeywordFileManager
{
public:
    using KeywordFileManager::KeywordFileManager;

    bool SetCacheEntry(const Tarn::Fjel::Core::DeckManager::IKeywordFile& file,
                       const Tarn::Fjel::Core::DeckManager::CacheEntry& entry) override
    {
        m_scanned += file.GetFileName().GetFileName() + " ";
        return KeywordFileManager::SetCacheEntry(file, entry);
    }
    /// The files that were scanned to the end and stored, with a blank behind each.
    const std::string& Scanned() const { return m_scanned; }

private:
    std::string m_scanned;
};

} // namespace TestSupport

#include "files/ExportedFileMap.h"

namespace Tarn::Fjel::Core::DeckManager {

bool ExportedFileMap::Add(const Service::FileName& oldName, const Service::FileName& newName)
{
    const std::string oldKey = oldName.CanonicalName();
    const std::string newKey = newName.CanonicalName();
    if (oldKey == newKey || m_oldPlaces.count(oldKey) != 0 || m_newPlaces.count(newKey) != 0) return false;
    m_oldPlaces.emplace(oldKey, m_old.size());
    m_newPlaces.emplace(newKey, m_new.size());
    m_old.push_back(oldName);
    m_new.push_back(newName);
    return true;
}

bool ExportedFileMap::AddWaiting(KeywordFile* file, const Service::FileName& oldName, const Service::FileName& newName)
{
    const bool added = Add(oldName, newName);
    // A grid file that one keyword names alone, and another together with others, may have two names in the copy.
    if (!added && file == nullptr && !(oldName == newName) &&
        m_newPlaces.emplace(newName.CanonicalName(), m_new.size()).second)
    {
        m_new.push_back(newName);
        m_old.push_back(oldName);
        m_waiting.push_back({file, oldName, newName});
    }
    // A file in its own place: whoever writes the files must come to it, and refuse.
    if (added || (file != nullptr && oldName == newName)) m_waiting.push_back({file, oldName, newName});
    return added;
}

bool ExportedFileMap::HasOld(const Service::FileName& name) const
{
    return m_oldPlaces.count(name.CanonicalName()) != 0;
}

bool ExportedFileMap::HasNew(const Service::FileName& name) const
{
    return m_newPlaces.count(name.CanonicalName()) != 0;
}

Service::FileName ExportedFileMap::NewNameOf(const Service::FileName& oldName) const
{
    const auto found = m_oldPlaces.find(oldName.CanonicalName());
    return found == m_oldPlaces.end() ? Service::FileName() : m_new[found->second];
}

std::optional<ExportedFileMap::Waiting> ExportedFileMap::TakeNext()
{
    if (m_waiting.empty()) return std::nullopt;
    Waiting next = std::move(m_waiting.front());
    m_waiting.pop_front();
    return next;
}

} // namespace Tarn::Fjel::Core::DeckManager

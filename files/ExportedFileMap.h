#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include <tarn/service/FileName.h>

namespace Tarn::Fjel::Core::DeckManager {

class Keyword;
class KeywordFile;

/// What becomes of the files of a deck while it is copied: which file became which, which of them wait to be written,
/// and which keywords name a file that isn't there. Names are one file when they lead to the same place.
class ExportedFileMap
{
public:
    /// A file that comes along. Keyword files are written anew, others are copied as they are.
    struct Waiting
    {
        KeywordFile* file = nullptr; ///< null for a file that is copied as it is
        Service::FileName from;
        Service::FileName to;
    };

    /// Notes that one file becomes another. False, with nothing noted, when they are the same, or when either is noted
    /// already in that part.
    bool Add(const Service::FileName& oldName, const Service::FileName& newName);
    /// The same, and the file waits to be written. `file` null: it is copied as it is.
    bool AddWaiting(KeywordFile* file, const Service::FileName& oldName, const Service::FileName& newName);

    bool HasOld(const Service::FileName& name) const;
    bool HasNew(const Service::FileName& name) const;
    /// The new name of an old one; not set when it isn't noted.
    Service::FileName NewNameOf(const Service::FileName& oldName) const;

    /// The next file that waits, in the order in which they came; empty when none does.
    std::optional<Waiting> TakeNext();

    /// A keyword names a file that does not exist.
    void NoteMissing(const Keyword& keyword, const Service::FileName& name) { m_missing.push_back({&keyword, name}); }
    struct Missing
    {
        const Keyword* keyword;
        Service::FileName name;
    };
    const std::vector<Missing>& MissingFiles() const { return m_missing; }

private:
    std::vector<Service::FileName> m_old;
    std::vector<Service::FileName> m_new;
    std::unordered_map<std::string, std::size_t> m_oldPlaces; ///< by canonical name
    std::unordered_map<std::string, std::size_t> m_newPlaces;
    std::deque<Waiting> m_waiting;
    std::vector<Missing> m_missing;
};

} // namespace Tarn::Fjel::Core::DeckManager

#pragma once

#include <optional>
#include <string>

#include <tarn/service/Directory.h>

namespace Tarn::Fjel::Core::Service {
class FileName;
}

namespace Tarn::Fjel::Core::DeckManager {

/// The ways from a project that still lies in one directory to the same project in another. What the old directory
/// holds, by its name or by where its links lead, moves along; all else stays where it is.
class MovedPaths
{
public:
    /// Both complete. Throws `DeckManagerException` when one of them lies in the other.
    MovedPaths(const Service::Directory& oldDir, const Service::Directory& newDir);

    const Service::Directory& OldDir() const { return m_oldDir; }
    const Service::Directory& NewDir() const { return m_newDir; }

    /// The directory, completed against `base`, is the project's or lies below it.
    bool IsInManagedArea(const Service::Directory& directory, const Service::Directory& base) const;

    /// Where a complete directory will be.
    Service::Directory Moved(const Service::Directory& directory) const;
    /// Where a file will be.
    Service::FileName Moved(const Service::FileName& file) const;
    /// Where a complete directory will be, with its links resolved: a ".." behind a link leads elsewhere than it reads.
    Service::Directory MovedCanonical(const Service::Directory& directory) const;

    /// The way to a complete directory as it will be, from another as it will be: relative where that is possible.
    Service::Directory Way(const Service::Directory& to, const Service::Directory& from) const;

private:
    std::optional<std::string> Below(const Service::Directory& directory) const;
    bool LeadsTo(const Service::Directory& way, const Service::Directory& from, const Service::Directory& to) const;

    Service::Directory m_oldDir;
    Service::Directory m_newDir;
    Service::Directory m_oldCanonical;
    Service::Directory m_newCanonical;
};

} // namespace Tarn::Fjel::Core::DeckManager

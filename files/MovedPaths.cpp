#include "files/MovedPaths.h"

#include <deckmanager/DeckManagerException.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileStatus.h>

namespace Tarn::Fjel::Core::DeckManager {

using Service::Directory;
using Service::FileName;

namespace {

/// The part of the name that stands below `outer`; empty for `outer` itself, no value for what lies elsewhere.
std::optional<std::string> PartBelow(const Directory& directory, const Directory& outer)
{
    if (directory.Name() == outer.Name()) return std::string();
    if (!directory.IsDescendantOf(outer)) return std::nullopt;
    return directory.Name().substr(outer.Name().size() + (outer.Name().ends_with('/') ? 0 : 1));
}

bool HasDotDot(const std::string& part)
{
    return ("/" + part + "/").find("/../") != std::string::npos;
}

Directory Joined(Directory directory, const std::string& part)
{
    directory.Append(part);
    return directory;
}

/// What stands there now goes when the new place is made, so only the way to it counts.
Directory CanonicalPlace(const Directory& directory)
{
    return Joined(Directory(directory.Parent().CanonicalName()), directory.LeafName());
}

} // namespace

MovedPaths::MovedPaths(const Directory& oldDir, const Directory& newDir)
    : m_oldDir(oldDir), m_newDir(newDir), m_oldCanonical(oldDir.CanonicalName()), m_newCanonical(CanonicalPlace(newDir))
{
    if (PartBelow(m_newCanonical, m_oldCanonical) || PartBelow(m_oldCanonical, m_newCanonical) ||
        PartBelow(m_newDir, m_oldDir) || PartBelow(m_oldDir, m_newDir))
    {
        throw DeckManagerException("The project directory cannot be moved into itself.");
    }
}

/// The part of a directory that stands below the project. A name that goes through the project by a ".." behind a link
/// is judged by where it leads.
std::optional<std::string> MovedPaths::Below(const Directory& directory) const
{
    const std::optional<std::string> part = PartBelow(directory, m_oldDir);
    if (part && !HasDotDot(*part)) return part;
    return PartBelow(Directory(directory.CanonicalName()), m_oldCanonical);
}

bool MovedPaths::IsInManagedArea(const Directory& directory, const Directory& base) const
{
    Directory complete = directory;
    complete.MakeComplete(base);
    return Below(complete).has_value();
}

Directory MovedPaths::Moved(const Directory& directory) const
{
    if (const std::optional<std::string> part = Below(directory)) return Joined(m_newDir, *part);
    return PartBelow(directory, m_oldDir) ? Directory(directory.CanonicalName()) : directory;
}

FileName MovedPaths::Moved(const FileName& file) const
{
    FileName moved = file;
    moved = Moved(file.GetDirectory());
    return moved;
}

Directory MovedPaths::MovedCanonical(const Directory& directory) const
{
    const Directory canonical(directory.CanonicalName());
    const std::optional<std::string> part = PartBelow(canonical, m_oldCanonical);
    return part ? Joined(m_newCanonical, *part) : canonical;
}

/// Whether a way with ".." in it leads to what stands outside of the project: from a directory whose links are resolved
/// it can be followed by name.
bool MovedPaths::LeadsTo(const Directory& way, const Directory& from, const Directory& to) const
{
    Directory end = way;
    end.MakeComplete(from);
    return end == to;
}

Directory MovedPaths::Way(const Directory& to, const Directory& from) const
{
    const std::optional<std::string> part = Below(to);
    if (!part && m_oldDir.RootName() != m_newDir.RootName()) return to;

    const Directory base = Moved(from);
    const Directory canonicalBase = MovedCanonical(from);
    const Directory target = Moved(to);
    Directory way;
    // Without links in between names say where they lead.
    if (base.Name() == canonicalBase.Name() && m_newDir.Name() == m_newCanonical.Name()) {
        if (target.RelativePathFrom(base, way)) return way;
    } else if (part) {
        if (Joined(m_newCanonical, *part).RelativePathFrom(canonicalBase, way)) return way;
    } else {
        if (target.RelativePathFrom(base, way) && LeadsTo(way, canonicalBase, target)) return way;
        if (target.RelativePathFrom(canonicalBase, way)) return way;
    }
    throw DeckManagerException("KeywordFileManager::FixManagedFileInclude: unexpected failure");
}

} // namespace Tarn::Fjel::Core::DeckManager

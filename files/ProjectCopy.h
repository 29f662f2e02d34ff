#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include <tarn/service/FileName.h>
#include <tarn/service/FileStatus.h>

namespace Tarn::Fjel::Core::DeckManager {

class MovedPaths;

/// The copy of a project that is to stand at its new place. It is made beside that place, and goes there when it is
/// whole. Until `Settle` all can be taken back, and an object that goes takes it back.
///
/// Everything that fails throws `boost::filesystem::filesystem_error`.
class ProjectCopy
{
public:
    /// `paths` outlives the object.
    explicit ProjectCopy(const MovedPaths& paths) : m_paths(paths) {}
    ~ProjectCopy();
    ProjectCopy(const ProjectCopy&) = delete;
    ProjectCopy& operator=(const ProjectCopy&) = delete;

    /// Copies the project, or makes an empty one where there is none. Links lead where they led: into the copy or to
    /// what stays where it is.
    void Make();
    /// The copy of a file of the project; only until it is put in place.
    Service::FileName CopyOf(const Service::FileName& file) const;
    /// Waits until the copy is on the disk.
    void Flush() const;
    /// Puts the copy in its place. What stands there goes aside.
    void PutInPlace();
    /// Takes the copy away and puts back what stood in its place. What could not be taken back is told in words for
    /// the user; mostly nothing is.
    std::string TakeBack();
    /// The copy stays: what stood in its place goes for good. False when some of it is left, at `Aside`.
    bool Settle();
    const Service::Directory& Aside() const { return m_aside; }
    /// A file in the old directory that the copy lacks, since it is new or has changed after the copy was begun; empty
    /// when there is none.
    std::string ChangedMeanwhile() const;

private:
    using Files = std::unordered_map<std::string, Service::FileStatus>;

    Files OldFiles() const;
    void CorrectLinks() const;
    void CorrectLink(const std::string& copy, const Service::Directory& folder) const;

    const MovedPaths& m_paths;
    Service::Directory m_staged; ///< not set before it is begun and once it is in place
    Service::Directory m_aside;
    bool m_inPlace = false;
    bool m_settled = false;
    Files m_copied;                             ///< the old files by full name, as they were
    std::vector<std::string> m_madeDirectories; ///< outermost first
};

} // namespace Tarn::Fjel::Core::DeckManager

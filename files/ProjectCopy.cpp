#include "files/ProjectCopy.h"

#include <algorithm>
#include <utility>

#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/exception.hpp>
#include <boost/filesystem/operations.hpp>

#include "files/MovedPaths.h"
#include <tarn/service/FileStatus.h>
#include <tarn/service/FileSystem.h>

namespace Tarn::Fjel::Core::DeckManager {

using Service::Directory;
using Service::FileName;
using Service::FileStatus;
using Service::FileSystem;
using ErrorCode = Service::FileSystem::ErrorCode;

namespace {

/// Leaves that are longer get no longer by what is put behind them.
constexpr std::size_t mostOfLeaf = 200;

[[noreturn]] void Throw(const std::string& path, const ErrorCode& error)
{
    throw boost::filesystem::filesystem_error("Moving a project failed", path, error);
}

bool Stands(const std::string& path)
{
    // A link that leads nowhere takes its name too.
    ErrorCode error;
    const FileStatus status = FileSystem::Instance().Status(path, false, error);
    if (error) Throw(path, error);
    return status.Exists();
}

Directory FreeNameBeside(const Directory& directory, const std::string& ending)
{
    const std::string name = directory.LeafName().substr(0, mostOfLeaf) + ending;
    Directory candidate = directory.Parent();
    candidate.Append(name);
    for (int i = 1; Stands(candidate.Name()); ++i) {
        candidate = directory.Parent();
        candidate.Append(name + std::to_string(i));
    }
    return candidate;
}

void Rename(const Directory& from, const Directory& to)
{
    ErrorCode error;
    if (!FileSystem::Instance().Rename(from.Name(), to.Name(), error)) Throw(to.Name(), error);
}

} // namespace

ProjectCopy::~ProjectCopy()
{
    try {
        TakeBack();
    } catch (...) {
        // A destructor has nobody to tell.
    }
}

void ProjectCopy::Make()
{
    std::vector<std::string> missing;
    for (Directory level = m_paths.NewDir().Parent(); level.IsSet() && !level.Exists(); level = level.Parent())
        missing.push_back(level.Name());
    for (; !missing.empty(); missing.pop_back()) {
        ErrorCode error;
        if (!FileSystem::Instance().MakeDirectory(missing.back(), error)) Throw(missing.back(), error);
        m_madeDirectories.push_back(missing.back());
    }
    m_staged = FreeNameBeside(m_paths.NewDir(), ".moving");
    if (m_paths.OldDir().Exists()) {
        m_copied = OldFiles();
        m_paths.OldDir().CopyTo(m_staged);
        CorrectLinks();
    } else {
        ErrorCode error;
        if (!FileSystem::Instance().MakeDirectory(m_staged.Name(), error)) Throw(m_staged.Name(), error);
    }
}

ProjectCopy::Files ProjectCopy::OldFiles() const
{
    Files files;
    std::vector<std::string> folders{m_paths.OldDir().Name()};
    while (!folders.empty()) {
        const std::string folder = std::move(folders.back());
        folders.pop_back();
        ErrorCode error;
        boost::filesystem::directory_iterator entry(folder, error);
        for (; !error && entry != boost::filesystem::directory_iterator(); entry.increment(error)) {
            ErrorCode statusError;
            const std::string path = entry->path().string();
            FileStatus status = FileSystem::Instance().Status(path, false, statusError);
            status.isUnknown = statusError.failed();
            if (status.IsDirectory())
                folders.push_back(path);
            else
                files.emplace(path, status);
        }
        if (error) Throw(folder, error);
    }
    return files;
}

std::string ProjectCopy::ChangedMeanwhile() const
{
    for (const auto& [path, status] : OldFiles()) {
        const auto copied = m_copied.find(path);
        if (copied == m_copied.end() || status.isUnknown || !status.IsSameFileAs(copied->second) ||
            status.size != copied->second.size || status.modifiedNanoseconds != copied->second.modifiedNanoseconds)
        {
            return path;
        }
    }
    return {};
}

FileName ProjectCopy::CopyOf(const FileName& file) const
{
    const std::string moved = m_paths.Moved(file).GetFullName();
    return FileName(m_staged.Name() + moved.substr(m_paths.NewDir().Name().size()));
}

void ProjectCopy::CorrectLinks() const
{
    ErrorCode error;
    boost::filesystem::recursive_directory_iterator entry(m_staged.Name(), error);
    std::vector<std::string> links;
    for (; !error && entry != boost::filesystem::recursive_directory_iterator(); entry.increment(error)) {
        ErrorCode entryError;
        if (entry->symlink_status(entryError).type() == boost::filesystem::symlink_file)
            links.push_back(entry->path().string());
    }
    if (error) Throw(m_staged.Name(), error);
    const Directory oldCanonical(m_paths.OldDir().CanonicalName());
    for (const std::string& link : links) {
        Directory folder = oldCanonical;
        folder.Append(link.substr(m_staged.Name().size()));
        CorrectLink(link, folder.Parent());
    }
}

/// `folder`: where the link stands in the project.
void ProjectCopy::CorrectLink(const std::string& copy, const Directory& folder) const
{
    FileSystem& files = FileSystem::Instance();
    ErrorCode error;
    const std::string text = boost::filesystem::read_symlink(copy, error).string();
    if (error) Throw(copy, error);
    const Directory way(text);
    Directory target = way;
    target.MakeComplete(folder);
    const Directory corrected = way.IsComplete() ? m_paths.Moved(target) : m_paths.Way(target, folder);
    if (corrected.Name() == way.Name()) return;
    const FileStatus status = files.Status(copy, false, error);
    if (error || !files.Unlink(copy, error) || !files.MakeLink(corrected.Name(), copy, error) ||
        !files.SetTimeLastModified(copy, status.modifiedNanoseconds, error))
    {
        Throw(copy, error);
    }
}

void ProjectCopy::Flush() const
{
    ErrorCode error;
    if (!FileSystem::Instance().SyncVolume(m_staged.Name(), error)) Throw(m_staged.Name(), error);
}

void ProjectCopy::PutInPlace()
{
    const Directory& place = m_paths.NewDir();
    if (Stands(place.Name())) {
        const Directory aside = FreeNameBeside(place, ".replaced");
        Rename(place, aside);
        m_aside = aside;
    }
    Rename(m_staged, place);
    m_staged = Directory();
    m_inPlace = true;
    ErrorCode ignored;
    FileSystem::Instance().SyncDirectory(place.Parent().Name(), ignored);
}

std::string ProjectCopy::TakeBack()
{
    std::string left;
    if (m_settled) return left;
    m_settled = true;
    const Directory copy = m_inPlace ? m_paths.NewDir() : m_staged;
    const bool isGone = !copy.IsSet() || copy.Delete();
    if (!isGone) left += "\nA part of the copy is left in " + copy.Name() + ".";
    if (m_aside.IsSet()) {
        ErrorCode error;
        if (!isGone && m_inPlace) {
            error = boost::system::errc::make_error_code(boost::system::errc::file_exists);
        } else {
            FileSystem::Instance().Rename(m_aside.Name(), m_paths.NewDir().Name(), error);
        }
        if (error) left += "\nWhat stood in " + m_paths.NewDir().Name() + " is kept as " + m_aside.Name() + ".";
    }
    for (auto directory = m_madeDirectories.rbegin(); directory != m_madeDirectories.rend(); ++directory) {
        ErrorCode ignored;
        FileSystem::Instance().RemoveDirectory(*directory, ignored);
    }
    return left;
}

bool ProjectCopy::Settle()
{
    m_settled = true;
    return !m_aside.IsSet() || m_aside.Delete();
}

} // namespace Tarn::Fjel::Core::DeckManager

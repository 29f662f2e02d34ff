#include "files/TemporaryText.h"

#include <set>
#include <utility>

#include "text/LineFileWriter.h"
#include <tarn/service/FileName.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/FileSystem.h>
#include <tarn/service/FileUtils.h>

namespace Tarn::Fjel::Core::DeckManager {

using Service::FileName;
using Service::FileStatus;
using Service::FileSystem;
using Service::FileUtils;
using ErrorCode = Service::FileSystem::ErrorCode;

namespace {

/// Those of this process. Never destroyed, since a manager may be held by a static object.
std::set<std::string>& PathsInUse()
{
    static auto& paths = *new std::set<std::string>;
    return paths;
}

bool Stands(const std::string& path)
{
    ErrorCode error;
    return FileSystem::Instance().Status(path, false, error).Exists();
}

std::string FreeNameLike(const std::string& path)
{
    const auto isTaken = [](const FileName& name) { return PathsInUse().count(name.GetFullName()) > 0; };
    return FileUtils::ConstructUniqueName(FileName(path), isTaken).GetFullName();
}

std::string PathBeside(const FileName& file)
{
    FileName name(file.CanonicalName());
    name.SetFileName(name.GetRootName() + "_" + name.GetExtension() + "__.tmp");
    return name.GetFullName();
}

} // namespace

TemporaryText::TemporaryText(std::string path) : m_path(std::move(path))
{
    PathsInUse().insert(m_path);
}

TemporaryText::TemporaryText(TemporaryText&& other) noexcept : m_path(std::exchange(other.m_path, {})) {}

TemporaryText& TemporaryText::operator=(TemporaryText&& other) noexcept
{
    if (this != &other) {
        Forget();
        m_path = std::exchange(other.m_path, {});
    }
    return *this;
}

TemporaryText::~TemporaryText()
{
    Forget();
}

void TemporaryText::Forget()
{
    PathsInUse().erase(m_path);
    m_path.clear();
}

TemporaryText TemporaryText::Open(LineFileWriter& writer, const FileName& file)
{
    return OpenAt(writer, PathBeside(file));
}

TemporaryText TemporaryText::OpenNext(LineFileWriter& writer) const
{
    return OpenAt(writer, m_path + "_2");
}

/// Two files may have one temporary name: A_B.C and A.B_C. And what stands there may be what another process is
/// writing.
TemporaryText TemporaryText::OpenAt(LineFileWriter& writer, const std::string& path)
{
    constexpr int mostTries = 100;
    for (int i = 0; i < mostTries; ++i) {
        std::string free = FreeNameLike(path);
        if (writer.OpenNew(free)) return TemporaryText(std::move(free));
        if (!Stands(free)) break;
    }
    return {};
}

bool TemporaryText::CanOpen(const FileName& file)
{
    FileSystem& files = FileSystem::Instance();
    const std::string path = FreeNameLike(PathBeside(file));
    ErrorCode error;
    const int handle = files.Open(path, FileSystem::OpenMode::WriteNew, error);
    if (handle < 0) return false;
    const bool closed = files.Close(handle, error);
    return files.Unlink(path, error) && closed;
}

void TemporaryText::Remove()
{
    if (!IsSet()) return;
    ErrorCode ignored;
    FileSystem::Instance().Unlink(m_path, ignored);
    Forget();
}

void TemporaryText::CutBack(long long size) const
{
    FileSystem& files = FileSystem::Instance();
    ErrorCode ignored;
    if (files.Status(m_path, true, ignored).size <= size) return;
    const int handle = files.Open(m_path, FileSystem::OpenMode::WriteExisting, ignored);
    if (handle < 0) return;
    files.Truncate(handle, size, ignored);
    files.Close(handle, ignored);
}

bool TemporaryText::Sync(std::string& reason) const
{
    FileSystem& files = FileSystem::Instance();
    ErrorCode error;
    ErrorCode unused;
    const int handle = files.Open(m_path, FileSystem::OpenMode::WriteExisting, error);
    const bool synced = handle >= 0 && files.Sync(handle, error);
    if (handle >= 0) files.Close(handle, unused);
    if (!synced) reason = error.message();
    return synced;
}

void TemporaryText::Replace(TemporaryText&& next)
{
    ErrorCode error;
    if (FileSystem::Instance().Rename(next.m_path, m_path, error)) {
        next.Forget();
        return;
    }
    Remove();
    *this = std::move(next);
}

bool TemporaryText::PutInPlace(const FileName& file, std::string& reason)
{
    FileSystem& files = FileSystem::Instance();
    const std::string target = file.CanonicalName();
    ErrorCode error;
    const FileStatus old = files.Status(target, true, error);
    ErrorCode ignored;
    if (old.IsRegularFile()) files.CopyModeAndOwner(old, m_path, ignored);
    if (files.Rename(m_path, target, error)) {
        Forget();
    } else if (FileUtils::Copy(FileName(m_path), FileName(target), true)) {
        Remove();
    } else {
        reason = error.message();
        return false;
    }
    files.SyncDirectory(FileName(target).GetDirectory().Name(), ignored);
    return true;
}

} // namespace Tarn::Fjel::Core::DeckManager

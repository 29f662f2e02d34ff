#include "tests/support/FailingFileSystem.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <unistd.h>

namespace TestSupport {

using Tarn::Fjel::Core::Service::FileStatus;

FailingFileSystem::FailingFileSystem() : m_real(FileSystem::Instance()), m_previous(FileSystem::SetForTesting(this)) {}

FailingFileSystem::~FailingFileSystem()
{
    FileSystem::SetForTesting(m_previous);
}

std::set<FailingFileSystem::Call> FailingFileSystem::Changes()
{
    return {Call::Open,     Call::Write,         Call::CopyRange,       Call::StartSync,
            Call::Truncate, Call::Sync,          Call::SyncDirectory,   Call::Rename,
            Call::Unlink,   Call::MakeDirectory, Call::RemoveDirectory, Call::MakeLink,
            Call::SetMode,  Call::SetOwner,      Call::SetTime};
}

void FailingFileSystem::FailAt(int n, std::set<Call> kinds, int error, bool forever)
{
    Pass();
    m_at = n;
    m_kinds = std::move(kinds);
    m_error = error;
    m_forever = forever;
}

void FailingFileSystem::ExitAt(int n, std::set<Call> kinds, int status)
{
    Pass();
    m_at = n;
    m_kinds = std::move(kinds);
    m_exitStatus = status;
}

void FailingFileSystem::LimitSpace(std::int64_t limit)
{
    Pass();
    m_space = limit;
}

void FailingFileSystem::Pass()
{
    m_kinds.clear();
    m_at = 0;
    m_exitStatus = -1;
    m_forever = false;
    m_space = -1;
    m_seen = 0;
    m_failed = false;
}

bool FailingFileSystem::Fails(Call call, ErrorCode& error)
{
    ++m_counts[static_cast<std::size_t>(call)];
    if (!m_kinds.empty() && !m_kinds.contains(call)) return false;
    ++m_seen;
    if (m_at == 0 || m_seen < m_at || (m_seen > m_at && !m_forever)) return false;
    if (m_exitStatus >= 0) _exit(m_exitStatus);
    if (!m_failed) m_firstFailed = call;
    m_failed = true;
    error.assign(m_error, boost::system::system_category());
    return true;
}

int FailingFileSystem::Open(const std::string& path, OpenMode mode, ErrorCode& error)
{
    return Fails(Call::Open, error) ? -1 : m_real.Open(path, mode, error);
}

bool FailingFileSystem::Close(int handle, ErrorCode& error)
{
    ErrorCode injected;
    const bool fails = Fails(Call::Close, injected);
    const bool closed = m_real.Close(handle, error);
    if (fails) error = injected;
    return closed && !fails;
}

std::int64_t FailingFileSystem::Read(int handle, void* data, std::size_t size, ErrorCode& error)
{
    return Fails(Call::Read, error) ? -1 : m_real.Read(handle, data, size, error);
}

std::int64_t FailingFileSystem::ReadAt(int handle, void* data, std::size_t size, std::int64_t offset, ErrorCode& error)
{
    return Fails(Call::Read, error) ? -1 : m_real.ReadAt(handle, data, size, offset, error);
}

std::int64_t FailingFileSystem::Write(int handle, const void* data, std::size_t size, ErrorCode& error)
{
    if (Fails(Call::Write, error)) return -1;
    const std::size_t allowed = Allowed(size, error);
    return allowed == 0 && size > 0 ? -1 : Spent(m_real.Write(handle, data, allowed, error));
}

std::int64_t FailingFileSystem::CopyRange(int from, std::int64_t offset, int to, std::size_t size, ErrorCode& error)
{
    if (Fails(Call::CopyRange, error)) return -1;
    if (m_mostOfCopy == 0) {
        error.assign(EXDEV, boost::system::system_category());
        return -1;
    }
    const std::size_t allowed = std::min(Allowed(size, error), m_mostOfCopy);
    return allowed == 0 && size > 0 ? -1 : Spent(m_real.CopyRange(from, offset, to, allowed, error));
}

/// How many bytes of a write there is space for; 0, with error set, when there is none.
std::size_t FailingFileSystem::Allowed(std::size_t size, ErrorCode& error)
{
    if (m_space < 0 || size == 0) return size;
    if (m_space == 0) {
        m_failed = true;
        error.assign(ENOSPC, boost::system::system_category());
    }
    return std::min(size, static_cast<std::size_t>(m_space));
}

std::int64_t FailingFileSystem::Spent(std::int64_t written)
{
    if (m_space >= 0 && written > 0) m_space -= written;
    return written;
}

std::int64_t FailingFileSystem::Seek(int handle, std::int64_t offset, bool fromEnd, ErrorCode& error)
{
    return Fails(Call::Seek, error) ? -1 : m_real.Seek(handle, offset, fromEnd, error);
}

bool FailingFileSystem::Truncate(int handle, std::int64_t size, ErrorCode& error)
{
    return !Fails(Call::Truncate, error) && m_real.Truncate(handle, size, error);
}

bool FailingFileSystem::StartSync(int, std::int64_t, std::int64_t, ErrorCode& error)
{
    // Tests of what fails need not trouble the disk.
    error.clear();
    return !Fails(Call::StartSync, error);
}

bool FailingFileSystem::Sync(int handle, ErrorCode& error)
{
    error.clear();
    return !Fails(Call::Sync, error) && m_real.StatusOf(handle, error).Exists();
}

bool FailingFileSystem::SyncVolume(const std::string& path, ErrorCode& error)
{
    // Tests of what fails need not wait for the disk.
    error.clear();
    return !Fails(Call::Sync, error) && m_real.Status(path, true, error).Exists();
}

bool FailingFileSystem::SyncDirectory(const std::string& path, ErrorCode& error)
{
    return !Fails(Call::SyncDirectory, error) && m_real.SyncDirectory(path, error);
}

FileStatus FailingFileSystem::Status(const std::string& path, bool followLinks, ErrorCode& error)
{
    return Fails(Call::Status, error) ? FileStatus() : m_real.Status(path, followLinks, error);
}

FileStatus FailingFileSystem::StatusOf(int handle, ErrorCode& error)
{
    return Fails(Call::Status, error) ? FileStatus() : m_real.StatusOf(handle, error);
}

bool FailingFileSystem::CanAccess(const std::string& path, bool forWriting)
{
    return m_real.CanAccess(path, forWriting);
}

bool FailingFileSystem::Rename(const std::string& from, const std::string& to, ErrorCode& error)
{
    return !Fails(Call::Rename, error) && m_real.Rename(from, to, error);
}

bool FailingFileSystem::Unlink(const std::string& path, ErrorCode& error)
{
    return !Fails(Call::Unlink, error) && m_real.Unlink(path, error);
}

bool FailingFileSystem::MakeDirectory(const std::string& path, ErrorCode& error)
{
    return !Fails(Call::MakeDirectory, error) && m_real.MakeDirectory(path, error);
}

bool FailingFileSystem::RemoveDirectory(const std::string& path, ErrorCode& error)
{
    return !Fails(Call::RemoveDirectory, error) && m_real.RemoveDirectory(path, error);
}

bool FailingFileSystem::MakeLink(const std::string& target, const std::string& path, ErrorCode& error)
{
    return !Fails(Call::MakeLink, error) && m_real.MakeLink(target, path, error);
}

bool FailingFileSystem::SetMode(const std::string& path, std::uint32_t mode, ErrorCode& error)
{
    return !Fails(Call::SetMode, error) && m_real.SetMode(path, mode, error);
}

bool FailingFileSystem::SetOwner(const std::string& path, std::uint32_t owner, std::uint32_t group, ErrorCode& error)
{
    return !Fails(Call::SetOwner, error) && m_real.SetOwner(path, owner, group, error);
}

bool FailingFileSystem::SetTimeLastModified(const std::string& path, std::int64_t nanoseconds, ErrorCode& error)
{
    return !Fails(Call::SetTime, error) && m_real.SetTimeLastModified(path, nanoseconds, error);
}

} // namespace TestSupport

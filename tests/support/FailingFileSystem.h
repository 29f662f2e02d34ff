#pragma once

#include <tarn/service/FileSystem.h>

#include <array>
#include <limits>
#include <set>
#include <string>
#include <vector>

namespace TestSupport {

/// Stands in front of the platform's file system until the end of the scope. It counts the calls of chosen kinds, and
/// makes one of them fail, or end the process there.
class FailingFileSystem : public Tarn::Fjel::Core::Service::FileSystem
{
public:
    enum class Call
    {
        Open,
        Close,
        Read,
        Write,
        CopyRange,
        Seek,
        Truncate,
        StartSync,
        Sync,
        SyncDirectory,
        Status,
        Rename,
        Unlink,
        MakeDirectory,
        RemoveDirectory,
        MakeLink,
        SetMode,
        SetOwner,
        SetTime,
    };

    FailingFileSystem();
    ~FailingFileSystem() override;

    /// The calls that change something on the disk.
    static std::set<Call> Changes();

    /// From now on the n-th call (from 1) of these kinds fails with the error (an errno value), and with forever every
    /// one after it too. Counting starts afresh.
    void FailAt(int n, std::set<Call> kinds, int error, bool forever = false);
    /// From now on the process ends with the exit status, without unwinding, instead of the n-th call of these kinds.
    void ExitAt(int n, std::set<Call> kinds, int status);
    /// From now on at most limit further bytes can be written; a write beyond is cut short, then fails with ENOSPC.
    void LimitSpace(std::int64_t limit);
    /// From now on no copy within the system moves more than limit bytes at once; with 0 none can be made.
    void LimitCopies(std::size_t limit) { m_mostOfCopy = limit; }
    /// Lets everything pass again. Counting starts afresh.
    void Pass();
    /// Calls of the kinds given last that were seen since; after Pass, of all kinds.
    int Seen() const { return m_seen; }
    /// Calls of one kind since construction.
    int Count(Call call) const { return m_counts[static_cast<std::size_t>(call)]; }
    /// Whether a call was made to fail since FailAt or LimitSpace.
    bool HasFailed() const { return m_failed; }
    /// The kind of the first that FailAt made to fail.
    Call FirstFailed() const { return m_firstFailed; }

    int Open(const std::string& path, OpenMode mode, ErrorCode& error) override;
    bool Close(int handle, ErrorCode& error) override;
    std::int64_t Read(int handle, void* data, std::size_t size, ErrorCode& error) override;
    std::int64_t ReadAt(int handle, void* data, std::size_t size, std::int64_t offset, ErrorCode& error) override;
    std::int64_t Write(int handle, const void* data, std::size_t size, ErrorCode& error) override;
    std::int64_t CopyRange(int from, std::int64_t offset, int to, std::size_t size, ErrorCode& error) override;
    std::int64_t Seek(int handle, std::int64_t offset, bool fromEnd, ErrorCode& error) override;
    bool Truncate(int handle, std::int64_t size, ErrorCode& error) override;
    bool StartSync(int handle, std::int64_t offset, std::int64_t size, ErrorCode& error) override;
    bool Sync(int handle, ErrorCode& error) override;
    bool SyncVolume(const std::string& path, ErrorCode& error) override;
    bool SyncDirectory(const std::string& path, ErrorCode& error) override;
    Tarn::Fjel::Core::Service::FileStatus Status(const std::string& path, bool followLinks, ErrorCode& error) override;
    Tarn::Fjel::Core::Service::FileStatus StatusOf(int handle, ErrorCode& error) override;
    bool CanAccess(const std::string& path, bool forWriting) override;
    bool Rename(const std::string& from, const std::string& to, ErrorCode& error) override;
    bool Unlink(const std::string& path, ErrorCode& error) override;
    bool MakeDirectory(const std::string& path, ErrorCode& error) override;
    bool RemoveDirectory(const std::string& path, ErrorCode& error) override;
    bool MakeLink(const std::string& target, const std::string& path, ErrorCode& error) override;
    bool SetMode(const std::string& path, std::uint32_t mode, ErrorCode& error) override;
    bool SetOwner(const std::string& path, std::uint32_t owner, std::uint32_t group, ErrorCode& error) override;
    bool SetTimeLastModified(const std::string& path, std::int64_t nanoseconds, ErrorCode& error) override;

private:
    /// Counts the call; true when it is to fail, with error set.
    bool Fails(Call call, ErrorCode& error);
    std::size_t Allowed(std::size_t size, ErrorCode& error);
    std::int64_t Spent(std::int64_t written);

    FileSystem& m_real;
    FileSystem* m_previous;
    std::set<Call> m_kinds;
    int m_at = 0;
    int m_error = 0;
    int m_exitStatus = -1;
    bool m_forever = false;
    std::int64_t m_space = -1;
    std::size_t m_mostOfCopy = std::numeric_limits<std::size_t>::max();
    int m_seen = 0;
    bool m_failed = false;
    Call m_firstFailed = Call::Open;
    std::array<int, 19> m_counts{};
};

} // namespace TestSupport

#include <tarn/service/FileName.h>
#include <tarn/service/FileSystem.h>

#include <cerrno>
#include <memory>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tarn::Fjel::Core::Service {

namespace {

/// A copy is made in steps of so many bytes, so that a signal is heard between.
constexpr std::size_t copyStep = std::size_t{64} << 20;

constexpr std::int64_t nanosecondsOfSecond = 1'000'000'000;

FileStatus MakeStatus(const struct stat& from)
{
    FileStatus status;
    status.kind = S_ISREG(from.st_mode)   ? FileStatus::Kind::RegularFile
                  : S_ISDIR(from.st_mode) ? FileStatus::Kind::Directory
                  : S_ISLNK(from.st_mode) ? FileStatus::Kind::Link
                                          : FileStatus::Kind::Other;
    status.size = from.st_size;
#if defined(__APPLE__)
    const timespec& modified = from.st_mtimespec;
    const timespec& changed = from.st_ctimespec;
#else
    const timespec& modified = from.st_mtim;
    const timespec& changed = from.st_ctim;
#endif
    // tv_nsec counts forward also ahead of 1970, so this rounds down.
    status.modifiedMilliseconds = std::int64_t{modified.tv_sec} * 1000 + modified.tv_nsec / 1'000'000;
    status.modifiedNanoseconds = std::int64_t{modified.tv_sec} * nanosecondsOfSecond + modified.tv_nsec;
    status.changedNanoseconds = std::int64_t{changed.tv_sec} * nanosecondsOfSecond + changed.tv_nsec;
    status.inode = from.st_ino;
    status.device = from.st_dev;
    status.mode = from.st_mode & 07777;
    status.owner = from.st_uid;
    status.group = from.st_gid;
    return status;
}

/// The POSIX calls. An interrupted call is made again.
class PosixFileSystem : public FileSystem
{
public:
    int Open(const std::string& path, OpenMode mode, ErrorCode& error) override
    {
        return static_cast<int>(Call(error, [&] { return ::open(path.c_str(), Flags(mode) | O_CLOEXEC, 0666); }));
    }

    bool Close(int handle, ErrorCode& error) override
    {
        // Never again after an interruption: the handle is gone, and may be someone else's by now.
        return Check(::close(handle) == 0 || errno == EINTR, error);
    }

    std::int64_t Read(int handle, void* data, std::size_t size, ErrorCode& error) override
    {
        return Call(error, [&] { return ::read(handle, data, size); });
    }

    std::int64_t ReadAt(int handle, void* data, std::size_t size, std::int64_t offset, ErrorCode& error) override
    {
        return Call(error, [&] { return ::pread(handle, data, size, static_cast<off_t>(offset)); });
    }

    std::int64_t Write(int handle, const void* data, std::size_t size, ErrorCode& error) override
    {
        return Call(error, [&] { return ::write(handle, data, size); });
    }

    std::int64_t CopyRange(int from, std::int64_t offset, int to, std::size_t size, ErrorCode& error) override
    {
#if defined(__linux__)
        off_t position = static_cast<off_t>(offset);
        return Call(error, [&] { return ::copy_file_range(from, &position, to, nullptr, size, 0); });
#else
        static_cast<void>(from), static_cast<void>(offset), static_cast<void>(to), static_cast<void>(size);
        error.assign(ENOSYS, boost::system::system_category());
        return -1;
#endif
    }

    std::int64_t Seek(int handle, std::int64_t offset, bool fromEnd, ErrorCode& error) override
    {
        return Call(error, [&] { return ::lseek(handle, static_cast<off_t>(offset), fromEnd ? SEEK_END : SEEK_SET); });
    }

    bool Truncate(int handle, std::int64_t size, ErrorCode& error) override
    {
        return Call(error, [&] { return ::ftruncate(handle, static_cast<off_t>(size)); }) == 0;
    }

    bool StartSync(int handle, std::int64_t offset, std::int64_t size, ErrorCode& error) override
    {
#if defined(__linux__)
        const auto start = [&] { return ::sync_file_range(handle, offset, size, SYNC_FILE_RANGE_WRITE); };
        if (Call(error, start) == 0) return true;
        const int failure = error.value();
        if (failure != ENOSYS && failure != EINVAL && failure != ESPIPE && failure != EOPNOTSUPP) return false;
#else
        static_cast<void>(handle), static_cast<void>(offset), static_cast<void>(size);
#endif
        error.clear();
        return true;
    }

    bool Sync(int handle, ErrorCode& error) override
    {
        return Call(error, [&] { return ::fsync(handle); }) == 0;
    }

    bool SyncVolume(const std::string& path, ErrorCode& error) override
    {
#if defined(__linux__)
        const std::int64_t handle =
            Call(error, [&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); });
        if (handle < 0) return false;
        const bool done = Check(::syncfs(static_cast<int>(handle)) == 0, error);
        ::close(static_cast<int>(handle));
        return done;
#else
        ::sync();
        return FileStatus::Of(path).Exists() || Check(false, error);
#endif
    }

    bool SyncDirectory(const std::string& path, ErrorCode& error) override
    {
        const std::int64_t handle =
            Call(error, [&] { return ::open(path.empty() ? "." : path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
        if (handle < 0) return false;
        bool done = Sync(static_cast<int>(handle), error);
        if (!done && (error.value() == EINVAL || error.value() == ENOTSUP)) {
            error.clear();
            done = true;
        }
        ::close(static_cast<int>(handle));
        return done;
    }

    FileStatus Status(const std::string& path, bool followLinks, ErrorCode& error) override
    {
        struct stat status;
        const bool found = (followLinks ? ::stat(path.c_str(), &status) : ::lstat(path.c_str(), &status)) == 0;
        const bool missing = !found && (errno == ENOENT || errno == ENOTDIR);
        return Check(found || missing, error) && found ? MakeStatus(status) : FileStatus();
    }

    FileStatus StatusOf(int handle, ErrorCode& error) override
    {
        struct stat status;
        return Check(::fstat(handle, &status) == 0, error) ? MakeStatus(status) : FileStatus();
    }

    bool CanAccess(const std::string& path, bool forWriting) override
    {
        return ::faccessat(AT_FDCWD, path.c_str(), forWriting ? W_OK : R_OK, AT_EACCESS) == 0;
    }

    bool Rename(const std::string& from, const std::string& to, ErrorCode& error) override
    {
        return Check(::rename(from.c_str(), to.c_str()) == 0, error);
    }

    bool Unlink(const std::string& path, ErrorCode& error) override
    {
        return Check(::unlink(path.c_str()) == 0, error);
    }

    bool MakeDirectory(const std::string& path, ErrorCode& error) override
    {
        if (::mkdir(path.c_str(), 0777) == 0) return Check(true, error);
        const int failure = errno;
        if (failure == EEXIST && Status(path, true, error).IsDirectory()) return true;
        error.assign(failure, boost::system::system_category());
        return false;
    }

    bool RemoveDirectory(const std::string& path, ErrorCode& error) override
    {
        return Check(::rmdir(path.c_str()) == 0, error);
    }

    bool MakeLink(const std::string& target, const std::string& path, ErrorCode& error) override
    {
        return Check(::symlink(target.c_str(), path.c_str()) == 0, error);
    }

    bool SetMode(const std::string& path, std::uint32_t mode, ErrorCode& error) override
    {
        return Check(::chmod(path.c_str(), static_cast<mode_t>(mode)) == 0, error);
    }

    bool SetOwner(const std::string& path, std::uint32_t owner, std::uint32_t group, ErrorCode& error) override
    {
        return Check(::lchown(path.c_str(), owner, group) == 0, error);
    }

    bool SetTimeLastModified(const std::string& path, std::int64_t nanoseconds, ErrorCode& error) override
    {
        std::int64_t seconds = nanoseconds / nanosecondsOfSecond;
        std::int64_t rest = nanoseconds % nanosecondsOfSecond;
        if (rest < 0) {
            rest += nanosecondsOfSecond;
            --seconds;
        }
        timespec times[2]{};
        times[0].tv_nsec = UTIME_OMIT;
        times[1].tv_sec = static_cast<time_t>(seconds);
        times[1].tv_nsec = static_cast<long>(rest);
        return Check(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) == 0, error);
    }

private:
    static int Flags(OpenMode mode)
    {
        switch (mode) {
        case OpenMode::Read:
            return O_RDONLY;
        case OpenMode::WriteTruncate:
            return O_WRONLY | O_CREAT | O_TRUNC;
        case OpenMode::WriteExisting:
            return O_RDWR;
        case OpenMode::WriteNew:
            return O_WRONLY | O_CREAT | O_EXCL;
        case OpenMode::WriteAppend:
            break;
        }
        return O_WRONLY | O_CREAT | O_APPEND;
    }

    static bool Check(bool succeeded, ErrorCode& error)
    {
        if (succeeded) {
            error.clear();
        } else {
            error.assign(errno, boost::system::system_category());
        }
        return succeeded;
    }

    template <class Function>
    static std::int64_t Call(ErrorCode& error, Function function)
    {
        std::int64_t result;
        do {
            result = function();
        } while (result < 0 && errno == EINTR);
        Check(result >= 0, error);
        return result;
    }
};

FileSystem*& Current()
{
    static FileSystem* current = &FileSystem::Platform();
    return current;
}

} // namespace

FileSystem::~FileSystem() = default;

FileSystem& FileSystem::Instance()
{
    return *Current();
}

FileSystem& FileSystem::Platform()
{
    static PosixFileSystem platform;
    return platform;
}

FileSystem* FileSystem::SetForTesting(FileSystem* replacement)
{
    return std::exchange(Current(), replacement != nullptr ? replacement : &Platform());
}

bool FileSystem::CopyModeAndOwner(const FileStatus& like, const std::string& path, ErrorCode& error)
{
    const FileStatus present = Status(path, true, error);
    if (error) return false;
    const bool owned =
        (present.owner == like.owner && present.group == like.group) || SetOwner(path, like.owner, like.group, error);
    // Only the privileged may give a file away; keeping the group is the next best.
    if (!owned && present.group != like.group) SetOwner(path, present.owner, like.group, error);
    // The set-user and set-group bits speak of the old owner, so they don't go to a file of another. The mode comes
    // last, since a change of owner takes those bits away.
    const std::uint32_t mode = owned ? like.mode : like.mode & 01777;
    return SetMode(path, mode, error);
}

bool FileSystem::WriteAll(int handle, const void* data, std::size_t size, ErrorCode& error)
{
    const char* rest = static_cast<const char*>(data);
    error.clear();
    while (size > 0) {
        const std::int64_t written = Write(handle, rest, size, error);
        if (written < 0) return false;
        if (written == 0) {
            error.assign(EIO, boost::system::system_category());
            return false;
        }
        rest += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

bool FileSystem::CopyBytes(const std::string& path, int handle, ErrorCode& error)
{
    const int source = Open(path, OpenMode::Read, error);
    if (source < 0) return false;
    std::int64_t offset = 0;
    for (;;) {
        const std::int64_t count = CopyRange(source, offset, handle, copyStep, error);
        if (count <= 0) break;
        offset += count;
    }
    // That was the end of the file, or it can't be copied so.
    constexpr std::size_t chunkSize = 1 << 18;
    const auto chunk = std::make_unique_for_overwrite<char[]>(chunkSize);
    bool done = false;
    for (;;) {
        const std::int64_t count = ReadAt(source, chunk.get(), chunkSize, offset, error);
        done = count == 0;
        if (count <= 0 || !WriteAll(handle, chunk.get(), static_cast<std::size_t>(count), error)) break;
        offset += count;
    }
    ErrorCode ignored;
    Close(source, ignored);
    return done;
}

FileStatus FileStatus::Of(const std::string& path)
{
    FileSystem::ErrorCode error;
    FileStatus status = FileSystem::Instance().Status(path, true, error);
    status.isUnknown = error.failed();
    return status;
}

FileStatus FileStatus::Of(const FileName& file)
{
    return Of(file.GetFullName());
}

} // namespace Tarn::Fjel::Core::Service

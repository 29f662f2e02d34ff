#pragma once

#include <tarn/service/FileStatus.h>

#include <boost/system/error_code.hpp>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Tarn::Fjel::Core::Service {

/// The raw file operations that everything in this library rests on, so that a test can make any of them fail, or end
/// the process there. An operation that fails sets error, and clears it otherwise; none throws.
class FileSystem
{
public:
    using ErrorCode = boost::system::error_code;

    enum class OpenMode
    {
        Read,
        WriteTruncate, ///< made if missing
        WriteExisting, ///< reading and writing, contents kept; fails if missing
        WriteNew,      ///< fails if anything exists there
        WriteAppend,   ///< made if missing, every write goes to the end
    };

    virtual ~FileSystem();

    /// The one in use.
    static FileSystem& Instance();
    /// That of the platform.
    static FileSystem& Platform();
    /// Puts replacement (not owned) in use, or with null the platform's again; returns the one that was in use.
    static FileSystem* SetForTesting(FileSystem* replacement);

    /// A handle, or -1. Handles are not inherited by child processes.
    virtual int Open(const std::string& path, OpenMode mode, ErrorCode& error) = 0;
    /// The handle is gone also when closing fails.
    virtual bool Close(int handle, ErrorCode& error) = 0;
    /// Read and Write give the number of bytes done, which may be fewer than asked; 0 from a read is the end of the
    /// file; -1 is a failure. ReadAt leaves the handle's position alone.
    virtual std::int64_t Read(int handle, void* data, std::size_t size, ErrorCode& error) = 0;
    virtual std::int64_t ReadAt(int handle, void* data, std::size_t size, std::int64_t offset, ErrorCode& error) = 0;
    virtual std::int64_t Write(int handle, const void* data, std::size_t size, ErrorCode& error) = 0;
    /// Copies at most size bytes at offset of one file to the position of another, without their coming into this
    /// process. What comes back is as for Write. Most failures and a 0 mean no more than that these two files can't be
    /// copied so: who then reads and writes meets what is really wrong.
    virtual std::int64_t CopyRange(int from, std::int64_t offset, int to, std::size_t size, ErrorCode& error) = 0;
    /// Moves to offset from the beginning (or to the end, plus offset) and gives the new position, or -1.
    virtual std::int64_t Seek(int handle, std::int64_t offset, bool fromEnd, ErrorCode& error) = 0;
    virtual bool Truncate(int handle, std::int64_t size, ErrorCode& error) = 0;
    /// Has these bytes go to the disk from now on, so that Sync finds less to wait for. Where a platform knows no such
    /// thing, nothing happens.
    virtual bool StartSync(int handle, std::int64_t offset, std::int64_t size, ErrorCode& error) = 0;
    /// Waits until the data are on the disk.
    virtual bool Sync(int handle, ErrorCode& error) = 0;
    /// The same for all that was written to the file system that holds a file or directory.
    virtual bool SyncVolume(const std::string& path, ErrorCode& error) = 0;
    /// The same for the entries of a directory. Where a file system knows no such thing, it counts as done.
    virtual bool SyncDirectory(const std::string& path, ErrorCode& error) = 0;

    /// Missing files give FileStatus::Kind::Missing and no error.
    virtual FileStatus Status(const std::string& path, bool followLinks, ErrorCode& error) = 0;
    virtual FileStatus StatusOf(int handle, ErrorCode& error) = 0;
    virtual bool CanAccess(const std::string& path, bool forWriting) = 0;

    /// Replaces a file at to in one step.
    virtual bool Rename(const std::string& from, const std::string& to, ErrorCode& error) = 0;
    /// Removes a file or a link; never a directory.
    virtual bool Unlink(const std::string& path, ErrorCode& error) = 0;
    /// Makes one level. An existing directory is success.
    virtual bool MakeDirectory(const std::string& path, ErrorCode& error) = 0;
    /// Removes an empty directory.
    virtual bool RemoveDirectory(const std::string& path, ErrorCode& error) = 0;
    /// Makes a symbolic link at path that holds the text target.
    virtual bool MakeLink(const std::string& target, const std::string& path, ErrorCode& error) = 0;

    virtual bool SetMode(const std::string& path, std::uint32_t mode, ErrorCode& error) = 0;
    virtual bool SetOwner(const std::string& path, std::uint32_t owner, std::uint32_t group, ErrorCode& error) = 0;
    /// Sets the time of the last change; of a link itself, not of what it names.
    virtual bool SetTimeLastModified(const std::string& path, std::int64_t nanoseconds, ErrorCode& error) = 0;

    /// Gives the file at path the owner and group of like where the process may, then its mode.
    bool CopyModeAndOwner(const FileStatus& like, const std::string& path, ErrorCode& error);
    /// Writes all size bytes, in as many writes as it takes.
    bool WriteAll(int handle, const void* data, std::size_t size, ErrorCode& error);
    /// Writes the bytes of the file at path behind the position of handle.
    bool CopyBytes(const std::string& path, int handle, ErrorCode& error);
};

} // namespace Tarn::Fjel::Core::Service

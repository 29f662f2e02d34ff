#pragma once

#include <tarn/service/FileSystem.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <streambuf>
#include <string>

namespace Tarn::Fjel::Core::Service {

/// The stream buffer of FileInputStream and FileOutputStream: one direction at a time, over FileSystem::Instance(),
/// with 64-bit offsets. Small reads and writes go through its buffer; those of the buffer's size or more go straight
/// between the file and the caller's memory. A seek inside what is buffered costs no system call, and no other seek
/// costs one before the next read. What can't be sought (a pipe) is read in order.
///
/// A read that fails throws std::ios_base::failure, which a stream turns into its bad flag; so a broken disk is never
/// taken for the end of the file.
class FileStreamBuffer : public std::streambuf
{
public:
    static constexpr std::size_t defaultBufferSize = 65536;

    explicit FileStreamBuffer(std::size_t bufferSize = defaultBufferSize);
    ~FileStreamBuffer() override;

    FileStreamBuffer(const FileStreamBuffer&) = delete;
    FileStreamBuffer& operator=(const FileStreamBuffer&) = delete;

    /// False, with LastError() set, when the file can't be opened or is a directory.
    bool Open(const std::string& path, FileSystem::OpenMode mode);
    /// Writes what is buffered and closes; false when either fails. The file counts as closed in any case.
    bool Close();
    bool IsOpen() const { return m_handle >= 0; }

    /// Status of the open file. Missing when none is open.
    FileStatus Status() const;
    /// Writes what is buffered and waits until all is on the disk.
    bool SyncToDisk();
    /// From now on what is written begins to go to the disk at once.
    void StartSyncEarly();
    /// See `FileOutputStream`.
    std::int64_t CopyFrom(FileStreamBuffer& source, std::int64_t offset, std::int64_t size);
    bool HasFailed() const { return m_failed; }
    /// Writes what is buffered and cuts the file to size bytes; the position goes to its end.
    bool Truncate(std::int64_t size);

    /// What the last failed operation met.
    const FileSystem::ErrorCode& LastError() const { return m_error; }

    /// See `FileInputStream`.
    static std::uint64_t ReadFailures() { return s_readFailures; }

protected:
    int_type underflow() override;
    std::streamsize xsgetn(char* data, std::streamsize size) override;
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* data, std::streamsize size) override;
    int sync() override;
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction, std::ios_base::openmode which) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override;

private:
    std::int64_t Position() const;
    bool FlushWrites();
    bool WriteOut(const char* data, std::size_t size);
    bool Advanced(std::int64_t size);
    std::int64_t CopyInSystem(int source, std::int64_t offset, std::int64_t size);
    std::int64_t CopyThroughMemory(FileStreamBuffer& source, std::int64_t offset, std::int64_t size);
    void Advance(std::streamsize size);
    /// Reads at m_offset and moves it; 0 at the end of the file.
    std::size_t ReadInto(char* data, std::size_t size);
    char* Buffer();
    void Forget();

    std::unique_ptr<char[]> m_buffer; ///< made at the first use
    std::size_t m_bufferSize;
    int m_handle = -1;
    bool m_writing = false;
    bool m_sequential = false; ///< the file can't be read at an offset
    bool m_failed = false;     ///< a write failed, and no later one is tried
    bool m_syncsEarly = false;
    std::int64_t m_syncBegin = 0; ///< behind what has begun to go to the disk
    std::int64_t m_offset = 0;    ///< of the file's byte behind the get area, or at the start of the put area
    FileSystem::ErrorCode m_error;

    inline static std::atomic<std::uint64_t> s_readFailures = 0;
};

} // namespace Tarn::Fjel::Core::Service

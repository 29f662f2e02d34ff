#pragma once

#include <tarn/service/FileStreamBuffer.h>

#include <istream>
#include <ostream>
#include <string>

namespace Tarn::Fjel::Core::Service {

/// A binary input stream on a file. Reads of the buffer's size or more go straight into the caller's memory.
class FileInputStream : public std::istream
{
public:
    explicit FileInputStream(std::size_t bufferSize = FileStreamBuffer::defaultBufferSize);
    /// Opens the file; the stream has failed when that can't be done.
    explicit FileInputStream(const std::string& path, std::size_t bufferSize = FileStreamBuffer::defaultBufferSize);
    ~FileInputStream() override;

    /// False, with the stream failed, when path can't be opened for reading or is a directory. A file that is open is
    /// closed first.
    bool Open(const std::string& path);
    void Close();
    bool IsOpen() const { return m_buffer.IsOpen(); }
    /// Status of the open file: of the very file that is read, whatever stands under its name by now.
    FileStatus Status() const { return m_buffer.Status(); }
    /// What the last failed operation met.
    const FileSystem::ErrorCode& LastError() const { return m_buffer.LastError(); }

private:
    friend class FileOutputStream;

    FileStreamBuffer m_buffer;
};

/// Whether a read of this process has failed since its construction, or the opening of a file that may be there. A
/// reader that was handed a stream takes a failed read for the end of the file; who must know keeps one of these.
class ReadWatch
{
public:
    bool SawFailure() const { return FileStreamBuffer::ReadFailures() != m_before; }

private:
    std::uint64_t m_before = FileStreamBuffer::ReadFailures();
};

/// A binary output stream on a file. A write that fails (no space, an I/O error) sets the stream's bad flag; with a
/// buffer between, that may show at Flush, Sync or Close only.
class FileOutputStream : public std::ostream
{
public:
    enum class Mode
    {
        Truncate,       ///< an empty file, made if missing
        AppendExisting, ///< behind the end of a file that must exist
        New,            ///< a file that must not exist
    };

    explicit FileOutputStream(std::size_t bufferSize = FileStreamBuffer::defaultBufferSize);
    FileOutputStream(const std::string& path, Mode mode, std::size_t bufferSize = FileStreamBuffer::defaultBufferSize);
    /// Closes; who needs to know whether all was written calls Close before.
    ~FileOutputStream() override;

    /// False, with the stream failed, when path can't be opened in that mode or is a directory. A file that is open
    /// is closed first.
    bool Open(const std::string& path, Mode mode);
    /// False, with the stream failed, when what was buffered can't be written or closing fails; also when an earlier
    /// write had failed.
    bool Close();
    bool IsOpen() const { return m_buffer.IsOpen(); }
    /// Writes what is buffered and waits until all is on the disk; false, with the stream failed, when that fails.
    bool Sync();
    /// The stream will end with Sync: what is written begins to go to the disk at once, in steps of some megabytes, so
    /// that Sync has little to wait for. To be called when the file is open.
    void StartSyncEarly() { m_buffer.StartSyncEarly(); }
    /// Writes `size` bytes at `offset` of a regular file, within the system where that can be done. Gives back how many
    /// were written: fewer where the source ends before, where it can't be read (then that counts as a failed read), or
    /// where this stream fails. The position of `source` stays.
    std::int64_t CopyFrom(FileInputStream& source, std::int64_t offset, std::int64_t size);
    /// Writes what is buffered and cuts the file to size bytes, behind which writing goes on.
    bool Truncate(std::int64_t size);
    FileStatus Status() const { return m_buffer.Status(); }
    const FileSystem::ErrorCode& LastError() const { return m_buffer.LastError(); }

private:
    FileStreamBuffer m_buffer;
};

} // namespace Tarn::Fjel::Core::Service

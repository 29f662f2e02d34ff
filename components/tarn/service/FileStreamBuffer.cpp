#include <tarn/service/FileStreamBuffer.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ios>
#include <limits>
#include <memory>

namespace Tarn::Fjel::Core::Service {

namespace {

/// Files are kept in memory in pages. Where the pages of two files line up, bytes go from the one to the other fastest.
constexpr std::int64_t pageSize = 4096;

/// What goes through memory is read and written in pieces that end with a page.
constexpr std::int64_t pieceSize = 64 * 1024;

/// What is copied in one go, and what begins to go to the disk.
constexpr std::int64_t stepSize = 8 << 20;

/// The C library moves long stretches by an instruction that is slow where the two lie differently in their pages.
void CopyInStretches(char* to, const char* from, std::size_t size)
{
    constexpr std::size_t longest = 2048;
    while (size > 0) {
        const std::size_t stretch = std::min(size, longest);
        std::memcpy(to, from, stretch);
        to += stretch;
        from += stretch;
        size -= stretch;
    }
}

} // namespace

FileStreamBuffer::FileStreamBuffer(std::size_t bufferSize) : m_bufferSize(std::max<std::size_t>(bufferSize, 1)) {}

FileStreamBuffer::~FileStreamBuffer()
{
    Close();
}

bool FileStreamBuffer::Open(const std::string& path, FileSystem::OpenMode mode)
{
    Close();
    FileSystem& fileSystem = FileSystem::Instance();
    m_handle = fileSystem.Open(path, mode, m_error);
    if (m_handle < 0) {
        if (mode == FileSystem::OpenMode::Read && m_error != boost::system::errc::no_such_file_or_directory)
            ++s_readFailures;
        return false;
    }
    m_writing = mode != FileSystem::OpenMode::Read;
    if (m_writing) {
        if (mode == FileSystem::OpenMode::WriteExisting || mode == FileSystem::OpenMode::WriteAppend) {
            m_offset = fileSystem.Seek(m_handle, 0, true, m_error);
            if (m_offset < 0) {
                Forget();
                return false;
            }
        }
        return true;
    }
    // Opening a directory for reading succeeds; it is the first read that doesn't.
    FileSystem::ErrorCode ignored;
    if (fileSystem.StatusOf(m_handle, ignored).IsDirectory()) {
        Forget();
        m_error.assign(EISDIR, boost::system::system_category());
        return false;
    }
    return true;
}

bool FileStreamBuffer::Close()
{
    if (m_handle < 0) return true;
    bool done = !m_writing || FlushWrites();
    FileSystem::ErrorCode error;
    if (!FileSystem::Instance().Close(m_handle, error)) {
        if (done) m_error = error;
        done = false;
    }
    m_handle = -1;
    Forget();
    return done;
}

/// Drops the file without writing what is buffered.
void FileStreamBuffer::Forget()
{
    if (m_handle >= 0) {
        FileSystem::ErrorCode ignored;
        FileSystem::Instance().Close(m_handle, ignored);
        m_handle = -1;
    }
    setg(nullptr, nullptr, nullptr);
    setp(nullptr, nullptr);
    m_writing = m_sequential = m_failed = m_syncsEarly = false;
    m_offset = m_syncBegin = 0;
}

FileStatus FileStreamBuffer::Status() const
{
    FileSystem::ErrorCode ignored;
    return m_handle < 0 ? FileStatus() : FileSystem::Instance().StatusOf(m_handle, ignored);
}

bool FileStreamBuffer::SyncToDisk()
{
    if (m_handle < 0 || !FlushWrites()) return false;
    // What the disk refused once may not be there, even if a second try should succeed.
    if (!FileSystem::Instance().Sync(m_handle, m_error)) m_failed = true;
    return !m_failed;
}

void FileStreamBuffer::StartSyncEarly()
{
    m_syncsEarly = m_writing;
    m_syncBegin = m_offset;
}

bool FileStreamBuffer::Truncate(std::int64_t size)
{
    if (m_handle < 0 || !m_writing || !FlushWrites()) return false;
    FileSystem& fileSystem = FileSystem::Instance();
    if (!fileSystem.Truncate(m_handle, size, m_error)) return false;
    const std::int64_t end = fileSystem.Seek(m_handle, size, false, m_error);
    if (end < 0) {
        m_failed = true;
        return false;
    }
    m_offset = end;
    return true;
}

char* FileStreamBuffer::Buffer()
{
    if (!m_buffer) m_buffer = std::make_unique_for_overwrite<char[]>(m_bufferSize);
    return m_buffer.get();
}

std::size_t FileStreamBuffer::ReadInto(char* data, std::size_t size)
{
    FileSystem& fileSystem = FileSystem::Instance();
    std::int64_t count = -1;
    if (!m_sequential) {
        count = fileSystem.ReadAt(m_handle, data, size, m_offset, m_error);
        m_sequential = count < 0 && m_error.value() == ESPIPE;
    }
    if (m_sequential) count = fileSystem.Read(m_handle, data, size, m_error);
    if (count < 0) {
        ++s_readFailures;
        throw std::ios_base::failure("Reading a file failed: " + m_error.message());
    }
    m_offset += count;
    return static_cast<std::size_t>(count);
}

FileStreamBuffer::int_type FileStreamBuffer::underflow()
{
    if (m_handle < 0 || m_writing) return traits_type::eof();
    if (gptr() == egptr()) {
        char* buffer = Buffer();
        setg(buffer, buffer, buffer);
        const std::size_t count = ReadInto(buffer, m_bufferSize);
        if (count == 0) return traits_type::eof();
        setg(buffer, buffer, buffer + count);
    }
    return traits_type::to_int_type(*gptr());
}

std::streamsize FileStreamBuffer::xsgetn(char* data, std::streamsize size)
{
    if (m_handle < 0 || m_writing) return 0;
    std::streamsize done = 0;
    while (done < size) {
        std::streamsize count = std::min<std::streamsize>(size - done, egptr() - gptr());
        if (count > 0) {
            std::memcpy(data + done, gptr(), static_cast<std::size_t>(count));
            setg(eback(), gptr() + count, egptr());
        } else if (static_cast<std::size_t>(size - done) >= m_bufferSize) {
            setg(nullptr, nullptr, nullptr);
            count = static_cast<std::streamsize>(ReadInto(data + done, static_cast<std::size_t>(size - done)));
            if (count == 0) break;
        } else if (traits_type::eq_int_type(underflow(), traits_type::eof())) {
            break;
        }
        done += count;
    }
    return done;
}

bool FileStreamBuffer::FlushWrites()
{
    if (!m_writing) return true;
    const auto pending = static_cast<std::size_t>(pptr() - pbase());
    if (!m_failed && pending > 0) WriteOut(pbase(), pending);
    setp(nullptr, nullptr);
    return !m_failed;
}

bool FileStreamBuffer::WriteOut(const char* data, std::size_t size)
{
    m_failed = !FileSystem::Instance().WriteAll(m_handle, data, size, m_error);
    return !m_failed && Advanced(static_cast<std::int64_t>(size));
}

/// So many bytes more have gone to the file.
bool FileStreamBuffer::Advanced(std::int64_t size)
{
    m_offset += size;
    const std::int64_t behind = m_offset - m_syncBegin;
    if (!m_syncsEarly || behind < stepSize) return true;
    m_failed = !FileSystem::Instance().StartSync(m_handle, m_syncBegin, behind, m_error);
    m_syncBegin = m_offset;
    return !m_failed;
}

std::int64_t FileStreamBuffer::CopyFrom(FileStreamBuffer& source, std::int64_t offset, std::int64_t size)
{
    if (m_handle < 0 || !m_writing || source.m_handle < 0 || source.m_writing || !FlushWrites()) return 0;
    std::int64_t done = 0;
    if ((offset - m_offset) % pageSize == 0) done = CopyInSystem(source.m_handle, offset, size);
    return done + CopyThroughMemory(source, offset + done, size - done);
}

/// What of it the system does on its own, in which nothing has gone wrong yet.
std::int64_t FileStreamBuffer::CopyInSystem(int source, std::int64_t offset, std::int64_t size)
{
    std::int64_t done = 0;
    while (done < size && !m_failed) {
        const auto step = static_cast<std::size_t>(std::min(size - done, stepSize));
        FileSystem::ErrorCode ignored;
        const std::int64_t count = FileSystem::Instance().CopyRange(source, offset + done, m_handle, step, ignored);
        if (count <= 0) break;
        done += count;
        Advanced(count);
    }
    return done;
}

/// Reads begin with pages of the one file and writes with pages of the other.
std::int64_t FileStreamBuffer::CopyThroughMemory(FileStreamBuffer& source, std::int64_t offset, std::int64_t size)
{
    if (size <= 0 || m_failed) return 0;
    std::size_t space = 2 * pieceSize + pageSize;
    const auto memory = std::make_unique_for_overwrite<char[]>(space);
    void* aligned = memory.get();
    std::align(pageSize, 2 * pieceSize, aligned, space);
    char* const in = static_cast<char*>(aligned);
    char* const out = in + pieceSize;

    const std::int64_t begin = m_offset;
    std::int64_t held = 0;
    const auto write = [&] {
        const bool written = m_failed || held == 0 || WriteOut(out, static_cast<std::size_t>(held));
        held = 0;
        return written && !m_failed;
    };
    for (std::int64_t read = 0; read < size && !m_failed;) {
        const std::int64_t at = offset + read;
        const auto wanted = static_cast<std::size_t>(std::min(size - read, pieceSize - at % pageSize));
        const std::int64_t count = FileSystem::Instance().ReadAt(source.m_handle, in, wanted, at, source.m_error);
        if (count < 0) ++s_readFailures;
        if (count <= 0) break;
        read += count;
        for (std::int64_t taken = 0; taken < count;) {
            const std::int64_t room = pieceSize - m_offset % pageSize;
            const std::int64_t part = std::min(count - taken, room - held);
            CopyInStretches(out + held, in + taken, static_cast<std::size_t>(part));
            held += part;
            taken += part;
            if (held == room && !write()) break;
        }
    }
    write();
    return m_offset - begin;
}

FileStreamBuffer::int_type FileStreamBuffer::overflow(int_type c)
{
    if (m_handle < 0 || !m_writing || !FlushWrites()) return traits_type::eof();
    setp(Buffer(), Buffer() + m_bufferSize);
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
    }
    return traits_type::not_eof(c);
}

std::streamsize FileStreamBuffer::xsputn(const char* data, std::streamsize size)
{
    if (size <= 0) return 0;
    if (size > epptr() - pptr()) {
        // What fits nowhere in the buffer goes past it.
        if (static_cast<std::size_t>(size) >= m_bufferSize) {
            if (m_handle < 0 || !m_writing || !FlushWrites()) return 0;
            return WriteOut(data, static_cast<std::size_t>(size)) ? size : 0;
        }
        if (traits_type::eq_int_type(overflow(traits_type::eof()), traits_type::eof())) return 0;
    }
    std::memcpy(pptr(), data, static_cast<std::size_t>(size));
    Advance(size);
    return size;
}

/// Moves the write position; pbump alone takes no more than an int.
void FileStreamBuffer::Advance(std::streamsize size)
{
    constexpr std::streamsize step = std::numeric_limits<int>::max();
    for (; size > step; size -= step)
        pbump(static_cast<int>(step));
    pbump(static_cast<int>(size));
}

int FileStreamBuffer::sync()
{
    return FlushWrites() ? 0 : -1;
}

std::int64_t FileStreamBuffer::Position() const
{
    return m_writing ? m_offset + (pptr() - pbase()) : m_offset - (egptr() - gptr());
}

FileStreamBuffer::pos_type FileStreamBuffer::seekoff(off_type offset, std::ios_base::seekdir direction,
                                                     std::ios_base::openmode)
{
    if (m_handle < 0) return pos_type(off_type(-1));
    std::int64_t base = 0;
    if (direction == std::ios_base::cur) base = Position();
    if (direction == std::ios_base::end) {
        if (m_writing && !FlushWrites()) return pos_type(off_type(-1));
        base = Status().size;
        if (base < 0) return pos_type(off_type(-1));
    }
    const std::int64_t target = base + offset;
    if (target < 0) return pos_type(off_type(-1));
    if (target == Position()) return pos_type(target);

    if (m_writing) {
        if (!FlushWrites() || FileSystem::Instance().Seek(m_handle, target, false, m_error) < 0) {
            return pos_type(off_type(-1));
        }
        m_offset = target;
        return pos_type(target);
    }
    const std::int64_t first = m_offset - (egptr() - eback());
    if (target >= first && target <= m_offset) {
        setg(eback(), eback() + (target - first), egptr());
        return pos_type(target);
    }
    if (m_sequential) return pos_type(off_type(-1));
    setg(nullptr, nullptr, nullptr);
    m_offset = target;
    return pos_type(target);
}

FileStreamBuffer::pos_type FileStreamBuffer::seekpos(pos_type position, std::ios_base::openmode which)
{
    return seekoff(off_type(position), std::ios_base::beg, which);
}

} // namespace Tarn::Fjel::Core::Service

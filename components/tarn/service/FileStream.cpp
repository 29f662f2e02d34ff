#include <tarn/service/FileStream.h>

namespace Tarn::Fjel::Core::Service {

FileInputStream::FileInputStream(std::size_t bufferSize) : std::istream(nullptr), m_buffer(bufferSize)
{
    rdbuf(&m_buffer);
}

FileInputStream::FileInputStream(const std::string& path, std::size_t bufferSize) : FileInputStream(bufferSize)
{
    Open(path);
}

FileInputStream::~FileInputStream() = default;

bool FileInputStream::Open(const std::string& path)
{
    clear();
    if (m_buffer.Open(path, FileSystem::OpenMode::Read)) return true;
    setstate(failbit);
    return false;
}

void FileInputStream::Close()
{
    m_buffer.Close();
}

FileOutputStream::FileOutputStream(std::size_t bufferSize) : std::ostream(nullptr), m_buffer(bufferSize)
{
    rdbuf(&m_buffer);
}

FileOutputStream::FileOutputStream(const std::string& path, Mode mode, std::size_t bufferSize)
    : FileOutputStream(bufferSize)
{
    Open(path, mode);
}

FileOutputStream::~FileOutputStream() = default;

bool FileOutputStream::Open(const std::string& path, Mode mode)
{
    clear();
    const FileSystem::OpenMode openMode = mode == Mode::Truncate         ? FileSystem::OpenMode::WriteTruncate
                                          : mode == Mode::AppendExisting ? FileSystem::OpenMode::WriteExisting
                                                                         : FileSystem::OpenMode::WriteNew;
    if (m_buffer.Open(path, openMode)) return true;
    setstate(failbit);
    return false;
}

bool FileOutputStream::Close()
{
    if (!m_buffer.IsOpen()) return true;
    if (m_buffer.Close()) return true;
    setstate(badbit);
    return false;
}

bool FileOutputStream::Sync()
{
    if (m_buffer.SyncToDisk()) return true;
    setstate(badbit);
    return false;
}

std::int64_t FileOutputStream::CopyFrom(FileInputStream& source, std::int64_t offset, std::int64_t size)
{
    const std::int64_t copied = good() ? m_buffer.CopyFrom(source.m_buffer, offset, size) : 0;
    if (m_buffer.HasFailed()) setstate(badbit);
    return copied;
}

bool FileOutputStream::Truncate(std::int64_t size)
{
    if (m_buffer.Truncate(size)) return true;
    setstate(badbit);
    return false;
}

} // namespace Tarn::Fjel::Core::Service

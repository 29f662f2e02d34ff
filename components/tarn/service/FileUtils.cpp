#include <tarn/service/FileStatus.h>
#include <tarn/service/FileStream.h>
#include <tarn/service/FileSystem.h>
#include <tarn/service/FileUtils.h>
#include <tarn/service/Strings.h>

#include <boost/filesystem/exception.hpp>
#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <istream>
#include <memory>

namespace Tarn::Fjel::Core::Service {

namespace {

using ErrorCode = FileSystem::ErrorCode;
using OpenMode = FileSystem::OpenMode;

/// Writes the contents of a file to a handle; false on failure. Can be called once only where a stream is behind it.
using Contents = std::function<bool(int handle)>;

/// Calls contents on handle and closes it; true when all is written, with sync also on the disk.
bool WriteAndClose(int handle, const Contents& contents, bool sync)
{
    FileSystem& fileSystem = FileSystem::Instance();
    ErrorCode error;
    const bool written = contents(handle) && (!sync || fileSystem.Sync(handle, error));
    return fileSystem.Close(handle, error) && written;
}

bool WriteNew(const std::string& path, const Contents& contents)
{
    FileSystem& fileSystem = FileSystem::Instance();
    ErrorCode error;
    const int handle = fileSystem.Open(path, OpenMode::WriteNew, error);
    if (handle < 0) return false;
    if (WriteAndClose(handle, contents, false)) return true;
    fileSystem.Unlink(path, error);
    return false;
}

/// Opens a file that nobody has yet, beside path or, where that is refused, in the system's temporary directory.
/// Gives its name and whether it lies beside; a handle below 0 when neither can be had.
struct ScratchFile
{
    explicit ScratchFile(const std::string& path)
    {
        FileSystem& fileSystem = FileSystem::Instance();
        ErrorCode error;
        for (int i = 1; i <= maxTries; ++i) {
            name = path + ".copy" + std::to_string(i);
            handle = fileSystem.Open(name, OpenMode::WriteNew, error);
            if (handle >= 0 || error.value() != EEXIST) break;
        }
        if (handle >= 0) return;
        isBeside = false;
        const std::string folder = boost::filesystem::temp_directory_path(error).string();
        if (error) return;
        for (int i = 1; i <= maxTries; ++i) {
            name = folder + "/" + boost::filesystem::unique_path("deck-copy-%%%%%%%%%%%%%%%%").string();
            handle = fileSystem.Open(name, OpenMode::WriteNew, error);
            if (handle >= 0 || error.value() != EEXIST) break;
        }
    }

    void Remove() const
    {
        ErrorCode ignored;
        FileSystem::Instance().Unlink(name, ignored);
    }

    static constexpr int maxTries = 1000;
    std::string name;
    int handle = -1;
    bool isBeside = true;
};

Contents ContentsOf(const std::string& path)
{
    return [path](int handle) {
        ErrorCode error;
        return FileSystem::Instance().CopyBytes(path, handle, error);
    };
}

/// Writes contents over a file as it lies there, and puts its old text back when that fails. If even that fails, the
/// copy of the old text stays.
bool OverwriteInPlace(const std::string& path, const Contents& contents)
{
    FileSystem& fileSystem = FileSystem::Instance();
    ErrorCode error;
    const ScratchFile backup(path);
    if (backup.handle < 0) return false;
    if (!WriteAndClose(backup.handle, ContentsOf(path), true)) {
        backup.Remove();
        return false;
    }
    const int handle = fileSystem.Open(path, OpenMode::WriteTruncate, error);
    const bool done = handle >= 0 && WriteAndClose(handle, contents, true);
    bool intact = done || handle < 0;
    if (!intact) {
        const int again = fileSystem.Open(path, OpenMode::WriteTruncate, error);
        intact = again >= 0 && WriteAndClose(again, ContentsOf(backup.name), true);
    }
    if (intact) backup.Remove();
    return done;
}

/// Puts contents in the place of what the file at path holds, all or nothing.
bool ReplaceContents(const std::string& path, const FileStatus& status, const Contents& contents)
{
    FileSystem& fileSystem = FileSystem::Instance();
    ErrorCode error;
    const ScratchFile scratch(path);
    if (scratch.handle < 0) return false;
    bool done = WriteAndClose(scratch.handle, contents, true);
    if (done && scratch.isBeside) {
        fileSystem.CopyModeAndOwner(status, scratch.name, error);
        if (fileSystem.Rename(scratch.name, path, error)) {
            const std::size_t slash = path.rfind('/');
            fileSystem.SyncDirectory(slash == std::string::npos ? "." : path.substr(0, slash + 1), error);
            return true;
        }
    }
    if (done) done = OverwriteInPlace(path, ContentsOf(scratch.name));
    scratch.Remove();
    return done;
}

/// Hands on the rest of stream; false when reading or writing fails.
bool WriteStream(std::istream& stream, int handle)
{
    constexpr std::size_t chunkSize = 65536;
    const auto chunk = std::make_unique_for_overwrite<char[]>(chunkSize);
    ErrorCode error;
    while (stream.good()) {
        stream.read(chunk.get(), chunkSize);
        const auto count = static_cast<std::size_t>(stream.gcount());
        if (!FileSystem::Instance().WriteAll(handle, chunk.get(), count, error)) return false;
    }
    return stream.eof() && !stream.bad();
}

/// Writes behind the end of a file, and cuts it back to its old length when that fails.
bool AppendContents(const std::string& path, const Contents& contents)
{
    FileSystem& fileSystem = FileSystem::Instance();
    ErrorCode error;
    const bool existed = FileStatus::Of(path).Exists();
    const int handle = fileSystem.Open(path, OpenMode::WriteAppend, error);
    if (handle < 0) return false;
    const std::int64_t oldSize = fileSystem.Seek(handle, 0, true, error);
    const bool written = oldSize >= 0 && contents(handle);
    if (!written && oldSize >= 0) fileSystem.Truncate(handle, oldSize, error);
    const bool done = fileSystem.Close(handle, error) && written;
    if (written && !done) {
        // The failure has come out at the close, when the handle was gone already.
        const int again = fileSystem.Open(path, OpenMode::WriteExisting, error);
        if (again >= 0) {
            fileSystem.Truncate(again, oldSize, error);
            fileSystem.Close(again, error);
        }
    }
    if (!done && !existed) fileSystem.Unlink(path, error);
    return done;
}

} // namespace

bool FileUtils::FileNameLess::operator()(std::string_view left, std::string_view right) const
{
    return FileName::IsCaseSensitive() ? left < right : NoCaseStringLess(left, right);
}

bool FileUtils::Copy(const FileName& from, const FileName& to, bool replace)
{
    FileSystem& fileSystem = FileSystem::Instance();
    const FileStatus source = FileStatus::Of(from);
    const FileStatus target = FileStatus::Of(to);
    if (!source.IsRegularFile() || !to.IsSet()) return false;
    if (source.IsSameFileAs(target)) return true;
    const Contents contents = ContentsOf(from.GetFullName());
    if (!target.Exists()) {
        if (!WriteNew(to.GetFullName(), contents)) return false;
        ErrorCode ignored; // a file system without modes has the text all the same
        fileSystem.SetMode(to.GetFullName(), source.mode, ignored);
        return true;
    }
    return replace && target.IsRegularFile() && ReplaceContents(to.CanonicalName(), target, contents);
}

bool FileUtils::Copy(std::istream& stream, const FileName& to, bool append, bool replace)
{
    if (!to.IsSet() || stream.fail()) return false;
    const FileStatus target = FileStatus::Of(to);
    if (target.Exists() && !target.IsRegularFile()) return false;
    const Contents contents = [&stream](int handle) { return WriteStream(stream, handle); };
    if (append) return AppendContents(to.GetFullName(), contents);
    if (!target.Exists()) return WriteNew(to.GetFullName(), contents);
    return replace && ReplaceContents(to.CanonicalName(), target, contents);
}

bool FileUtils::Remove(const FileName& file)
{
    FileSystem& fileSystem = FileSystem::Instance();
    ErrorCode error;
    const FileStatus status = fileSystem.Status(file.GetFullName(), false, error);
    if (!error && (!status.Exists() || status.IsDirectory())) return false;
    if (!error && fileSystem.Unlink(file.GetFullName(), error)) return true;
    throw boost::filesystem::filesystem_error("Removing a file failed", file.GetFullName(), error);
}

void FileUtils::Rename(const FileName& from, const FileName& to)
{
    ErrorCode error;
    if (FileSystem::Instance().Rename(from.GetFullName(), to.GetFullName(), error)) return;
    throw boost::filesystem::filesystem_error("Renaming a file failed", from.GetFullName(), to.GetFullName(), error);
}

FileName FileUtils::ConstructUniqueName(const FileName& name, const std::function<bool(const FileName&)>& isTaken)
{
    const auto isFree = [&](const FileName& candidate) {
        // A link that leads nowhere takes its name too.
        ErrorCode error;
        const FileStatus status = FileSystem::Instance().Status(candidate.GetFullName(), false, error);
        return !status.Exists() && !(isTaken && isTaken(candidate));
    };
    const std::string root = name.GetRootName();
    const std::string extension = name.GetExtension();
    FileName candidate = name;
    for (int i = 1; !isFree(candidate); ++i) {
        candidate.SetFileName(root + "_" + std::to_string(i) + (extension.empty() ? "" : "." + extension));
    }
    return candidate;
}

bool FileUtils::IsAscii(const FileName& file, std::int64_t count)
{
    FileInputStream stream(file.GetFullName());
    if (!stream) return false;
    std::array<char, 4096> chunk;
    while (count > 0 && stream) {
        stream.read(chunk.data(), std::min<std::int64_t>(count, chunk.size()));
        if (stream.bad()) return false;
        const std::string_view text(chunk.data(), static_cast<std::size_t>(stream.gcount()));
        const auto isControl = [](char c) {
            const auto byte = static_cast<unsigned char>(c);
            return (byte < 0x20 && !IsSpace(c)) || byte == 0x7f;
        };
        if (std::any_of(text.begin(), text.end(), isControl)) return false;
        count -= stream.gcount();
    }
    return true;
}

std::string FileUtils::EscapeExpression(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        if (std::string_view("\\^$.|?*+()[]{}/").find(c) != std::string_view::npos) escaped += '\\';
        escaped += c;
    }
    return escaped;
}

} // namespace Tarn::Fjel::Core::Service

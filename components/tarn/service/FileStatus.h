#pragma once

#include <tarn/service/Time.h>

#include <cstdint>
#include <string>

namespace Tarn::Fjel::Core::Service {

class FileName;

/// What the file system knows of one file, by one query.
struct FileStatus
{
    enum class Kind
    {
        Missing,
        RegularFile,
        Directory,
        Link,
        Other
    };

    Kind kind = Kind::Missing;
    std::int64_t size = -1;                ///< bytes; -1 when missing
    std::int64_t modifiedMilliseconds = 0; ///< since 1 January 1970 UTC, whole milliseconds, rounded down
    std::int64_t modifiedNanoseconds = 0;  ///< the same, as exact as the file system keeps it
    std::int64_t changedNanoseconds = 0;   ///< when something of the file or of its status last changed; nobody sets it
    std::uint64_t inode = 0;
    std::uint64_t device = 0;
    std::uint32_t mode = 0; ///< permission bits only
    std::uint32_t owner = 0;
    std::uint32_t group = 0;
    bool isUnknown =
        false; ///< the system gave no answer (no permission on a folder, say); the rest is that of a missing file

    bool Exists() const { return kind != Kind::Missing; }
    bool IsRegularFile() const { return kind == Kind::RegularFile; }
    bool IsDirectory() const { return kind == Kind::Directory; }
    /// Time of the last change; undefined when missing.
    Time TimeLastModified() const { return Exists() ? Time::FromMilliseconds(modifiedMilliseconds) : Time(); }
    /// The two are one file on disk.
    bool IsSameFileAs(const FileStatus& other) const
    {
        return Exists() && other.Exists() && inode == other.inode && device == other.device;
    }

    /// The status of the file at path, links followed. A file that can't be asked (no permission on its folder) counts
    /// as missing. Throws nothing.
    static FileStatus Of(const std::string& path);
    static FileStatus Of(const FileName& file);
};

} // namespace Tarn::Fjel::Core::Service

#pragma once

#include <tarn/service/Directory.h>
#include <tarn/service/Time.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::Service {

/// The name of a file, which needs not exist: a folder, whose operations are those of Directory (so IsComplete,
/// MakeComplete, Create and the like speak of the folder), and a leaf.
class FileName : public Directory
{
public:
    FileName() = default;
    /// What stands behind the last separator is the leaf. Throws boost::filesystem::filesystem_error for text that
    /// can't be a path: a byte 0 in it, or longer than a path or one of its parts may be.
    explicit FileName(std::string_view name);
    /// A file in folder; name may hold further folders, and a complete name stands for itself.
    FileName(const Directory& folder, std::string_view name);
    ~FileName() override;

    FileName(const FileName& other) = default;
    FileName(FileName&& other) noexcept = default;
    FileName& operator=(const FileName& other);
    FileName& operator=(FileName&& other) noexcept;
    /// Changes the folder and keeps the leaf.
    FileName& operator=(const Directory& folder);

    /// The folder; not set for a bare leaf.
    const Directory& GetDirectory() const { return *this; }

    /// Folder and leaf, in normal form; empty when nothing is set.
    const std::string& GetFullName() const { return m_fullName; }
    /// The leaf.
    const std::string& GetFileName() const { return m_leaf; }
    /// The leaf without its extension.
    std::string GetRootName() const;
    /// What stands behind the last dot of the leaf, without the dot; empty when there is none, or when the dot is the
    /// leaf's first character.
    std::string GetExtension() const;
    /// A bare leaf changes the leaf, a name with a folder changes both. Throws as the constructor does.
    void SetFileName(std::string_view name);
    /// Replaces the extension, or adds one; an empty one takes it away. The dot isn't part of it.
    void SetExtension(std::string_view extension);

    /// There is a leaf.
    bool IsSet() const { return !m_leaf.empty(); }
    /// A regular file stands there, links followed.
    bool IsFile() const;
    /// Anything stands there, links followed.
    bool FileExists() const;
    /// Something stands there, and this process may read it.
    bool FileAccessibleAndExists() const;
    /// Bytes; -1 when there is no such file.
    std::int64_t FileLength() const;
    /// Undefined when there is no such file.
    Time TimeLastModified() const;

    /// The name with all links resolved, those that lead to nothing too; what doesn't exist is kept behind that. Two
    /// names are one file exactly when these are equal, so it serves as a key.
    std::string CanonicalName() const;

    /// Renames from to to, also across file systems (by a copy, which is removed again if it can't be completed).
    /// Throws boost::filesystem::filesystem_error.
    static void Rename(const FileName& from, const FileName& to);
    /// Whether names that differ in case are different files on this platform.
    static bool IsCaseSensitive();

    /// The same file: equal full names (no system call), or names that lead to the same place.
    friend bool operator==(const FileName& left, const FileName& right) { return left.IsSameFile(right); }
    /// Lexical order of the full names, that of FileUtils::FileNameLess.
    friend bool operator<(const FileName& left, const FileName& right);

protected:
    void NameChanged() override;

private:
    bool IsSameFile(const FileName& other) const;

    std::string m_leaf;
    std::string m_fullName;
};

} // namespace Tarn::Fjel::Core::Service

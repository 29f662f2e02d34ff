#pragma once

#include <tarn/service/FileName.h>

#include <string>
#include <string_view>

namespace TestSupport {

/// A fresh directory that is removed, with all in it, at the end of the scope.
class TempDir
{
public:
    TempDir();
    ~TempDir();

    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    /// The complete name, links resolved, without a separator at its end.
    const std::string& Path() const { return m_path; }
    /// The complete name of what lies at a relative path in it; makes nothing.
    std::string Path(std::string_view relativePath) const;
    Tarn::Fjel::Core::Service::Directory Dir() const { return Tarn::Fjel::Core::Service::Directory(m_path); }
    Tarn::Fjel::Core::Service::FileName File(std::string_view relativePath) const;

    /// Writes a file byte for byte, with the folders above it, and returns its complete name.
    std::string Write(std::string_view relativePath, std::string_view text) const;
    /// The bytes of a file; a file that can't be read throws std::runtime_error.
    std::string Read(std::string_view relativePath) const;
    bool Exists(std::string_view relativePath) const;
    /// Relative paths of all that is there, files and directories (these with "/" at their end), sorted.
    std::string Listing() const;

private:
    std::string m_path;
};

/// The current directory of the process is another one until the end of the scope.
class CurrentDirectoryGuard
{
public:
    explicit CurrentDirectoryGuard(const std::string& path);
    ~CurrentDirectoryGuard();

    CurrentDirectoryGuard(const CurrentDirectoryGuard&) = delete;
    CurrentDirectoryGuard& operator=(const CurrentDirectoryGuard&) = delete;

private:
    std::string m_previous;
};

} // namespace TestSupport

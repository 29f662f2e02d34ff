// What Directory does to the disk, and how it lists it.

#include <tarn/service/Directory.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/FileSystem.h>
#include <tarn/service/FileUtils.h>
#include <tarn/service/Strings.h>

#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/exception.hpp>
#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <functional>
#include <regex>

namespace Tarn::Fjel::Core::Service {

namespace {

using ErrorCode = FileSystem::ErrorCode;

[[noreturn]] void ThrowCopyFailed(const std::string& from, const std::string& to, const ErrorCode& error)
{
    throw boost::filesystem::filesystem_error("Copying failed", from, to, error);
}

std::string Join(const std::string& directory, const std::string& leaf)
{
    return directory.ends_with('/') ? directory + leaf : directory + "/" + leaf;
}

/// The leaves of a directory. Read in full before anything is done with them, so that changes don't upset the listing.
std::vector<std::string> ListLeaves(const std::string& path, ErrorCode& error)
{
    std::vector<std::string> leaves;
    error.clear();
    boost::filesystem::directory_iterator entry(path, error);
    while (!error && entry != boost::filesystem::directory_iterator()) {
        leaves.push_back(entry->path().filename().string());
        entry.increment(error);
    }
    return leaves;
}

bool RemoveTree(const std::string& path)
{
    FileSystem& fileSystem = FileSystem::Instance();
    ErrorCode error;
    const FileStatus status = fileSystem.Status(path, false, error);
    if (error) return false;
    if (!status.Exists()) return true;
    if (!status.IsDirectory()) return fileSystem.Unlink(path, error);
    bool done = true;
    for (const std::string& leaf : ListLeaves(path, error))
        done = RemoveTree(Join(path, leaf)) && done;
    return fileSystem.RemoveDirectory(path, error) && done;
}

void CopyTree(const std::string& from, const std::string& to);

void CopyEntry(const std::string& from, const std::string& to)
{
    FileSystem& fileSystem = FileSystem::Instance();
    ErrorCode error;
    const FileStatus status = fileSystem.Status(from, false, error);
    if (error) ThrowCopyFailed(from, to, error);
    const FileStatus present = fileSystem.Status(to, false, error);
    if (present.Exists() && !(present.IsDirectory() && status.IsDirectory()) && !RemoveTree(to)) {
        ThrowCopyFailed(from, to, boost::system::errc::make_error_code(boost::system::errc::file_exists));
    }

    switch (status.kind) {
    case FileStatus::Kind::Directory:
        CopyTree(from, to);
        break;
    case FileStatus::Kind::Link: {
        const std::string target = boost::filesystem::read_symlink(from, error).string();
        if (error || !fileSystem.MakeLink(target, to, error)) ThrowCopyFailed(from, to, error);
        break;
    }
    case FileStatus::Kind::RegularFile: {
        const int handle = fileSystem.Open(to, FileSystem::OpenMode::WriteNew, error);
        if (handle < 0) ThrowCopyFailed(from, to, error);
        const bool copied = fileSystem.CopyBytes(from, handle, error);
        ErrorCode closeError;
        if (!fileSystem.Close(handle, closeError) && copied) error = closeError;
        if (error || !fileSystem.CopyModeAndOwner(status, to, error)) ThrowCopyFailed(from, to, error);
        break;
    }
    case FileStatus::Kind::Missing:
    case FileStatus::Kind::Other:
        ThrowCopyFailed(from, to, boost::system::errc::make_error_code(boost::system::errc::not_supported));
    }
    if (!fileSystem.SetTimeLastModified(to, status.modifiedNanoseconds, error)) ThrowCopyFailed(from, to, error);
}

/// Copies what is in a directory. Mode and time come last: a directory that may not be written to could not be filled,
/// and filling it changes its time.
void CopyTree(const std::string& from, const std::string& to)
{
    FileSystem& fileSystem = FileSystem::Instance();
    ErrorCode error;
    const FileStatus status = fileSystem.Status(from, true, error);
    if (error || !status.IsDirectory()) {
        if (!error) error = boost::system::errc::make_error_code(boost::system::errc::not_a_directory);
        ThrowCopyFailed(from, to, error);
    }
    if (!fileSystem.MakeDirectory(to, error)) ThrowCopyFailed(from, to, error);
    const std::vector<std::string> leaves = ListLeaves(from, error);
    if (error) ThrowCopyFailed(from, to, error);
    for (const std::string& leaf : leaves)
        CopyEntry(Join(from, leaf), Join(to, leaf));
    if (!fileSystem.CopyModeAndOwner(status, to, error)) ThrowCopyFailed(from, to, error);
    if (!fileSystem.SetTimeLastModified(to, status.modifiedNanoseconds, error)) ThrowCopyFailed(from, to, error);
}

/// Does text match a pattern of `*` and `?`? Linear but for what the last `*` has to try again.
bool MatchesWildcards(std::string_view text, std::string_view pattern, bool caseSensitive)
{
    std::size_t t = 0;
    std::size_t p = 0;
    std::size_t star = std::string_view::npos;
    std::size_t starText = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            starText = t;
        } else if (p < pattern.size() &&
                   (pattern[p] == '?' || StringEqual(text.substr(t, 1), pattern.substr(p, 1), caseSensitive)))
        {
            ++t;
            ++p;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = ++starText;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

using LeafTest = std::function<bool(const std::string&)>;

/// An empty test matches all.
LeafTest MakeLeafTest(std::string_view pattern, bool isExpression)
{
    if (pattern.empty()) return {};
    const bool caseSensitive = FileName::IsCaseSensitive();
    if (!isExpression && pattern[0] != '^') {
        return [pattern = std::string(pattern), caseSensitive](const std::string& leaf) {
            return MatchesWildcards(leaf, pattern, caseSensitive);
        };
    }
    try {
        auto flags = std::regex::ECMAScript | std::regex::optimize;
        if (!caseSensitive) flags |= std::regex::icase;
        return [expression = std::regex(pattern.begin(), pattern.end(), flags)](const std::string& leaf) {
            try {
                return std::regex_match(leaf, expression);
            } catch (const std::regex_error&) {
                return false; // too complex to decide
            }
        };
    } catch (const std::regex_error&) {
        return [](const std::string&) { return false; };
    }
}

struct Listing
{
    LeafTest matches;
    bool directories;
    bool files;
    bool recursive;
    std::vector<std::string> names;

    void Add(const std::string& path)
    {
        ErrorCode error;
        boost::filesystem::directory_iterator entry(path, error);
        std::vector<std::string> below;
        for (; !error && entry != boost::filesystem::directory_iterator(); entry.increment(error)) {
            ErrorCode entryError;
            const auto type = entry->symlink_status(entryError).type();
            const bool isLink = type == boost::filesystem::symlink_file;
            const auto target = isLink ? entry->status(entryError).type() : type;
            const bool isDirectory = target == boost::filesystem::directory_file;
            const bool isFile = target == boost::filesystem::regular_file;
            const std::string leaf = entry->path().filename().string();
            if (((isDirectory && directories) || (isFile && files)) && (!matches || matches(leaf))) {
                names.push_back(Join(path, leaf));
            }
            if (recursive && isDirectory && !isLink) below.push_back(Join(path, leaf));
        }
        for (const std::string& directory : below)
            Add(directory);
    }
};

} // namespace

bool Directory::Create() const
{
    FileSystem& fileSystem = FileSystem::Instance();
    ErrorCode error;
    std::vector<std::string> missing;
    for (Directory level = *this; level.IsSet() && !level.Exists(); level = level.Parent()) {
        missing.push_back(level.m_name);
    }
    while (!missing.empty()) {
        if (!fileSystem.MakeDirectory(missing.back(), error)) return false;
        missing.pop_back();
    }
    return IsDirectory();
}

bool Directory::Delete() const
{
    // Neither a root nor "." or ".." is anyone's to remove.
    const std::string leaf = LeafName();
    if (leaf.empty() || leaf == "." || leaf == "..") return false;
    return RemoveTree(m_name);
}

bool Directory::DeleteContent(std::string_view pattern, bool filesOnly) const
{
    if (!IsSet()) return false;
    FileSystem& fileSystem = FileSystem::Instance();
    const LeafTest matches = MakeLeafTest(pattern, false);
    ErrorCode error;
    const std::vector<std::string> leaves = ListLeaves(m_name, error);
    bool done = !error;
    for (const std::string& leaf : leaves) {
        const std::string path = Join(m_name, leaf);
        if (matches && !matches(leaf)) continue;
        if (filesOnly && fileSystem.Status(path, false, error).IsDirectory()) continue;
        done = RemoveTree(path) && done;
    }
    return done;
}

void Directory::CopyTo(const Directory& target) const
{
    const Directory canonicalTarget(target.CanonicalName());
    const Directory canonicalSource(CanonicalName());
    if (!IsSet() || !target.IsSet() || canonicalTarget.IsDescendantOf(canonicalSource)) {
        ThrowCopyFailed(m_name, target.m_name,
                        boost::system::errc::make_error_code(boost::system::errc::invalid_argument));
    }
    if (canonicalTarget.m_name == canonicalSource.m_name) return;
    target.Parent().Create();
    CopyTree(m_name, target.m_name);
}

std::vector<std::string> Directory::Find(std::string_view pattern, bool usePattern, bool isExpression, bool directories,
                                         bool files, bool recursive) const
{
    Directory complete = *this;
    if (!IsSet() || !complete.MakeComplete(Current())) return {};
    Listing listing{usePattern ? MakeLeafTest(pattern, isExpression) : LeafTest(), directories, files, recursive, {}};
    listing.Add(complete.m_name);
    std::sort(listing.names.begin(), listing.names.end(), FileUtils::FileNameLess());
    return std::move(listing.names);
}

std::vector<std::string> Directory::FindFilesByExpression(std::string_view expression) const
{
    return Find(expression, true, true, false, true, false);
}

std::vector<std::string> Directory::FindSubdirectories() const
{
    return Find({}, false, true, true, false, false);
}

std::vector<std::string> Directory::FindFilesBelow() const
{
    return Find({}, false, true, false, true, true);
}

std::vector<std::string> Directory::FindFilesByPattern(std::string_view pattern) const
{
    return Find(pattern, true, false, false, true, false);
}

} // namespace Tarn::Fjel::Core::Service

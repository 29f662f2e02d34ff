#include <tarn/service/FileName.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/FileSystem.h>
#include <tarn/service/FileUtils.h>
#include <tarn/service/Strings.h>

#include <boost/filesystem/exception.hpp>

#include <cerrno>
#include <utility>

namespace Tarn::Fjel::Core::Service {

namespace {

/// Where the leaf begins; text.size() when there is none.
std::size_t LeafBegin(std::string_view text)
{
    if (text.size() == 2 && IsAlpha(text[0]) && text[1] == ':') return 2;
    const std::size_t separator = text.find_last_of("/\\");
    const std::size_t begin = separator == std::string_view::npos ? 0 : separator + 1;
    const std::string_view leaf = text.substr(begin);
    return leaf == "." || leaf == ".." || AllBlanks(text) ? text.size() : begin;
}

std::size_t ExtensionDot(const std::string& leaf)
{
    const std::size_t dot = leaf.rfind('.');
    return dot == 0 || dot == std::string::npos ? leaf.size() : dot;
}

} // namespace

FileName::FileName(std::string_view name)
{
    CheckPath(name);
    const std::size_t leafBegin = LeafBegin(name);
    m_leaf = name.substr(leafBegin);
    Assign(name.substr(0, leafBegin));
}

FileName::FileName(const Directory& folder, std::string_view name) : FileName(name)
{
    if (IsComplete()) return;
    Directory joined = folder;
    joined.Append(*this);
    Directory::operator=(std::move(joined));
}

FileName::~FileName() = default;

FileName& FileName::operator=(const FileName& other)
{
    m_name = other.m_name;
    m_unfolded = other.m_unfolded;
    m_leaf = other.m_leaf;
    m_fullName = other.m_fullName;
    return *this;
}

FileName& FileName::operator=(FileName&& other) noexcept
{
    m_name = std::move(other.m_name);
    m_unfolded = std::move(other.m_unfolded);
    m_leaf = std::move(other.m_leaf);
    m_fullName = std::move(other.m_fullName);
    return *this;
}

FileName& FileName::operator=(const Directory& folder)
{
    Directory::operator=(folder);
    return *this;
}

void FileName::NameChanged()
{
    if (m_leaf.empty()) {
        m_fullName = m_name;
        return;
    }
    m_fullName.clear();
    if (!m_name.empty() && m_name != ".") {
        m_fullName.reserve(m_name.size() + 1 + m_leaf.size());
        m_fullName = m_name;
        if (m_fullName.back() != '/') m_fullName += '/';
    }
    m_fullName += m_leaf;
}

std::string FileName::GetRootName() const
{
    return m_leaf.substr(0, ExtensionDot(m_leaf));
}

std::string FileName::GetExtension() const
{
    const std::size_t dot = ExtensionDot(m_leaf);
    return dot == m_leaf.size() ? std::string() : m_leaf.substr(dot + 1);
}

void FileName::SetFileName(std::string_view name)
{
    FileName parsed(name);
    if (parsed.Directory::IsSet()) {
        *this = std::move(parsed);
    } else {
        m_leaf = std::move(parsed.m_leaf);
        NameChanged();
    }
}

void FileName::SetExtension(std::string_view extension)
{
    if (m_leaf.empty()) return;
    if (extension.starts_with('.')) extension.remove_prefix(1);
    std::string leaf = GetRootName();
    if (!extension.empty()) leaf.append(".").append(extension);
    m_leaf = std::move(leaf);
    NameChanged();
}

bool FileName::IsFile() const
{
    return FileStatus::Of(m_fullName).IsRegularFile();
}

bool FileName::FileExists() const
{
    return FileStatus::Of(m_fullName).Exists();
}

bool FileName::FileAccessibleAndExists() const
{
    return !m_fullName.empty() && FileSystem::Instance().CanAccess(m_fullName, false);
}

std::int64_t FileName::FileLength() const
{
    return FileStatus::Of(m_fullName).size;
}

Time FileName::TimeLastModified() const
{
    return FileStatus::Of(m_fullName).TimeLastModified();
}

std::string FileName::CanonicalName() const
{
    // A file is asked for its links as a directory is.
    if (m_fullName.empty()) return {};
    Directory whole;
    whole.m_name = m_fullName;
    if (!m_unfolded.empty()) whole.m_unfolded = m_unfolded + "/" + m_leaf;
    return whole.CanonicalName();
}

void FileName::Rename(const FileName& from, const FileName& to)
{
    FileSystem& fileSystem = FileSystem::Instance();
    FileSystem::ErrorCode error;
    if (fileSystem.Rename(from.m_fullName, to.m_fullName, error)) return;
    if (error.value() == EXDEV && from.IsFile() && FileUtils::Copy(from, to, true)) {
        if (fileSystem.Unlink(from.m_fullName, error)) return;
    }
    throw boost::filesystem::filesystem_error("Renaming a file failed", from.m_fullName, to.m_fullName, error);
}

bool FileName::IsCaseSensitive()
{
#if defined(_WIN32)
    return false;
#else
    return true;
#endif
}

bool operator<(const FileName& left, const FileName& right)
{
    return FileUtils::FileNameLess()(left, right);
}

bool FileName::IsSameFile(const FileName& other) const
{
    if (StringEqual(m_fullName, other.m_fullName, IsCaseSensitive())) return true;
    if (m_fullName.empty() || other.m_fullName.empty()) return false;
    const FileStatus status = FileStatus::Of(m_fullName);
    const FileStatus otherStatus = FileStatus::Of(other.m_fullName);
    // Two hard links to one file have the same status, and yet are two files to whoever replaces one of them.
    if (status.Exists() != otherStatus.Exists()) return false;
    if (status.Exists() && !status.IsSameFileAs(otherStatus)) return false;
    return CanonicalName() == other.CanonicalName();
}

} // namespace Tarn::Fjel::Core::Service

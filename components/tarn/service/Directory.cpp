#include <tarn/service/Directory.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/FileSystem.h>
#include <tarn/service/Strings.h>

#include <boost/filesystem/exception.hpp>
#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <utility>

namespace Tarn::Fjel::Core::Service {

namespace {

constexpr std::size_t maxPathSize = 4095;
constexpr std::size_t maxPartSize = 255;

constexpr bool IsSeparator(char c)
{
    return c == '/' || c == '\\';
}

/// The number of characters that name the root: of "C:", "C:\" or "/"; 0 for a relative text.
std::size_t RootSize(std::string_view text)
{
    if (text.size() >= 2 && IsAlpha(text[0]) && text[1] == ':') {
        if (text.size() == 2) return 2;
        return IsSeparator(text[2]) ? 3 : 0;
    }
    return !text.empty() && IsSeparator(text[0]) ? 1 : 0;
}

bool HasDrive(std::string_view name)
{
    return RootSize(name) >= 2;
}

[[noreturn]] void ThrowInvalid(std::string_view text, boost::system::errc::errc_t reason)
{
    throw boost::filesystem::filesystem_error("Invalid path", boost::filesystem::path(std::string(text)),
                                              boost::system::errc::make_error_code(reason));
}

bool IsLink(const std::string& path)
{
    FileSystem::ErrorCode ignored;
    return FileSystem::Instance().Status(path, false, ignored).kind == FileStatus::Kind::Link;
}

bool EndsWithDotDot(std::string_view name)
{
    return name == ".." || name.ends_with("/..");
}

struct NormalForm
{
    std::string name;
    bool folded = false; ///< a part ahead of a ".." was dropped
};

NormalForm Normalise(std::string_view text)
{
    NormalForm result;
    if (AllBlanks(text)) return result;
    std::string& name = result.name;
    name.reserve(text.size() + 1);
    const std::size_t rootSize = RootSize(text);
    if (rootSize >= 2) name = {ToUpper(text[0]), ':'};
    if (rootSize > 0) name += '/';
    const std::size_t nameRootSize = name.size();

    for (std::size_t begin = rootSize; begin < text.size();) {
        std::size_t end = begin;
        while (end < text.size() && !IsSeparator(text[end]))
            ++end;
        const std::string_view part = text.substr(begin, end - begin);
        begin = end + 1;
        if (part.empty() || part == ".") continue;
        if (part == "..") {
            if (name.size() == nameRootSize && nameRootSize > 0) continue;
            const bool canDrop = name.size() > nameRootSize && !EndsWithDotDot(name);
            if (canDrop && !(rootSize == 1 && IsLink(name))) {
                const std::size_t slash = name.rfind('/');
                name.erase(slash == std::string::npos || slash < nameRootSize ? nameRootSize : slash);
                result.folded = true;
                continue;
            }
        }
        if (name.size() > nameRootSize) name += '/';
        name.append(part);
    }
    if (name.empty()) name = ".";
    return result;
}

std::vector<std::string_view> SplitParts(std::string_view name)
{
    std::vector<std::string_view> parts;
    if (name == ".") return parts;
    for (std::size_t begin = 0; begin < name.size();) {
        const std::size_t end = std::min(name.find('/', begin), name.size());
        parts.push_back(name.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

/// The place that a link leads to, whether or not something stands there; empty for what is no link.
std::string TargetOf(const std::string& completeName)
{
    boost::system::error_code error;
    const std::string target = boost::filesystem::read_symlink(completeName, error).string();
    if (error || target.empty() || target.front() == '/') return target;
    return completeName.substr(0, completeName.rfind('/') + 1) + target;
}

/// A complete name with its links resolved, those that lead to nothing too.
std::string Canonical(const std::string& completeName)
{
    if (HasDrive(completeName)) return completeName;
    constexpr int mostLinks = 40;
    std::string existing = completeName;
    std::string rest;
    for (int links = 0;;) {
        const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(existing.c_str(), nullptr), &std::free);
        if (resolved) {
            const std::string head = resolved.get();
            if (rest.empty()) return head;
            return head == "/" ? rest : head + rest;
        }
        if (std::string target = TargetOf(existing); !target.empty() && ++links <= mostLinks) {
            existing = std::move(target);
            continue;
        }
        const std::size_t slash = existing.rfind('/');
        if (slash == std::string::npos || existing.size() == 1 || links > mostLinks) return completeName;
        rest.insert(0, existing, slash, std::string::npos);
        existing.erase(slash == 0 ? 1 : slash);
    }
}

} // namespace

Directory::Directory(std::string_view name)
{
    Assign(name);
}

Directory::~Directory() = default;

Directory& Directory::operator=(const Directory& other)
{
    if (this != &other) {
        m_name = other.m_name;
        m_unfolded = other.m_unfolded;
        NameChanged();
    }
    return *this;
}

Directory& Directory::operator=(Directory&& other)
{
    if (this != &other) {
        m_name = std::move(other.m_name);
        m_unfolded = std::move(other.m_unfolded);
        NameChanged();
    }
    return *this;
}

void Directory::CheckPath(std::string_view text)
{
    if (text.find('\0') != std::string_view::npos) ThrowInvalid(text, boost::system::errc::invalid_argument);
    bool isTooLong = text.size() > maxPathSize;
    for (std::size_t begin = 0; begin < text.size() && !isTooLong;) {
        const std::size_t end = std::min(text.find_first_of("/\\", begin), text.size());
        isTooLong = end - begin > maxPartSize;
        begin = end + 1;
    }
    if (isTooLong) ThrowInvalid(text, boost::system::errc::filename_too_long);
}

void Directory::Assign(std::string_view text)
{
    CheckPath(text);
    NormalForm normal = Normalise(text);
    m_unfolded.clear();
    if (normal.folded && RootSize(text) == 0) m_unfolded = text;
    m_name = std::move(normal.name);
    NameChanged();
}

Directory Directory::Current()
{
    boost::system::error_code error;
    const boost::filesystem::path path = boost::filesystem::current_path(error);
    return error ? Directory() : Directory(path.string());
}

std::string Directory::RootName() const
{
    return HasDrive(m_name) ? m_name.substr(0, 2) : std::string();
}

std::string Directory::LeafName() const
{
    const std::size_t rootSize = RootSize(m_name);
    const std::size_t slash = m_name.rfind('/');
    return m_name.substr(slash == std::string::npos ? rootSize : slash + 1);
}

Directory Directory::Parent() const
{
    const std::size_t rootSize = RootSize(m_name);
    Directory parent;
    if (m_name.size() <= rootSize) return parent;
    if (m_name == ".") {
        parent.m_name = "..";
        return parent;
    }
    if (EndsWithDotDot(m_name)) {
        parent.m_name = m_name + "/..";
        return parent;
    }
    const std::size_t slash = m_name.rfind('/');
    if (slash != std::string::npos) parent.m_name = m_name.substr(0, std::max(slash, rootSize));
    return parent;
}

Directory& Directory::Append(std::string_view name)
{
    name.remove_prefix(RootSize(name));
    if (AllBlanks(name)) return *this;
    if (!IsSet()) {
        Assign(name);
    } else {
        std::string text = UnfoldedName();
        text += '/';
        Assign(text.append(name));
    }
    return *this;
}

Directory& Directory::Append(const Directory& directory)
{
    return Append(std::string_view(std::string(directory.UnfoldedName())));
}

bool Directory::IsComplete() const
{
    return RootSize(m_name) > 0;
}

bool Directory::IsRelativePath() const
{
    return IsSet() && !IsComplete();
}

bool Directory::Exists() const
{
    return FileStatus::Of(m_name).Exists();
}

bool Directory::IsDirectory() const
{
    return FileStatus::Of(m_name).IsDirectory();
}

bool Directory::MakeComplete(const Directory& base)
{
    if (IsComplete()) return true;
    if (!base.IsSet()) return false;
    std::string text = base.m_name;
    if (!base.IsComplete()) {
        Directory completeBase = base;
        if (!completeBase.MakeComplete(Current())) return false;
        text = completeBase.m_name;
    }
    const bool needsFolding = !m_unfolded.empty() || m_name.starts_with('.');
    if (!IsSet()) {
        m_name = std::move(text);
        NameChanged();
        return true;
    }
    if (text.back() != '/') text += '/';
    text += UnfoldedName();
    if (needsFolding || text.size() > maxPathSize) {
        Assign(text);
    } else {
        m_name = std::move(text);
        NameChanged();
    }
    return true;
}

bool Directory::RelativePathFrom(const Directory& base, Directory& out) const
{
    const std::size_t rootSize = RootSize(m_name);
    if (!IsSet() || !base.IsSet() || rootSize != RootSize(base.m_name)) return false;
    if (RootName() != base.RootName()) return false;

    const std::vector<std::string_view> parts = SplitParts(std::string_view(m_name).substr(rootSize));
    const std::vector<std::string_view> baseParts = SplitParts(std::string_view(base.m_name).substr(rootSize));
    std::size_t common = 0;
    while (common < parts.size() && common < baseParts.size() &&
           StringEqual(parts[common], baseParts[common], FileName::IsCaseSensitive()))
    {
        ++common;
    }
    std::string way;
    for (std::size_t i = common; i < baseParts.size(); ++i) {
        if (baseParts[i] == "..") return false;
        way += "../";
    }
    for (std::size_t i = common; i < parts.size(); ++i)
        way.append(parts[i]).append("/");
    if (way.empty()) way = "./";
    way.pop_back();

    Directory result;
    result.m_name = std::move(way);
    out = std::move(result);
    return true;
}

bool Directory::IsDescendantOf(const Directory& directory) const
{
    if (!IsSet() || !directory.IsSet()) return false;
    const std::string_view name = m_name;
    const std::string_view outer = directory.m_name;
    if (outer == ".") return !IsComplete() && name != "." && name != ".." && !name.starts_with("../");
    if (name.size() <= outer.size()) return false;
    if (!StringEqual(name.substr(0, outer.size()), outer, FileName::IsCaseSensitive())) return false;
    if (outer.back() != '/' && name[outer.size()] != '/') return false;
    // "../.." is above "..", though it begins with it.
    const std::string_view rest = name.substr(outer.size() + (outer.back() == '/' ? 0 : 1));
    return rest != ".." && !rest.starts_with("../");
}

std::string Directory::CanonicalName() const
{
    if (!IsSet()) return {};
    if (IsComplete()) return Canonical(m_name);
    Directory complete = *this;
    return complete.MakeComplete(Current()) ? Canonical(complete.m_name) : m_name;
}

bool Directory::IsSameDirectory(const Directory& other) const
{
    if (StringEqual(m_name, other.m_name, FileName::IsCaseSensitive())) return true;
    if (!IsSet() || !other.IsSet()) return false;
    const FileStatus status = FileStatus::Of(m_name);
    const FileStatus otherStatus = FileStatus::Of(other.m_name);
    if (status.Exists() || otherStatus.Exists()) return status.IsSameFileAs(otherStatus);
    return CanonicalName() == other.CanonicalName();
}

} // namespace Tarn::Fjel::Core::Service

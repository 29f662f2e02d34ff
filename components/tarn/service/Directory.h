#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Tarn::Fjel::Core::Service {

/// The name of a directory, which needs not exist. `/` and `\` separate on every platform, and a drive (`C:\`) makes a
/// name complete on every platform. Names are kept in normal form: `/` between the parts, none at the end, no doubled
/// ones, drives in capitals, no "." but for the directory itself, ".." only where nothing ahead of it can be dropped
/// (behind a symbolic link nothing can).
///
/// All operations are lexical but Exists, IsDirectory, the comparison, and those that change or list the disk.
class Directory
{
public:
    /// Not set.
    Directory() = default;
    /// Blank text is not set. Throws boost::filesystem::filesystem_error for text that can't be a path: a byte 0 in it,
    /// or longer than a path or one of its parts may be.
    explicit Directory(std::string_view name);
    virtual ~Directory();

    Directory(const Directory& other) = default;
    Directory(Directory&& other) noexcept = default;
    Directory& operator=(const Directory& other);
    Directory& operator=(Directory&& other);

    /// The current directory of the process, complete.
    static Directory Current();

    /// The name in normal form; empty when not set.
    const std::string& Name() const { return m_name; }
    /// The volume, as "C:"; empty where there is none.
    std::string RootName() const;
    /// The last part of the name; empty for a root.
    std::string LeafName() const;
    /// The directory around this one; not set for a root and for a relative name of one part.
    Directory Parent() const;
    /// Adds the parts of name, which is always taken as relative.
    Directory& Append(std::string_view name);
    Directory& Append(const Directory& directory);

    bool IsSet() const { return !m_name.empty(); }
    /// Begins at a root or at a drive.
    bool IsComplete() const;
    /// Set, and not complete.
    bool IsRelativePath() const;
    /// Something exists under this name, links followed.
    bool Exists() const;
    bool IsDirectory() const;

    /// An incomplete (or not set) name becomes relative to base; a relative base counts from the current directory.
    /// Returns whether the name is complete afterwards: false only when base isn't set. Throws as the constructor does
    /// when the result is too long for a path.
    bool MakeComplete(const Directory& base);
    /// Sets out to the way from base to this directory ("." when they are the same). False, with out unchanged, when
    /// there is none: other volumes, one complete and the other not, a ".." in the way.
    bool RelativePathFrom(const Directory& base, Directory& out) const;
    /// Lies below directory, at any depth; false for the same directory.
    bool IsDescendantOf(const Directory& directory) const;

    /// Makes the directory with all above it. True if it exists as a directory afterwards; false when not set.
    bool Create() const;
    /// Removes the directory with all in it; links are removed, not followed. True if nothing stands there afterwards.
    /// A root, "." and ".." are left alone, with the result false.
    bool Delete() const;
    /// Removes what is in the directory: entries whose leaf matches pattern (`*`, `?`; an empty one matches all), with
    /// filesOnly only those that are no directories. Links are removed, not followed. False if something was left.
    bool DeleteContent(std::string_view pattern = {}, bool filesOnly = false) const;
    /// Copies all in this directory into target, which is made; times, modes and, where the process may, owners are
    /// kept, links copied as links. What
    /// exists in target under the same name is replaced. Throws boost::filesystem::filesystem_error when anything
    /// can't be copied, or when target lies in this directory.
    void CopyTo(const Directory& target) const;

    /// What is in this directory, as complete names in the order of FileUtils::FileNameLess.
    /// - usePattern: only leaves that match pattern; an empty pattern matches all.
    /// - isExpression: pattern is a regular expression; otherwise it holds `*` and `?`, unless it begins with `^`,
    ///   which makes it an expression too. An expression matches the whole leaf. A broken one matches nothing.
    /// - directories, files: the kinds to list; a link counts as what it names.
    /// - recursive: what is below too, at any depth, without following links to directories.
    /// A directory that can't be read, or isn't there, is empty.
    std::vector<std::string> Find(std::string_view pattern, bool usePattern, bool isExpression, bool directories,
                                  bool files, bool recursive) const;
    /// Files whose leaf matches the regular expression.
    std::vector<std::string> FindFilesByExpression(std::string_view expression) const;
    /// The directories in this one.
    std::vector<std::string> FindSubdirectories() const;
    /// All files in and below this directory.
    std::vector<std::string> FindFilesBelow() const;
    /// Files whose leaf matches the pattern.
    std::vector<std::string> FindFilesByPattern(std::string_view pattern) const;

    /// The name with all links resolved, those that lead to nothing too; what doesn't exist is kept behind that. Two
    /// names are one directory exactly when these are equal.
    std::string CanonicalName() const;

    /// The same directory: equal names, or names that lead to the same place.
    friend bool operator==(const Directory& left, const Directory& right) { return left.IsSameDirectory(right); }

protected:
    /// Called after every change of the name.
    virtual void NameChanged() {}

private:
    friend class FileName;

    /// Throws where the constructor does.
    static void CheckPath(std::string_view text);
    void Assign(std::string_view text);
    bool IsSameDirectory(const Directory& other) const;
    /// The name as it was before ".." was folded; equal to the name if nothing was.
    const std::string& UnfoldedName() const { return m_unfolded.empty() ? m_name : m_unfolded; }

    std::string m_name;
    /// Kept for relative names only, whose ".." can't be judged until it is known where they begin.
    std::string m_unfolded;
};

} // namespace Tarn::Fjel::Core::Service

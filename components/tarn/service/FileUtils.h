#pragma once

#include <tarn/service/FileName.h>

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::Service {

/// Operations on whole files.
class FileUtils
{
public:
    /// The order of file names as texts, by the platform's regard for case; a comparison object for maps and sets of
    /// texts or FileNames.
    struct FileNameLess
    {
        using is_transparent = void;
        bool operator()(std::string_view left, std::string_view right) const;
        bool operator()(const FileName& left, const FileName& right) const
        {
            return (*this)(left.GetFullName(), right.GetFullName());
        }
    };

    /// Copies a file. With replace false an existing target is left alone, and the result is false. A copy onto the
    /// same file does nothing and succeeds. A new target gets the mode of from; one that exists keeps its own, and
    /// when the copy fails, its text too: it is written beside and put in place when it is whole, and where the file
    /// system refuses that, the old text is kept until the new one is there. A link is written through. Throws nothing.
    static bool Copy(const FileName& from, const FileName& to, bool replace);
    /// Writes the rest of stream into a file: with append behind what the file holds (replace then plays no part),
    /// otherwise in its place; with replace false an existing file is left alone and the result is false. False also
    /// when reading or writing fails; the file then is as it was before.
    static bool Copy(std::istream& stream, const FileName& to, bool append, bool replace);

    /// Removes a file or a link, and tells whether it did: false when nothing stands there, or a directory. Throws
    /// boost::filesystem::filesystem_error when it can't.
    static bool Remove(const FileName& file);
    /// Puts from in the place of to, in one step. Throws boost::filesystem::filesystem_error.
    static void Rename(const FileName& from, const FileName& to);

    /// The name, if it is free; else the first of root_1, root_2, ... with its extension that is. Free is what exists
    /// nowhere on disk and isn't taken by isTaken, where that is given.
    static FileName ConstructUniqueName(const FileName& name, const std::function<bool(const FileName&)>& isTaken = {});

    /// Whether the first count bytes of the file are text: no control bytes but white space. Bytes above 127 are text.
    /// True for an empty file, false for one that can't be read.
    static bool IsAscii(const FileName& file, std::int64_t count);

    /// text with a backslash ahead of each character that means something in a regular expression.
    static std::string EscapeExpression(std::string_view text);
};

} // namespace Tarn::Fjel::Core::Service

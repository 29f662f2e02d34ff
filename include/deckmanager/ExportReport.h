#pragma once

#include <string>
#include <vector>

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;

/// What an export did, or would do.
struct ExportReport
{
    enum class Action
    {
        Written,
        Kept,   ///< something stands there already, and stays
        Missing ///< a keyword names a file that isn't there
    };

    struct File
    {
        Action action;
        std::string from;                  ///< full name; empty for a keyword that names none
        std::string to;                    ///< full name; empty for `Missing`
        const IKeyword* keyword = nullptr; ///< of `Missing`: who names the file; good as long as it stands in its list
    };

    /// A keyword that is not what it was.
    struct Change
    {
        const IKeyword* keyword; ///< good as long as it stands in its list
        std::string text;        ///< its new text, "\n" between lines; empty for one that is left out
    };

    std::vector<File> files;     ///< in the order in which they were come to
    std::vector<Change> changes; ///< only for an export that is planned
    /// Why the export failed, where a message alone doesn't say it. For the user.
    std::string failure;
};

} // namespace Tarn::Fjel::Core::DeckManager

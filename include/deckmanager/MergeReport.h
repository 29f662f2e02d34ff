#pragma once

#include <string>
#include <vector>

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;

/// What a merge did, in the order of the source.
struct MergeReport
{
    enum class Action
    {
        Carried,    ///< a user's keyword was put into the target; of an END or ENDINC: the notes behind it
        Replaced,   ///< the same, and the generated keyword that it stands for went
        Suppressed, ///< a generated keyword is suppressed, as it is in the source
        Cut,        ///< a user's keyword whose data ended at a generated tag; it is `Carried` or `Replaced` too
        Refused,    ///< a user's keyword that could not be carried
        Lost,       ///< text that no keyword owns, behind a generated keyword: it is not carried
        Commented,  ///< a comment was put to a keyword of the target, or to the end of a file
        Missing     ///< a user's INCLUDE whose file isn't found from the target; it is `Carried` or `Replaced` too
    };

    struct Entry
    {
        Action action;
        std::string name;
        const IKeyword* source; ///< the source keyword; good as long as the source deck isn't read anew
        int sourceLine;         ///< from 1; of `Lost`: of the text
        std::string targetFile; ///< full name of the file of the target; empty for none
        /// The line of that file, as it stands on the disk, at which the keyword went in, or stood; 0: the file's end,
        /// or nowhere.
        int targetLine;
        std::string text; ///< of `Missing`: the file that the source found; of `Lost`: the word
    };

    std::vector<Entry> entries;
};

} // namespace Tarn::Fjel::Core::DeckManager

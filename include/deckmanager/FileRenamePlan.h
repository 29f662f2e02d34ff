#pragma once

#include <map>
#include <string>
#include <vector>

#include <tarn/service/FileName.h>

namespace Tarn::Fjel::Core::DeckManager {

class IDeckKeywordsEditor;
class IKeyword;

/// What `IDeckKeywordsEditor::ApplyFileRenames` would do: for a host that shows it, or asks, before it is done.
struct FileRenamePlan
{
    /// A file that gets another name. A grid file that doesn't exist may be among them.
    struct Move
    {
        Service::FileName from;
        Service::FileName to;
    };

    /// A keyword that gets another data text, as `IDeckKeywords::GetDataText` gives it.
    struct Change
    {
        const IKeyword* keyword; ///< not owned
        std::string before;
        std::string after;
    };

    std::vector<Move> moves;     ///< each file once
    std::vector<Change> changes; ///< in the order of the files, INCLUDE keywords ahead of others

    /// Changes nothing. Empty without a current deck. Throws `DeckManagerException` where the renames can be known to
    /// fail: two files would get one name, a new name is that of a file of the deck or a directory or can't be held by
    /// the keyword that names the file, a file is closed to edits.
    static FileRenamePlan Of(IDeckKeywordsEditor& editor, const std::map<Service::FileName, Service::FileName>& names,
                             bool generatedOnly);
};

} // namespace Tarn::Fjel::Core::DeckManager

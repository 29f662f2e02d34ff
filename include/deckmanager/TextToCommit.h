#pragma once

#include <string>
#include <vector>

namespace Tarn::Fjel::Core::DeckManager {

class IKeywordFile;

/// The text of one file as a commit would write it: for a host that shows what it is about to do.
struct TextToCommit
{
    std::string text; ///< all of it, with the line ends that it will have
    /// The 1-based line of each keyword's own line in the text, in the order of the file's list; -1 for one that will
    /// be no keyword any more.
    std::vector<int> lines;

    /// Changes nothing, and writes nothing but a temporary file where the system keeps such. Throws
    /// `DeckManagerException` when a file that the text is made from can't be read, or there is no room for the text.
    static TextToCommit Of(const IKeywordFile& file);
};

} // namespace Tarn::Fjel::Core::DeckManager

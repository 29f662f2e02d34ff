#pragma once

#include <string>
#include <vector>

#include <deckmanager/ExportOptions.h>
#include <deckmanager/ExportReport.h>
#include <tarn/keywords/SimulatorType.h>

namespace Tarn::Fjel::Core::DeckManager {

class IDeckKeywords;
class IKeywordFile;
class KeywordFileIterator;
class KeywordIterator;

/// Writes keywords out of their deck: into one flat file, or as a copy of the deck's files.
///
/// What nobody changed is copied as it stands, uncommitted changes are written, and the deck itself stays as it is. No
/// export writes over a file of the deck, whatever that is called. Files are written beside their targets and take
/// their places when all are whole: an export that fails leaves what was there, and tells why at severity 3.
///
/// All operations throw `DeckManagerException` when a file of the deck can't be read, or isn't what it was when it was
/// loaded.
class Exporter
{
public:
    Exporter() = delete;

    /// Writes the keywords from `Begin` to `End` into one file in the folder of the deck's top file; a folder in `name`
    /// plays no part. In the place of each INCLUDE stands what it includes. Of a file's header only what counts as data
    /// is written. False for a blank name, and when the file can't be written.
    static bool ExportToSingleFile(const IDeckKeywords& keywords, const std::string& name);

    /// The same for the keywords from `begin` to `end`, with `name` as it is. A range in one file leaves out what its
    /// INCLUDE keywords bring in. An end that the walk doesn't come to is the end of the deck, or of the file.
    static bool ExportToSingleFile(const IDeckKeywords& keywords, const KeywordFileIterator& begin,
                                   const KeywordFileIterator& end, const std::string& name,
                                   Keywords::SimulatorType simulator);
    static bool ExportToSingleFile(const IDeckKeywords& keywords, const KeywordIterator& begin,
                                   const KeywordIterator& end, const std::string& name,
                                   Keywords::SimulatorType simulator);

    /// The same with all that belongs to the keywords: the headers of the files and what stands behind their keywords,
    /// each in its place, and the comments on INCLUDE keywords. An INCLUDE that brings nothing in stays. What stands
    /// behind an ENDINC of an included file becomes comments. `report` may be null.
    static bool ExportToSingleFile(const IDeckKeywords& keywords, const KeywordIterator& begin,
                                   const KeywordIterator& end, const std::string& name, const ExportOptions& options,
                                   ExportReport* report);

    /// The first form, into a file beside the top file, with `suffix` ahead of the last dot of its full name. The full
    /// name; empty when the file can't be written.
    static std::string ExportToSingleFileSuffix(const IDeckKeywords& keywords, const std::string& suffix);

    /// Copies each file of the deck beside itself, with `suffix` ahead of the last dot of its full name, and of the
    /// names in INCLUDE keywords. Only keywords are copied, and of a header what counts as data. The full name of the
    /// new top file; empty when that can't be written. A further file that can't be opened for writing goes into
    /// `failed`, and its INCLUDE is left out.
    static std::string CopyToSameDir(const IDeckKeywords& keywords, const std::string& suffix,
                                     std::vector<std::string>& failed);

    /// The same with all that the files hold, `suffix` ahead of the last dot of the leaf, and INCLUDE keywords that
    /// bring nothing in as they are. All files or none. `report` may be null.
    static std::string CopyToSameDir(const IDeckKeywords& keywords, const std::string& suffix,
                                     const ExportOptions& options, ExportReport* report);

    /// Copies the deck's files into a directory, side by side, with their names in the keywords changed to that; files
    /// of one leaf name get a number. Grid files come along, but replace none that is there. `fileName` names the new
    /// top file; blank for its own name. False for an incomplete directory and that of the deck's top file. `report`
    /// may be null.
    static bool CopyToDirectory(const IDeckKeywords& keywords, const std::string& directory,
                                const std::string& fileName, const ExportOptions& options, ExportReport* report);

private:
    static std::string CopyFile(const IDeckKeywords& keywords, const IKeywordFile& file, const std::string& suffix,
                                std::vector<std::string>& failed);
    static std::string InsertSuffix(const std::string& name, const std::string& suffix);
};

} // namespace Tarn::Fjel::Core::DeckManager

#pragma once

#include <memory>
#include <set>
#include <string>

#include <deckmanager/KeywordFileIterator.h>
#include <deckmanager/KeywordIterator.h>
#include <tarn/keywords/SectionType.h>
#include <tarn/keywords/SimulatorType.h>
#include <tarn/service/FileName.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
}

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;
class IKeywordFile;
class ILineReader;
class KeywordVariables;

/// The read view of one deck: the whole tree of keyword files under one root file, walked in deck order, with its
/// sections, scopes and ends.
///
/// A `KeywordIterator` that comes back as a reference lasts until the next change of a file of the deck.
class IDeckKeywords
{
public:
    /// The deck's first keyword.
    virtual KeywordIterator Begin() const = 0;

    /// The first END keyword, else the end of the walk.
    virtual const KeywordIterator& LogicalEnd() const = 0;

    /// `LogicalEnd` or `PhysicalEnd`, as `Environment::DeckTerminatedByENDKeyword` says.
    virtual const KeywordIterator& End() const = 0;

    /// The end of the walk.
    virtual KeywordIterator PhysicalEnd() const = 0;

    /// The keyword of a section; `End` when the deck lacks the section. REQUIRES: one of the nine sections.
    virtual const KeywordIterator& SectionBegin(Keywords::SectionType section) const = 0;

    /// The next section keyword of the deck behind the section's own, whatever its section; `End` when there is none or
    /// the deck lacks the section. REQUIRES: one of the nine sections.
    virtual const KeywordIterator& SectionEnd(Keywords::SectionType section) const = 0;

    /// The section in force at a position; `None` ahead of the first section keyword.
    virtual Keywords::SectionType SectionOf(const KeywordIterator& position) const = 0;

    /// The position of that very object between `Begin` and `End`; `End` when it is not there.
    virtual KeywordIterator FindKeyword(const IKeyword* keyword) const = 0;

    /// The place of a position in the file that holds its keyword.
    virtual KeywordFileIterator GetFileIterator(const KeywordIterator& position) const = 0;

    /// The place of a keyword in its file; `End` of the root file when it stands nowhere in the deck.
    virtual KeywordFileIterator GetFileIterator(const IKeyword* keyword) const = 0;

    /// The first keyword from `first` up to `last` with that name and the identity of `data` (null: any). `last` when
    /// there is none.
    virtual KeywordIterator FindKeywordById(const std::string& name, const Keywords::IKeywordData* data,
                                            const KeywordIterator& first, const KeywordIterator& last,
                                            bool generatedOnly) const = 0;

    /// The same, searched backwards from `last` (excluded) to `first` (included). `last` when there is none.
    virtual KeywordIterator FindLastKeywordById(const std::string& name, const Keywords::IKeywordData* data,
                                                const KeywordIterator& first, const KeywordIterator& last,
                                                bool generatedOnly) const = 0;

    /// The keyword's typed data, read and parsed at the first call; owned by the keyword. Null for a keyword without
    /// data. Throws `DeckManagerException` when a size that the data need cannot be told, and when the file cannot be
    /// read (unless incomplete decks are allowed); a later call reads again.
    virtual Keywords::IKeywordData* GetKeywordData(const IKeyword* keyword) const = 0;

    /// The keyword's data as text, without the keyword line; null for a keyword without data. Throws as
    /// `GetKeywordData` when the file cannot be read.
    virtual std::shared_ptr<std::string> GetDataText(const IKeyword* keyword) const = 0;

    /// The keyword's whole text (`IKeyword::GetText`).
    virtual std::shared_ptr<std::string> GetRawText(const IKeyword* keyword) const = 0;

    /// The text of a keyword's data lines from where the reader stands, through the last terminated line that ends at
    /// or ahead of `limit`, a position of the reader; through the first line where none is terminated. Blank and
    /// comment lines between the data lines are kept, suppress markers at line heads and blanks at the end are not.
    /// `tagSeen`, which may be null, tells whether a line bears the keyword tag; with `stopAtTag` the text ends ahead
    /// of that line. The reader is left behind the data, and where it stood when there are none.
    virtual std::string ReadDataText(ILineReader& reader, long long limit, bool* tagSeen, bool stopAtTag) const = 0;

    /// The comment lines between the keyword at a position and the data of the keyword that stands ahead of it on the
    /// disk, read from the file at each call: with their markers, each ending in a line feed. Blank lines ahead of the
    /// first comment line are left out, later ones are kept empty; generated tags and text that is no comment are left
    /// out. With `stripHeader` the block that encloses the header of the file goes too.
    ///
    /// Empty for a keyword that stands in no file, and, with a warning, where the file cannot be read.
    virtual std::string GetComment(const KeywordIterator& position, bool stripHeader) const = 0;

    /// The file that holds a position.
    virtual IKeywordFile* GetFileOf(const KeywordFileIterator& position) const = 0;

    /// The root file; not owned by the caller.
    virtual IKeywordFile* GetDataFile() const = 0;

    /// All files of the tree. The set orders by pointer, so its order says nothing about the deck.
    virtual std::set<IKeywordFile*> GetFiles() const = 0;

    /// The grid file that the deck's GDFILE, else its ORDGRID names; not set when nothing fits.
    virtual Service::FileName GetGridFile() const = 0;

    /// The first GDFILE, else the first ORDGRID, searched behind the deck's logical end too; else `PhysicalEnd`.
    virtual KeywordIterator FindGridKeyword() const = 0;

    /// The file that an INCLUDE keyword names; null for any other keyword and when there is no such file.
    virtual IKeywordFile* GetIncludedFile(const IKeyword* keyword) const = 0;

    /// The INCLUDE keyword that brings a file into the deck; null for the root file and for files of other decks.
    virtual IKeyword* GetIncludingKeyword(IKeywordFile* file) const = 0;

    /// Where the scope that a scope head opens is closed: at its closing keyword, the next section keyword, a scope
    /// head that closes it, or `PhysicalEnd`.
    virtual KeywordIterator GetScopeEnd(const KeywordIterator& position, bool generatedOnly) const = 0;

    /// The head and the end of the innermost scope around a position. REQUIRES: a position behind `Begin`.
    virtual void GetEnclosingScope(const KeywordIterator& position, KeywordIterator& head,
                                   KeywordIterator& end) const = 0;

    /// Copies the deck's files into a directory, side by side, and changes the names in the keywords to that; grid
    /// files come along, but replace none that is there. `fileName` names the new top file; blank for its own name.
    /// Keywords that the simulator doesn't know are left out. `forceRewrite`: keywords are written from their data, and
    /// not copied. False for an incomplete directory and that of the deck's top file, and, told at severity 3, when a
    /// file can't be written: then nothing is. Throws `DeckManagerException` when a file of the deck can't be read.
    virtual bool ExportToDirectory(const std::string& directory, const std::string& fileName,
                                   Keywords::SimulatorType simulator, bool forceRewrite) const = 0;

    /// The same under the top file's own name.
    virtual bool ExportToDirectory(const std::string& directory, Keywords::SimulatorType simulator,
                                   bool forceRewrite) const = 0;

    /// The keywords of the deck may hold references to variables.
    virtual bool AllowsVariables() const = 0;
    virtual bool HasVariables(const IKeyword* keyword) const = 0;

    /// The variable references of a keyword, owned by it; null when it has none.
    virtual KeywordVariables* GetVariables(const IKeyword* keyword) const = 0;

    /// False, with a message that names them, when section keywords occur more than once.
    virtual bool CheckSections(std::string& message) const = 0;

    virtual ~IDeckKeywords() = default;
};

} // namespace Tarn::Fjel::Core::DeckManager

#pragma once

#include <iosfwd>
#include <map>
#include <memory>
#include <set>
#include <string>

#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordSyntax;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::Service {
class FileName;
}

namespace Tarn::Fjel::Core::DeckManager {

class IDeck;
class IKeyword;
class IKeywordFile;
class IKeywordVariablesResolver;
class KeywordFileIterator;
class KeywordIterator;
struct MergeReport;

/// The editor of a deck manager: the only road by which a host changes a deck. It works on one current deck at a time.
///
/// Edits are made in memory until `Commit`. A refusal is a result of false or null and nothing else. Every edit is
/// refused without a current deck, at a place without a file, in a file that is read-only or could not be read, and
/// inside a region that is skipped. An operation with a `KeywordIterator` converts it with
/// `IDeckKeywords::GetFileIterator` and does what its twin does.
///
/// Positions stay good while other keywords come and go. A keyword lives as long as it stands in the deck.
class IDeckKeywordsEditor
{
public:
    /// The current deck; null when there is none.
    virtual IDeck* GetDeck() const = 0;

    /// Drops uncommitted changes; then the editor has no deck.
    virtual void Close() = 0;

    /// Drops the uncommitted changes of the current deck.
    virtual void Discard() = 0;

    /// Brings the changes to the disk, all or none: each new text is written beside its file, and when all are whole,
    /// all take their places. Keywords that were commented out are none any more. Throws `DeckManagerException`, with
    /// every edit still there, when a file has changed on the disk since it was read and when files can't be written;
    /// they are named. It can be tried again then, or discarded. A file whose new text can't take its place is named
    /// with the file in which that is kept.
    virtual void Commit() = 0;

    /// Writes the changes of one file into a text beside it, and lets the data of its keywords go: for a host that
    /// makes more than the memory holds. The file itself changes with the next `Commit`, which goes on behind that
    /// text, unless what it holds has been changed since. A file that exchanges keywords with others waits for that.
    /// Throws as `Commit` does.
    virtual void CommitFile(IKeywordFile* file) = 0;

    /// Puts the current deck on the file of that name. False when the file cannot be used; throws
    /// `DeckManagerException` when `managed` is asked for, and with `checkDataFiles` when a file of the tree is
    /// missing.
    virtual bool ImportDeck(const std::string& fileName, bool managed, bool checkDataFiles) = 0;

    /// The keyword of a section; one that is missing is made straight ahead of the next section that the deck has, or
    /// at its end. `existed` (may be null) tells which. Null when it can't be made.
    virtual IKeyword* GetOrCreateSection(Keywords::SectionType section, bool* existed) = 0;

    /// A new keyword ahead of `position`, with those data; null: with none. The name may be empty: the syntax's own.
    /// Null when the data are another keyword's or hold what can't be written, and when the keyword can't bear the
    /// name. The data are taken in all cases.
    virtual IKeyword* InsertKeyword(const Keywords::IKeywordSyntax& syntax, const KeywordFileIterator& position,
                                    std::unique_ptr<Keywords::IKeywordData> data, const std::string& name) = 0;
    virtual IKeyword* InsertKeyword(const Keywords::IKeywordSyntax& syntax, const KeywordIterator& position,
                                    std::unique_ptr<Keywords::IKeywordData> data, const std::string& name) = 0;

    /// A new keyword ahead of `position` from the text of a whole keyword, with its generated tag where the text bears
    /// one. A text without a keyword line is the data of a keyword of the syntax's name. Null, told at severity 3, when
    /// the text holds a further keyword, or data for a keyword that has none.
    virtual IKeyword* InsertKeywordText(const Keywords::IKeywordSyntax& syntax, const KeywordFileIterator& position,
                                        const std::string& text) = 0;
    virtual IKeyword* InsertKeywordText(const Keywords::IKeywordSyntax& syntax, const KeywordIterator& position,
                                        const std::string& text) = 0;

    /// Moves a keyword ahead of another place, in another file too; it stays the same object. False when it stands
    /// there already, when the place is in no file of the deck, and for an INCLUDE that would close a ring of files.
    virtual bool MoveKeyword(const KeywordIterator& from, const KeywordIterator& to) = 0;
    virtual bool MoveKeyword(const KeywordFileIterator& from, const KeywordFileIterator& to) = 0;

    /// Removes the keywords from `first` up to `last`, those of included files too. An INCLUDE goes when nothing is
    /// left in its file. True when something was removed. Nothing is when the walk from `first` never comes to `last`.
    virtual bool RemoveKeywords(const KeywordIterator& first, const KeywordIterator& last) = 0;
    virtual bool RemoveKeyword(const KeywordIterator& position) = 0;
    virtual bool RemoveKeyword(const KeywordFileIterator& position) = 0;

    /// Lets `resolver` replace the variable references of a keyword's data text. False where the deck allows no
    /// variables, and when the resolver declines; true for a keyword without references. What the resolver throws
    /// reaches the caller.
    virtual bool ResolveVariables(const KeywordIterator& position, IKeywordVariablesResolver& resolver) = 0;
    virtual bool ResolveVariables(const KeywordFileIterator& position, IKeywordVariablesResolver& resolver) = 0;

    /// Replaces the data by text, as it stands below the keyword line. False, told at severity 3, for a text with a
    /// further keyword in it, and for data of a keyword that has none.
    virtual bool SetDataText(const KeywordIterator& position, const std::string& text) = 0;
    virtual bool SetDataText(const KeywordFileIterator& position, const std::string& text) = 0;

    /// Replaces the data. False, told at severity 3, for those of another keyword and for a string with a line break.
    /// The data are taken in all cases.
    virtual bool SetData(const KeywordIterator& position, std::unique_ptr<Keywords::IKeywordData> data) = 0;
    virtual bool SetData(const KeywordFileIterator& position, std::unique_ptr<Keywords::IKeywordData> data) = 0;

    /// Replaces data and generated tag by those of a whole keyword's text. False when that has no keyword line or
    /// another name, and where `SetDataText` is.
    virtual bool SetKeywordText(const KeywordIterator& position, const std::string& text) = 0;
    virtual bool SetKeywordText(const KeywordFileIterator& position, const std::string& text) = 0;

    /// Replaces the comment between the keyword's line and its data; "\n" between lines, no markers.
    virtual bool SetComment(const KeywordIterator& position, const std::string& text) = 0;
    virtual bool SetComment(const KeywordFileIterator& position, const std::string& text) = 0;

    /// The next write puts the keyword behind the comment marker; then it is none any more.
    virtual bool CommentOut(const KeywordIterator& position) = 0;
    virtual bool CommentOut(const KeywordFileIterator& position) = 0;

    /// True also for a keyword that is suppressed already, or isn't.
    virtual bool Suppress(const KeywordIterator& position) = 0;
    virtual bool Suppress(const KeywordFileIterator& position) = 0;
    virtual bool Unsuppress(const KeywordIterator& position) = 0;
    virtual bool Unsuppress(const KeywordFileIterator& position) = 0;

    /// Puts a text above the first keyword, as comment lines between marks, ahead of the header that the file has and
    /// in the place of one that was set before. It outlives a `Discard`.
    virtual bool SetHeaderComment(IKeywordFile* file, const std::string& text) = 0;

    /// Replaces a file of the deck by the bytes of another, or of a stream from its beginning. The uncommitted changes
    /// of the deck are committed before, or discarded; a file that doesn't exist, or isn't of the deck, does nothing at
    /// all. `replace` false leaves a file alone that exists. `keepTag`: the file keeps its generated tag, whatever the
    /// new text bears. Throws `DeckManagerException` when the file can't be written, and as `Commit` does.
    virtual void OverwriteFileFromPath(IKeywordFile* file, const std::string& path, bool commitFirst, bool keepTag) = 0;
    virtual void OverwriteFile(IKeywordFile* file, std::istream& stream, bool replace, bool commitFirst,
                               bool keepTag) = 0;

    /// Gives files of the deck new leaf names, each in its own directory: those that INCLUDE, ORDGRID and GDFILE
    /// keywords name (with `generatedOnly`, generated ones alone), the grid files of a GDFILE without an extension, and
    /// the deck's top file. Only the leaves of `names` count. The files are renamed, the keywords name them so, and the
    /// deck is committed with all its uncommitted changes. A file that stands under a new name and is not the deck's is
    /// replaced. True when one of the names was found. Throws `DeckManagerException`, with everything as it was, when
    /// that can't be done, and as `Commit` does.
    virtual bool ApplyFileRenames(const std::map<Service::FileName, Service::FileName>& names, bool generatedOnly) = 0;

    /// Sets, or clears, the generated tag of each keyword that is new or whose data have changed.
    virtual void TagAllKeywords() = 0;
    virtual void UntagAllKeywords() = 0;
    virtual void TagKeyword(const IKeyword* keyword) = 0;
    virtual void UntagKeyword(const IKeyword* keyword) = 0;

    /// Moves the keywords of each section into the order that the rules of the syntax table want, as few as that takes;
    /// a TITLE goes straight behind RUNSPEC first, and SKIPREST to the head of SCHEDULE. Each file and each scope is
    /// sorted by itself. Keywords of a ring of rules stay where they are. Files that can't be edited are left alone; a
    /// warning tells of a file whose keywords could not all be moved.
    virtual void SortKeywords() = 0;

    /// Carries what a user has written in another deck of the manager into the current one, which its host has just
    /// made anew: each keyword without a generated tag, next to the generated keyword that it followed, with its data,
    /// its comments and its suppression; and the suppression of generated keywords. A generated keyword that a user's
    /// keyword stands for goes, and the position of the user's in the source is put into `replaced`. Files of the
    /// source with the name of one of `excluded`, whatever their folder, and those that both decks share, are passed
    /// over. `includeNames` gives the names that included files of the source have in the current deck, where they
    /// differ.
    ///
    /// True when all was carried whole; what was not is told at severity 3. False without a current deck. Files of the
    /// current deck that are read-only are changed too. Nothing is committed: when a merge throws, as it does when
    /// a file cannot be read, or its result doesn't suit, `Discard` takes it back. A second merge would put each
    /// keyword in once more. `report` may be null.
    virtual bool MergeUserKeywords(const IDeck& source, std::set<KeywordIterator>& replaced,
                                   const std::set<IKeywordFile*>& excluded,
                                   const std::map<std::string, std::string>& includeNames,
                                   MergeReport* report = nullptr) = 0;

    /// Carries the comments above generated keywords and section keywords, and those below generated keywords without
    /// data, unless the current deck has them. A comment whose keyword is gone goes to the next one that isn't.
    virtual void MergeComments(const IDeck& source, const std::set<IKeywordFile*>& excluded,
                               const std::map<std::string, std::string>& includeNames,
                               MergeReport* report = nullptr) = 0;

    /// The parsed data, taken out of the keyword: its next use reads them again. Null where there are none, and for
    /// null. An uncommitted change of the data goes with them; a keyword that stands in no file yet gives a copy.
    std::unique_ptr<Keywords::IKeywordData> GetAndResetData(const IKeyword* keyword);

    virtual ~IDeckKeywordsEditor() = default;

protected:
    virtual std::unique_ptr<Keywords::IKeywordData> TakeData(const IKeyword* keyword) = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager

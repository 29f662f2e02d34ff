#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <deckmanager/IKeyword.h>
#include <tarn/keywords/SectionType.h>
#include <tarn/keywords/SimulatorType.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordSyntax;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::Service {
class ReadWatch;
}

namespace Tarn::Fjel::Core::DeckManager {

class Context;
class ICommentManager;
class IKeywordOwner;
class ILineReader;
class ILineWriter;
class ITagMgr;
class KeywordFileReader;
class KeywordVariables;
struct KeywordElement;
struct ReadReport;
struct KeywordStretches;

/// What a scan learns of a keyword in passing, so that nothing has to seek back for it.
struct KeywordMarks
{
    int line = 0; ///< 1-based line of the keyword; 0: not known
    bool suppressed = false;
    bool tagKnown = false; ///< `tagged` holds; otherwise the tag manager reads the file when it is asked
    bool tagged = false;
};

/// A keyword carries three forms of its data: the extent in its file, the held text, and the parsed tree. Each is made
/// from another on demand, and the keyword knows which of them has become the truth.
///
/// A deck holds hundreds of thousands of keywords of which few are ever read: what only a read or an edit needs lies in
/// `State`, which is made then.
class Keyword : public IKeyword
{
public:
    ~Keyword() override;
    Keyword(const Keyword&) = delete;
    Keyword& operator=(const Keyword&) = delete;

    const std::string& GetName() const override;
    const Keywords::IKeywordSyntax* GetSyntax() const override { return m_syntax; }
    std::string GetComment() const override;
    bool IsGenerated() const override;
    bool IsInGeneratedFile() const override;
    IKeywordFile* GetFile() const override;
    KeywordFile* GetDiskFile() const override;
    int GetLine() const override;
    long long GetPosition() const override;
    bool IsCommentedOut() const override { return m_commentedOut; }
    bool IsSuppressed() const override { return m_suppressed; }
    std::shared_ptr<std::string> GetText() const override;
    long long GetSize() const override;

    /// Called before data or held text are replaced.
    virtual void OnDataChanging() {}
    /// Called after data or held text are replaced.
    virtual void OnDataChanged() {}
    /// Called when an uncommitted change is dropped.
    virtual void OnDataReverted() {}
    /// The tag manager, made on first use.
    virtual ITagMgr& GetTagMgr() const = 0;
    /// The tag manager exists already.
    virtual bool HasTagMgr() const = 0;

    /// The parsed tree, on demand; it stays until the data are replaced. Null for a keyword without data, and while the
    /// keyword is being read. Throws `DeckManagerException` when a size that the data need cannot be told.
    Keywords::IKeywordData* GetData(const Context& context);

    /// The same as a tree of the caller's, read afresh; the keyword keeps nothing of it. Uncommitted data that were set
    /// as a tree are copied. `variables` takes the references to variables; null for none.
    std::unique_ptr<Keywords::IKeywordData> ReadData(const Context& context, KeywordVariables* variables);

    /// One element of what `ReadData` would give, and how many there are; see `ReadKeywordElement`.
    std::optional<KeywordElement> ReadElement(int index, const Context& context, KeywordVariables* variables);

    /// The held text, on demand: the text behind the keyword line and its tag lines, trimmed at the right. Null for a
    /// keyword without data.
    std::shared_ptr<std::string> GetDataText();

    /// A data line holds a reference to a variable. False unless variables are allowed.
    bool HasVariables();
    KeywordVariables* GetVariables(const Context& context);

    /// The next write puts the whole keyword behind the comment marker.
    void CommentOut() { m_commentedOut = true; }
    void SetSuppressed(bool suppressed);
    /// Replaces the comment between the keyword's line and its data; "\n" between lines, no markers. Nothing happens
    /// where the keyword can have no comment, and where its changed text begins with one.
    void SetComment(const std::string& text);
    /// The text that the next commit writes ahead of the keyword. Unless it is a comment already, each line becomes
    /// one.
    void SetLeadingComment(const std::string& text, bool isComment);
    /// Puts more behind that text, or ahead of it; on lines of its own.
    void AddLeadingComment(const std::string& text, bool isComment, bool atEnd);
    std::string GetLeadingComment() const;
    /// What the user has put on the keyword's line, behind the name: text as it stands there, without the tag.
    std::string GetBesideName() const;
    /// Of that, what stands ahead of the tag. Empty for a keyword that stands in no file.
    std::string GetAheadOfTag() const;
    /// The same for a keyword that stands in no file yet.
    void SetBesideName(const std::string& text);
    /// What stands there in the text of a whole keyword of that name.
    static std::string BesideNameIn(const std::string& keywordText, const std::string& name);

    bool IsDirty() const;
    bool HasValidExtent() const { return m_reader && m_position >= 0 && m_size >= 1; }
    bool IsDataChanged() const { return m_dataChanged; }
    bool IsSuppressionChanged() const { return m_suppressed != m_committedSuppressed; }
    bool VariablesAllowed() const { return m_variablesAllowed; }

    /// Replaces the data; `data` is taken only where the result is true. False for null, for a keyword of a skipped
    /// region, and, told at severity 3, for a tree of another keyword's metadata and for a string with a line break in
    /// it. `notify`: `NotifyUpdated` follows.
    bool SetData(std::unique_ptr<Keywords::IKeywordData>&& data, bool notify);
    /// Replaces the data by text, as it stands below the keyword line. Blank text takes the text away that was set
    /// before. False for a keyword of a skipped region, and, told at severity 3, for data of a keyword that has none
    /// and for a text with a further keyword in it.
    bool SetDataText(const std::string& text, bool notify);
    /// The data that it has been given are those that it was made with: no change of its own. For a keyword without an
    /// extent.
    void CountAsMadeWithData() { m_dataChanged = false; }
    /// Takes the tree out of the keyword; null where `GetData` gives none. An uncommitted change of the data goes with
    /// it. A keyword that stands in no file keeps its data, and gives a copy.
    std::unique_ptr<Keywords::IKeywordData> GetAndResetData(const Context& context);

    /// Drops uncommitted changes.
    void Rollback();
    /// The keyword stands in a new text as it has been written: its changes are no changes any more, and what was read
    /// from its lines is read anew. With `dropData` its data are too. One that was commented out stands in no text.
    void Commit(const std::shared_ptr<KeywordFileReader>& reader, long long position, long long size, bool dropData);

    /// Tells the listeners of the file that the data of an INCLUDE keyword have changed.
    void NotifyUpdated();

    /// Writes the keyword as it is now, and the comment to be put ahead of it. What has not changed is copied; what
    /// stands in the extent behind the keyword's own text always is. The keyword itself stays as it is. Throws
    /// `DeckManagerException` when its text in the file can't be read.
    void Write(ILineWriter& writer, const Context& context, Keywords::SimulatorType simulator) const;
    /// The same with other data, given as text below the keyword line.
    void WriteWithText(ILineWriter& writer, const std::string& dataText, const Context& context) const;
    /// The two halves of both: the comment to be put ahead of the keyword, which is no part of its text, and the rest.
    /// `dataText` null: with its own data. `ownTextOnly`: without what stands in the extent behind the keyword's own
    /// text.
    void WriteLeadingComment(ILineWriter& writer) const;
    void WriteBehindComment(ILineWriter& writer, const std::string* dataText, const Context& context,
                            Keywords::SimulatorType simulator, bool ownTextOnly) const;
    /// Where that begins in the file, as the keyword would be written now. REQUIRES: a valid extent.
    long long RestBegin(const Context& context) const;
    /// What stands in the extent behind the keyword's own text, which is mostly the comment above the keyword below.
    /// For whoever leaves the keyword out.
    void WriteTrailingText(ILineWriter& writer, const Context& context) const;
    /// How many bytes of the extent stand ahead of that; 0 without an extent.
    long long OwnSize(const Context& context) const;
    /// What the text that is written for a keyword at the end of a file lacks when another keyword follows it: without
    /// that, this one would be read as data.
    std::string MissingEnd() const;
    /// `Write` copies the extent and does nothing else.
    bool IsWrittenAsItStands() const;
    /// A keyword of a skipped region: it has a place in the file and no text.
    bool IsSkipped() const { return m_reader && m_position >= 0 && m_size == 0; }

    IKeywordOwner* Owner() const { return m_owner; }
    void SetOwner(IKeywordOwner* owner);
    const std::shared_ptr<KeywordFileReader>& Reader() const { return m_reader; }
    long long Position() const { return m_position; }
    long long Size() const { return m_size; }
    /// The load learns where a keyword ends when it meets the next one.
    void SetSize(long long size) { m_size = size; }

    /// The section in force ahead of the keyword when its text was last known to be read as it; none for a keyword of
    /// which that was never known.
    std::optional<Keywords::SectionType> FoundIn() const;
    void SetFoundIn(std::optional<Keywords::SectionType> section);

    /// Whether the text on disk bears the keyword's tag: what the scan learnt, or a read of the file.
    bool ReadTag() const;

protected:
    /// `marks` null: the file is asked whether the keyword is suppressed. `name` blank, or the syntax's own: the
    /// syntax's name.
    Keyword(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed, IKeywordOwner* owner,
            std::shared_ptr<KeywordFileReader> reader, long long position, long long size, std::string_view name,
            const KeywordMarks* marks);

    /// `GetData`, and null where a file could not be read for it.
    Keywords::IKeywordData* DataUnlessUnreadable(const Context& context);

    /// The keyword has a new owner.
    virtual void OnOwnerChanged() {}

private:
    struct State;
    struct DataSource;

    State& GetState() const;
    ICommentManager& GetCommentManager() const;
    /// The keyword can have a comment between its line and its data.
    bool CanHaveComment() const;
    Keywords::IKeywordData* DataTree(const Context& context) const;
    std::unique_ptr<Keywords::IKeywordData> ParseData(const Context& context, KeywordVariables* variables) const;
    /// The data are an uncommitted tree, and stand in no text.
    bool TreeIsData() const;
    std::optional<KeywordElement> FindElement(int index, const Context& context) const;
    std::unique_ptr<ILineReader> OpenForData() const;
    void RefuseUnlessRead(const Service::ReadWatch& reading) const;
    std::string ReadDataText() const;
    std::string WriteDataText() const;
    /// The reader that a pass over the file keeps open, else one of its own; null when the file can't be opened.
    std::shared_ptr<ILineReader> BorrowReader() const;
    void DataReplaced(bool notify);
    /// Keeps what a read of the extent has told.
    void NoteTaken(const ReadReport& report) const;

    // How the keyword is written; see KeywordWriting.cpp.
    bool IsTagChanged() const;
    bool IsCommentChanged() const;
    bool KeepsLine(const DataSource& source, const KeywordStretches& stretches) const;
    bool IsBodyChanged() const;
    /// What is copied from the file loses its suppress markers.
    bool IsActivated() const { return m_committedSuppressed && !m_suppressed; }
    DataSource SourceOfData(const Context& context) const;
    bool TextOutlivesItsTree(const std::string& text, const Context& context) const;
    std::shared_ptr<ILineReader> ReaderToCopyFrom() const;
    [[noreturn]] void ThrowUnreadable() const;
    long long OwnEnd(const KeywordStretches& stretches, ILineReader& lines, const Context& context) const;
    long long TakenSize(ILineReader& file, const Context& context) const;
    void WriteMarked(ILineWriter& writer, const DataSource& source, const Context& context,
                     Keywords::SimulatorType simulator, long long* restBeginOut) const;
    void WriteBody(ILineWriter& writer, const DataSource& source, const KeywordStretches* stretches, ILineReader* lines,
                   long long ownEnd, const Context& context, Keywords::SimulatorType simulator) const;
    void WriteHead(ILineWriter& writer, const DataSource& source, const KeywordStretches* stretches, ILineReader* lines,
                   long long headEnd) const;
    std::string KeywordLine(const KeywordStretches* stretches) const;
    static std::string BesideName(const KeywordStretches& stretches, const std::string& name);
    static void SplitKeywordLine(const KeywordStretches& stretches, std::string& line, std::string& behindTag);
    void CopyStretch(ILineWriter& writer, ILineReader& lines, long long begin, long long end, bool activate) const;

    const Keywords::IKeywordSyntax* m_syntax;
    std::unique_ptr<std::string> m_givenName; ///< only where it differs from the syntax's name
    IKeywordOwner* m_owner;
    std::shared_ptr<KeywordFileReader> m_reader; ///< of the text that the extent refers to
    long long m_position;
    long long m_size;
    mutable std::unique_ptr<State> m_state;
    int m_line = 0; ///< of the position; 0: not known
    bool m_dataChanged : 1 = false;
    bool m_commentedOut : 1 = false;
    bool m_suppressed : 1 = false;
    bool m_committedSuppressed : 1 = false;
    bool m_suppressionChanged : 1 = false;
    bool m_leadingCommentChanged : 1 = false;
    bool m_variablesAllowed : 1;
    bool m_tagKnown : 1 = false;
    bool m_taggedOnDisk : 1 = false;
    static constexpr std::uint8_t s_neverFound = 15;
    std::uint8_t m_foundIn : 4 = s_neverFound; ///< a section
};

} // namespace Tarn::Fjel::Core::DeckManager

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <deckmanager/IKeyword.h>
#include <tarn/keywords/SimulatorType.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordSyntax;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

class Context;
class ICommentManager;
class IKeywordOwner;
class ILineReader;
class ILineWriter;
class ITagMgr;
class KeywordFileReader;
class KeywordVariables;

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

    bool IsDirty() const;
    bool HasValidExtent() const { return m_reader && m_position >= 0 && m_size >= 1; }
    bool IsDataChanged() const { return m_dataChanged; }
    bool VariablesAllowed() const { return m_variablesAllowed; }

    /// Drops uncommitted changes.
    void Rollback();

    /// Tells the listeners of the file that the data of an INCLUDE keyword have changed.
    void NotifyUpdated();

    /// Replaces the data; `data` is taken only where the result is true. False, told at severity 3, for a tree of
    /// another keyword's metadata and for a string with a line break in it. `notify`: `NotifyUpdated` follows.
    bool SetData(std::unique_ptr<Keywords::IKeywordData>&& data, bool notify);
    /// Replaces the data by text, as it stands below the keyword line. False, told at severity 3, for data of a keyword
    /// that has none and for a text with a further keyword in it.
    bool SetDataText(const std::string& text, bool notify);

    /// Writes the keyword as it is now: copied where nothing has changed. Throws `DeckManagerException` when its text
    /// in the file can't be read. The marks of the changes stay.
    void Write(ILineWriter& writer, const Context& context, Keywords::SimulatorType simulator) const;
    /// The same with other data, given as text below the keyword line. The keyword stays as it is.
    void WriteWithText(ILineWriter& writer, const std::string& dataText, const Context& context) const;
    /// What stands in the keyword's extent behind its own text: the block above the keyword below. For whoever leaves
    /// the keyword out.
    void WriteTrailingText(ILineWriter& writer, const Context& context) const;
    /// `Write` copies the extent, byte for byte, and does nothing else.
    bool IsWrittenAsItStands() const;

    IKeywordOwner* Owner() const { return m_owner; }
    void SetOwner(IKeywordOwner* owner);
    const std::shared_ptr<KeywordFileReader>& Reader() const { return m_reader; }
    long long Position() const { return m_position; }
    long long Size() const { return m_size; }
    /// The load learns where a keyword ends when it meets the next one.
    void SetSize(long long size) { m_size = size; }

    /// Whether the text on disk bears the keyword's tag: what the scan learnt, or a read of the file.
    bool ReadTag() const;

protected:
    /// `marks` null: the file is asked whether the keyword is suppressed. `name` blank, or the syntax's own: the
    /// syntax's name.
    Keyword(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed, IKeywordOwner* owner,
            std::shared_ptr<KeywordFileReader> reader, long long position, long long size, std::string_view name,
            const KeywordMarks* marks);

    /// The keyword has a new owner.
    virtual void OnOwnerChanged() {}

private:
    struct State;

    State& GetState() const;
    ICommentManager& GetCommentManager() const;
    /// A new tree, read from `heldText`, else from the file if what stands there still counts.
    std::unique_ptr<Keywords::IKeywordData> ParseData(std::shared_ptr<std::string> heldText, const Context& context,
                                                      KeywordVariables* variables) const;
    std::string ReadDataText() const;
    /// The reader that a pass over the file keeps open, else one of its own; null when the file can't be opened.
    std::shared_ptr<ILineReader> BorrowReader() const;

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
};

} // namespace Tarn::Fjel::Core::DeckManager

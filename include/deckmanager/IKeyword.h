#pragma once

#include <memory>
#include <string>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordSyntax;
}

namespace Tarn::Fjel::Core::DeckManager {

class IKeywordFile;
class KeywordFile;

/// One keyword of a deck, as it stands at one place of one keyword file.
///
/// The object is owned by the list of its file. A pointer that an iterator hands out is a loan, good while the keyword
/// stands in its list. Reading a keyword fills caches in it, so one thread at a time may use it.
class IKeyword
{
public:
    virtual ~IKeyword();

    /// The name as the file has it, in capitals.
    virtual const std::string& GetName() const = 0;

    /// What the syntax table knows of the keyword; never null.
    virtual const Keywords::IKeywordSyntax* GetSyntax() const = 0;

    /// The comment between the keyword's line and its first data line, without comment markers; lines end in "\n".
    /// Empty when there is none. Throws `DeckManagerException` when the file cannot be read (unless incomplete decks
    /// are allowed).
    virtual std::string GetComment() const = 0;

    /// The keyword, or the file that it stands in, bears the generated tag.
    virtual bool IsGenerated() const = 0;

    /// The file that the keyword stands in bears the generated tag.
    virtual bool IsInGeneratedFile() const = 0;

    /// The file whose list holds the keyword; null for a keyword that stands in no list. Not owned.
    virtual IKeywordFile* GetFile() const = 0;

    /// The keyword file for the text on disk that the extent refers to; null without such an extent. Not owned.
    virtual KeywordFile* GetDiskFile() const = 0;

    /// The 1-based line number of the keyword's line in its file; -1 when the keyword stands in no file on disk.
    virtual int GetLine() const = 0;

    /// The byte offset of the keyword's line in its file; 0 when the keyword stands in no file on disk.
    virtual long long GetPosition() const = 0;

    /// The next write puts the whole keyword behind the comment marker.
    virtual bool IsCommentedOut() const = 0;

    /// The keyword's lines carry the suppress marker.
    virtual bool IsSuppressed() const = 0;

    /// The whole keyword as it would be written now: the comment to be put ahead of it, keyword line, data, and what
    /// stands behind these up to the next keyword line, with "\n" line ends. Never null; empty for a keyword of a
    /// skipped region. Throws `DeckManagerException` when the file can't be read (of an unchanged keyword: unless
    /// incomplete decks are allowed).
    virtual std::shared_ptr<std::string> GetText() const = 0;

    /// The bytes from the keyword's line to the next keyword line of the file. 0 for a keyword of a skipped region, and
    /// when the keyword stands in no file on disk.
    virtual long long GetSize() const = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager

#pragma once

#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordSyntax;
}

namespace Tarn::Fjel::Core::DeckManager {

class ILineReader;
class ISectionContextQuery;
class KeywordFileReader;
struct ScannedKeyword;

/// The scanner of the deck text format. It finds keyword lines in free text by looking at one line at a time, with no
/// grammar for the data in between.
///
/// A keyword is the first word of a live line, at column 1, a letter first, compared in capitals. Bad text never
/// throws: it is logged and the scan goes on. Operations that take an `ILineReader*` do nothing and return false for
/// null. Positions are byte offsets in the text, sizes count bytes. One thread at a time.
class LineReaderUtil
{
public:
    LineReaderUtil() = delete;

    /// Reads the next data line and cuts it to its first word, in capitals; the word is empty if the line is no
    /// candidate for a keyword. `pos`, `indented` and `terminated` may be null. False at the end of the text.
    static bool ReadNextValidLineAsKeyword(ILineReader& reader, std::string& line, long long* pos, bool allowIndented,
                                           bool* indented, bool* terminated);

    /// Finds the next keyword that the syntax table knows in the section in force. Words that it doesn't know are
    /// passed over, with a warning where the line looks like a keyword line. `pos` and `indented` may be null. With
    /// `file`, null for a text that isn't one, the warning tells file and line. False at the end of the text, with an
    /// empty `keyword` and a null `syntax`.
    static bool FindNextKeywordSyntax(ILineReader& reader, const ISectionContextQuery& query, std::string& keyword,
                                      long long* pos, bool allowIndented, bool* indented,
                                      const Keywords::IKeywordSyntax*& syntax, KeywordFileReader* file);

    /// The same, and what the scan learns in passing.
    static bool FindNextKeywordSyntax(ILineReader& reader, const ISectionContextQuery& query, bool allowIndented,
                                      KeywordFileReader* file, ScannedKeyword& found);

    /// The two halves of it, for a caller that has to find out the section between them: the next word that the table
    /// knows in some section, and whether it is a keyword in the section in force. Between the two the reader must not
    /// move.
    static bool FindNextCandidate(ILineReader& reader, bool allowIndented, KeywordFileReader* file,
                                  ScannedKeyword& found);
    static bool ResolveCandidate(ILineReader& reader, const ISectionContextQuery& query, KeywordFileReader* file,
                                 ScannedKeyword& found);

    /// Finds the next keyword that can stand behind `previous`: a section keyword, or one that shares a section and a
    /// simulator with it.
    static bool FindNextKeyword(ILineReader& reader, const Keywords::IKeywordSyntax* previous, std::string& keyword);

    /// Finds the next word that is a keyword in any section, by its whole length or by its first eight characters.
    static bool FindNextKeywordInAnySection(ILineReader& reader, std::string& keyword);

    /// Whether a word (in capitals) is a keyword in any section, likewise; it is cut to what counts of it.
    static bool IsNameInAnySection(std::string& word);

    /// The syntax of `name` (in capitals) in the section in force, or null. Warns of a keyword outside its sections.
    static const Keywords::IKeywordSyntax* FindSyntax(std::string_view name, const ISectionContextQuery& query);

    /// Steps over those data lines of a keyword whose first words could be taken for keywords. The reader stands behind
    /// the keyword's line. Throws `DeckManagerException` at a `PATHS` while `Environment::PATHSSupport` is false.
    static void ConsumeDataLines(const Keywords::IKeywordSyntax* syntax, ILineReader& reader);

    /// Reads data lines through the next one that holds a terminator outside quotes.
    static void AdvanceToNextTerminatedLine(ILineReader& reader);
    /// Reads data lines through the next one whose first character is a terminator.
    static void AdvanceToNextLineStartedWithTermination(ILineReader& reader);
    /// Reads data lines through the next one that begins with a terminator and follows a terminated one.
    static void AdvanceToNextDoubleTermination(ILineReader& reader);

    /// Moves to the first data line of the keyword in that extent. False if there is none.
    static bool AdvanceToDataLine(ILineReader* reader, long long pos, long long size);
    /// Moves behind the keyword line and the tag lines that follow it. `sawTag`, if given, tells whether either bears a
    /// tag.
    static bool AdvanceToNonTagLine(ILineReader* reader, long long pos, long long size, bool* sawTag, bool skipBlank);
    /// Moves behind the tag lines at the reader's position, or stays if there are none. No line that begins behind
    /// `lastPos` is looked at, unless that is negative. `tagLine`, if given, receives the last tag line.
    static bool AdvanceToNextNonTagLine(ILineReader* reader, long long lastPos, bool* sawTag, std::string* tagLine,
                                        bool skipBlank);

    /// Whether the line at `pos` begins with the suppress marker, white space aside.
    static bool NextLineIsSuppressed(ILineReader* reader, long long pos);

    /// The comment between a keyword's line and its first data line, up to the first blank line. True if there is one.
    static bool ExtractComment(ILineReader* reader, long long pos, long long size, std::string& comment);

    /// Looks ahead for a keyword that was commented out while its data stayed active; `dataLine` is then the first of
    /// these and `pos` the position behind it. The reader ends where it started.
    static bool CheckForCommentIssues(ILineReader& reader, std::string& dataLine, long long& pos);

    /// Whether the line holds a terminator outside quotes. A comment is no different from data here.
    static bool IsTerminated(std::string_view line);
    /// Whether the first character that isn't white space is a terminator.
    static bool IsTerminationOnly(std::string_view line);

    /// Takes the suppress markers away from the line heads of `text`.
    static void ActivateLines(std::string& text);
    /// Turns each line of `text` into a comment.
    static void CommentLines(std::string& text);
    /// Puts a suppress marker ahead of each line of `text` that has none.
    static void SuppressLines(std::string& text);

private:
    static void TellOfUnknownWord(const ScannedKeyword& word, KeywordFileReader* file);
    /// The keywords whose data lines have rules of their own; null where the table in force lacks them.
    static const Keywords::IKeywordSyntax* GetACTIONXSyntax();
    static const Keywords::IKeywordSyntax* GetENDSCALESyntax();
    static const Keywords::IKeywordSyntax* GetEOSSyntax();
    static const Keywords::IKeywordSyntax* GetPATHSSyntax();
    static void ConsumeDataLinesACTIONX(ILineReader& reader);
    static bool IsAKeyword(std::string_view line);
    static bool IsACommentedOutKeyword(std::string_view line);
    static bool IsNumerical(std::string_view s);
    static bool IsOrdaleVariable(std::string_view s);
    static bool CanFollowKeyword(const Keywords::IKeywordSyntax* candidate, const Keywords::IKeywordSyntax* previous);
    static void FastStringReplace(std::string& text, std::string_view from, std::string_view to, bool keepExisting);
};

} // namespace Tarn::Fjel::Core::DeckManager

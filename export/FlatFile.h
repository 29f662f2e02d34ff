#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <deckmanager/KeywordFileIterator.h>
#include <deckmanager/KeywordIterator.h>
#include <tarn/keywords/SimulatorType.h>

namespace Tarn::Fjel::Core::DeckManager {

class Context;
class IDeckKeywords;
class Keyword;
class KeywordFile;
class KeywordINCLUDE;
class LineFileWriter;
class SourceFile;
struct ExportReport;

/// Writes the keywords of a deck into one file, each INCLUDE replaced by what it includes.
///
/// The files that lie open around the place of the walk stand on a stack of their own, so that a long chain of files
/// needs no deep recursion; of those far above the readers are closed meanwhile.
///
/// An INCLUDE that is suppressed or commented out stays, with its mark, and brings nothing in: its keywords would come
/// alive.
class FlatFile
{
public:
    struct Manner
    {
        Keywords::SimulatorType simulator = Keywords::SimulatorType::Any;
        /// What belongs to the keywords comes along: headers, tails, comments on INCLUDE keywords.
        bool whole = false;
    };

    /// `writer` and `report` may be null.
    FlatFile(const IDeckKeywords& keywords, LineFileWriter* writer, const Context& context, const Manner& manner,
             ExportReport* report);
    ~FlatFile();

    /// The keywords from `begin` to `end`; where the walk can't come to that, to the end of the deck. False when the
    /// writer takes no more.
    bool Write(const KeywordIterator& begin, const KeywordIterator& end);

    /// The same in one file; what its INCLUDE keywords bring in is left out.
    bool WriteRange(const KeywordFileIterator& begin, const KeywordFileIterator& end);

private:
    /// A file around the place of the walk.
    struct Level
    {
        std::unique_ptr<SourceFile> source;
        KeywordFileIterator position;
        KeywordFileIterator end; ///< where the walk leaves the file
    };

    void Open(const KeywordIterator& begin);
    void Enter(KeywordFile& file);
    void Push(KeywordFile& file, const KeywordFileIterator& position);
    void WriteHead(SourceFile& source);
    void WriteComment(const KeywordIterator& begin);
    void Step();
    void StepOn(const Keyword& keyword);
    /// False when the walk goes on inside the included file.
    bool PassInclude(const KeywordINCLUDE& include);
    void WriteCommentsOn(const Keyword& include);
    void Leave();
    void HandOn(const Keyword& keyword);
    void NoteWritten(const Keyword* keyword);
    bool IsBareKeywordAhead();
    bool AllFilesAreTagged() const;
    void FindStop(const KeywordIterator& begin, const KeywordIterator& end);

    const IDeckKeywords& m_keywords;
    LineFileWriter* m_writer;
    const Context& m_context;
    Manner m_manner;
    ExportReport* m_report;
    std::vector<Level> m_levels;
    std::optional<KeywordFileIterator> m_stop; ///< none: the end of the walk
    /// The keyword that was written last, where nothing has been written behind it, and its file. When that file is
    /// left, whether the text ended with a keyword's line.
    const Keyword* m_last = nullptr;
    SourceFile* m_lastSource = nullptr;
    bool m_endsBare = false;
};

} // namespace Tarn::Fjel::Core::DeckManager

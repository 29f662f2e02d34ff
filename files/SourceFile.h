#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/FileWriteResult.h"
#include "files/KeywordFile.h"
#include <tarn/keywords/SimulatorType.h>

namespace Tarn::Fjel::Core::DeckManager {

class Context;
class FileReferencingKeyword;
class ILineReader;
class Keyword;
class KeywordFileIterator;
class LineFileWriter;

/// One keyword file while its text goes to a writer. The file stays open for that long, and stretches of it that meet
/// are copied as one: from a file in which nothing has changed, all in one piece.
///
/// A file's text is its head (byte order mark, tag block, header), and for each keyword its extent and the gap behind
/// it: what no keyword owns (a region that is skipped, a section keyword that recurs) goes with the keyword ahead.
///
/// Everything throws `DeckManagerException` when the file can't be read, or no longer holds what it did.
class SourceFile
{
public:
    /// Loads the file. `writer` null: nothing is written, and nothing read for it.
    SourceFile(KeywordFile& file, LineFileWriter* writer) : SourceFile(file, writer, nullptr) {}
    /// The same; where keywords come to stand is noted in `extents`, which may be null and outlives the object. Their
    /// ends follow with `EndExtents`.
    SourceFile(KeywordFile& file, LineFileWriter* writer, std::vector<WrittenExtent>* extents);
    ~SourceFile();
    SourceFile(const SourceFile&) = delete;
    SourceFile& operator=(const SourceFile&) = delete;

    KeywordFile& File() const { return m_file; }

    /// The head as it stands, with a changed tag in the place of the old tag block, and with a header that an edit has
    /// set in that of an earlier one. `continued`: the text goes on another file's, so no byte order mark. `ahead`: a
    /// line to stand ahead of all but the mark.
    void CopyHead(bool continued, std::string_view ahead = {});
    /// What of the head is read as data of what stands ahead of the file.
    bool HasDataInHead();
    /// The first line of the head that isn't blank is a tag line, or would count as one.
    bool BeginsWithTag();
    /// The file has no keywords on the disk: all of its text is head.
    bool IsAllHead() const { return m_starts.empty(); }
    std::int64_t HeadSize() const { return m_headEnd; }

    /// The keyword, as its text stands where nothing has changed it.
    void WriteKeyword(const Keyword& keyword, const Context& context, Keywords::SimulatorType simulator);
    /// The keyword with other data, that name another file: where nothing but the name is changed, not a byte around it
    /// is.
    void WriteReference(const FileReferencingKeyword& keyword, const std::string& dataText, const Context& context);
    /// To be called ahead of each keyword of the list, in its order, with the one that follows, and at the end of the
    /// list, with null for both. In a list that an edit has changed it puts what stands ahead of the keyword there, and
    /// has the operations below leave that to the next call: they write the keyword's own text alone.
    void ComeTo(const Keyword* keyword, const Keyword* follower, const Context& context);
    /// The same for a place in the file's list.
    void ComeTo(const KeywordFileIterator& place, const Context& context);
    /// A range begins with the keyword that comes next: what stands ahead of it is no part of the range.
    void SkipBlocksAhead() { m_blocksWritten = true; }

    /// Behind what is written of the file, more follows that isn't of its list.
    void GoesOn() { m_goesOn = true; }
    /// What the keyword hands on when it is left out.
    void LeaveOut(const Keyword& keyword, const Context& context);
    /// What is written next goes behind the keyword.
    void NoteWritten(const Keyword& keyword);
    /// Behind the last keyword of the file on the disk goes another one: what its data lack at their end is written.
    void EndData(const Keyword& keyword);
    void CopyGap(const Keyword& keyword);
    /// Only the head stands ahead of the keyword.
    bool IsFirstOnDisk(const Keyword& keyword) const;
    /// The gap behind the keyword reaches the end of the file.
    bool IsLastOnDisk(const Keyword& keyword) const;
    std::int64_t GapSize(const Keyword& keyword) const;

    /// From the keyword's line to the end of the file, with each line that isn't blank or a comment made one.
    void CopyRestAsComments(const Keyword& keyword);

    /// Writes what is held back. To be called before anyone else writes.
    void Flush();
    /// The same, and what comes next goes on in the line: a byte order mark ends none.
    void FlushOpen();

    /// Puts there what stands ahead of a keyword (null: of the list's end), in this file or, by an edit, in others.
    void WriteBlocksAhead(const Keyword* keyword, const Context& context);
    /// What that would be at the end of the list.
    std::vector<RestOfFile> RestOfList(const Context& context);
    /// What is to follow a text that breaks off; empty for one that doesn't.
    std::string TextOfRest() const;
    /// The end of the file, where its text breaks off ahead of that.
    void WriteRest();
    /// The file's last line has no end, and the keyword at the end of the list is the one at that of the file.
    bool EndsInOpenLine();
    /// The last keyword that was written ends with the text.
    void EndLastExtent();
    /// What stands ahead of a keyword (null: of the list's end), as text.
    std::string TextAhead(const Keyword* keyword, const Context& context);
    /// The comment in the head, as text: what stands behind a tag and behind a header that a host has set.
    std::string TextOfHead();

    /// Closes the file, which opens again when it is needed.
    void PutAside();
    /// The file's text; null for a file that doesn't exist.
    ILineReader* Reader();

private:
    /// Where a header that a host has set stands in the head, or would; and the comment behind it.
    struct HeadPlaces
    {
        std::int64_t block;
        std::int64_t comment;
    };

    bool StandAsOnDisk(const Keyword& keyword, const Keyword* next) const;
    void CopyBlockAhead(const Keyword* below, const Context& context);
    RestOfFile StretchAhead(const Keyword* below, const Context& context);
    std::string StretchText(const RestOfFile& stretch);
    HeadPlaces PlacesInHead(std::int64_t mark);
    std::int64_t Tell();
    void EndExtents();
    void NoteBegin(const Keyword& keyword);
    void KeepApart(const std::string& comment);
    bool WriteAroundName(const FileReferencingKeyword& keyword, const std::string& dataText, const Context& context);
    long long EndToCopy(const Keyword& keyword, const Context& context) const;
    std::size_t PlaceOnDisk(const Keyword& keyword) const;
    void Copy(std::int64_t begin, std::int64_t end);
    std::int64_t GapEnd(std::int64_t begin) const;
    [[noreturn]] void Refuse(const char* reason) const;

    KeywordFile& m_file;
    LineFileWriter* m_writer;
    std::vector<WrittenExtent>* m_extents;
    bool m_keepsBytes = false; ///< what is held back goes out as it stands
    std::unique_ptr<OpenReaderGuard> m_guard;
    std::shared_ptr<ILineReader> m_reader;
    std::shared_ptr<const KeywordFile::DiskPlaces> m_places;
    const std::vector<std::int64_t>& m_starts;
    const std::vector<const Keyword*>& m_onDisk;
    std::int64_t m_size = 0; ///< of the file
    bool m_ownTextOnly = false;
    bool m_goesOn = false;
    bool m_takesComment = false;   ///< the keyword written last, when one comes next
    bool m_isFollowedAnew = false; ///< by a keyword that doesn't stand behind it on the disk
    bool m_blocksWritten = true;   ///< those ahead of the keyword that comes next
    std::int64_t m_headEnd = 0;
    std::int64_t m_begin = 0; ///< what is held back
    std::int64_t m_end = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager

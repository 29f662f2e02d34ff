#include "files/SourceFile.h"

#include <algorithm>
#include <array>
#include <utility>

#include "files/FileReferencingKeyword.h"
#include "files/HeaderBlock.h"
#include "files/KeywordFile.h"
#include "keywords/Keyword.h"
#include "text/KeywordFileReader.h"
#include "text/LineFileWriter.h"
#include "text/LineStreamReader.h"
#include "text/TagRecognisers.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/KeywordFileIterator.h>
#include <deckmanager/LineEnds.h>
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// What is turned into comments is read in pieces of this size.
constexpr std::int64_t pieceSize = 1 << 20;

/// A name that fits a line, whatever else stands there, so that the writer breaks no line for it.
constexpr std::size_t longestToken = 100;

std::string AsComments(std::string_view text)
{
    std::string comments;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
        const std::string_view content = Service::TrimmedLeft(line);
        if (!content.empty() && !VeldaneDeckInfo::BeginsWithCommentMarker(content))
            comments.append(VeldaneDeckInfo::COMMENT_MARKER).append(" ");
        comments.append(line);
        text.remove_prefix(line.size());
    }
    return comments;
}

} // namespace

SourceFile::SourceFile(KeywordFile& file, LineFileWriter* writer, std::vector<WrittenExtent>* extents)
    : m_file(file), m_writer(writer), m_extents(extents), m_places(file.PlacesOnDisk()), m_starts(m_places->starts),
      m_onDisk(m_places->keywords)
{
    if (file.LoadFailed()) Refuse("cannot be read");
    m_blocksWritten = file.IsListUnchanged();
    m_keepsBytes = LineEnds::GetPolicy() == LineEnds::Policy::Keep;
    m_size = std::max<std::int64_t>(0, file.FileSize());
    m_headEnd = m_starts.empty() ? m_size : m_starts.front();
}

SourceFile::~SourceFile() = default;

void SourceFile::Refuse(const char* reason) const
{
    throw DeckManagerException("The file " + m_file.GetFileName().GetFullName() + " " + reason + ".");
}

ILineReader* SourceFile::Reader()
{
    if (!m_reader && m_size > 0) {
        m_guard = std::make_unique<OpenReaderGuard>(m_file);
        m_reader = m_file.OpenedReader(*m_file.FileReader());
        if (!m_reader) Refuse("cannot be read");
    }
    return m_reader.get();
}

void SourceFile::PutAside()
{
    Flush();
    m_reader.reset();
    m_guard.reset();
}

void SourceFile::Copy(std::int64_t begin, std::int64_t end)
{
    if (end <= begin) return;
    if (begin != m_end) {
        Flush();
        m_begin = m_end = begin;
    }
    // Who counts bytes must know of a line end that the writer owes.
    if (m_extents != nullptr && m_begin == m_end) m_writer->EndOpenLine();
    m_end = end;
}

/// Where the writer stands once it has what is held back, and has ended the line: for what is to be written now.
std::int64_t SourceFile::Tell()
{
    if (!m_keepsBytes || m_end == m_size) Flush();
    if (m_begin == m_end) m_writer->EndOpenLine();
    return m_writer->Tell() + m_end - m_begin;
}

/// The last keyword that was written ends here, where text begins that no keyword owns.
void SourceFile::EndExtents()
{
    if (m_extents != nullptr && !m_extents->empty() && m_extents->back().end < 0) m_extents->back().end = Tell();
}

void SourceFile::EndLastExtent()
{
    Flush();
    if (m_extents != nullptr && !m_extents->empty() && m_extents->back().end < 0)
        m_extents->back().end = m_writer->Tell();
}

bool SourceFile::EndsInOpenLine()
{
    KeywordFileIterator last = m_file.End();
    if (m_onDisk.empty() || last == m_file.Begin() || m_file.HasOtherBlocksAhead(nullptr)) return false;
    --last;
    if (*last != m_onDisk.back()) return false;
    std::string end;
    if (ILineReader* reader = Reader()) reader->ReadRange(m_size - 1, m_size - 1, end);
    return !end.empty() && end != "\n";
}

void SourceFile::NoteBegin(const Keyword& keyword)
{
    if (m_extents == nullptr || keyword.IsCommentedOut()) return;
    const std::int64_t here = Tell();
    if (!m_extents->empty() && m_extents->back().end < 0) m_extents->back().end = here;
    m_extents->push_back({&keyword, here, -1});
}

void SourceFile::Flush()
{
    const std::int64_t begin = std::exchange(m_begin, m_end);
    if (begin == m_end || m_writer == nullptr) return;
    ILineReader* reader = Reader();
    if (reader == nullptr) Refuse("has been changed on disk since it was read");
    if (m_writer->Copy(*reader, begin, m_end - 1) != m_end - begin && m_writer->IsGood())
        Refuse("has been changed on disk since it was read");
}

void SourceFile::FlushOpen()
{
    Flush();
    if (m_writer != nullptr) m_writer->ContinueOpenLine();
}

void SourceFile::CopyHead(bool continued, std::string_view ahead)
{
    const bool tagChanged = m_file.TagState().IsChanged();
    const std::string& block = m_file.HeaderBlockToWrite();
    const std::string* const comment = m_file.TextSetInHead();
    if (m_headEnd == 0 && !tagChanged && block.empty() && comment == nullptr) return;
    ILineReader* reader = Reader();
    const std::int64_t mark = reader != nullptr ? LineStreamReader::MarkSize(*reader) : 0;
    std::int64_t begin = 0;
    if (!continued && (tagChanged || !ahead.empty())) Copy(0, mark);
    if (continued || tagChanged || !ahead.empty()) {
        continued ? Flush() : FlushOpen();
        begin = mark;
    }
    if (m_writer != nullptr) m_writer->WriteText(ahead);
    if (tagChanged) {
        if (m_writer != nullptr) m_file.TagState().Write(*m_writer);
        begin = std::max<std::int64_t>({mark, m_file.HeaderBegin(), 0});
    }
    if (!block.empty() || comment != nullptr) {
        HeadPlaces places = PlacesInHead(mark);
        if (block.empty()) places.block = places.comment;
        Copy(begin, places.block);
        std::max(begin, places.block) > mark ? Flush() : FlushOpen();
        if (m_writer != nullptr) m_writer->WriteText(block);
        begin = std::max(begin, places.comment);
    }
    if (comment == nullptr)
        Copy(begin, m_headEnd);
    else if (m_writer != nullptr)
        m_writer->WriteText(*comment);
}

SourceFile::HeadPlaces SourceFile::PlacesInHead(std::int64_t mark)
{
    ILineReader* reader = Reader();
    std::optional<HeaderBlock::Place> block;
    if (reader != nullptr) block = HeaderBlock::Find(*reader, mark, m_headEnd);
    if (block) return {block->begin, block->end};
    const std::int64_t behindTag = std::max<std::int64_t>({mark, m_file.HeaderBegin(), 0});
    return {behindTag, behindTag};
}

std::string SourceFile::TextOfHead()
{
    ILineReader* reader = m_headEnd > 0 ? Reader() : nullptr;
    std::string text;
    if (reader != nullptr)
        reader->ReadRange(PlacesInHead(LineStreamReader::MarkSize(*reader)).comment, m_headEnd - 1, text);
    return text;
}

bool SourceFile::HasDataInHead()
{
    ILineReader* reader = m_headEnd > 0 ? Reader() : nullptr;
    if (reader == nullptr || !reader->Seek(LineStreamReader::MarkSize(*reader), 0)) return false;
    std::string line;
    long long position = 0;
    return reader->ReadNextDataLine(line, &position, true) && position < m_headEnd;
}

bool SourceFile::BeginsWithTag()
{
    ILineReader* reader = m_headEnd > 0 ? Reader() : nullptr;
    if (reader == nullptr || !reader->Seek(LineStreamReader::MarkSize(*reader), 0)) return false;
    std::string line;
    long long position = 0;
    while (reader->ReadNextLine(line, &position, true) && position < m_headEnd) {
        if (!Service::AllBlanks(line)) return IsFileTagLine(line) || IsKeywordTagLine(line);
    }
    return false;
}

long long SourceFile::EndToCopy(const Keyword& keyword, const Context& context) const
{
    return keyword.Position() + (m_ownTextOnly ? keyword.OwnSize(context) : keyword.Size());
}

void SourceFile::WriteKeyword(const Keyword& keyword, const Context& context, Keywords::SimulatorType simulator)
{
    if (keyword.IsWrittenAsItStands() && keyword.Reader() == m_file.FileReader()) {
        NoteBegin(keyword);
        Copy(keyword.Position(), EndToCopy(keyword, context));
    } else {
        Flush();
        if (m_writer == nullptr) return;
        if (!keyword.HasValidExtent()) KeepApart(keyword.GetLeadingComment());
        keyword.WriteLeadingComment(*m_writer);
        NoteBegin(keyword);
        keyword.WriteBehindComment(*m_writer, nullptr, context, simulator, m_ownTextOnly);
    }
    if (m_isFollowedAnew || m_goesOn) EndData(keyword);
    NoteWritten(keyword);
}

/// What is written afresh for a keyword without data ends in a blank line.
void SourceFile::NoteWritten(const Keyword& keyword)
{
    if (!keyword.IsCommentedOut())
        m_takesComment = keyword.GetSyntax()->GetMetaData() == nullptr && keyword.HasValidExtent();
}

/// Straight below a keyword without data a comment would be that one's, and not the one above the keyword that follows.
void SourceFile::KeepApart(const std::string& comment)
{
    const bool isNext = std::exchange(m_takesComment, false);
    if (isNext && VeldaneDeckInfo::BeginsWithCommentMarker(Service::TrimmedLeft(comment.substr(0, comment.find('\n')))))
        m_writer->NewLine();
}

/// The data of the last keyword of a file may go on to the end of that.
void SourceFile::EndData(const Keyword& keyword)
{
    if (m_writer == nullptr || (keyword.Reader() == m_file.FileReader() && !IsLastOnDisk(keyword))) return;
    const std::string missing = keyword.MissingEnd();
    if (missing.empty()) return;
    Flush();
    m_writer->WriteText(missing);
}

void SourceFile::WriteReference(const FileReferencingKeyword& keyword, const std::string& dataText,
                                const Context& context)
{
    if (m_writer != nullptr && WriteAroundName(keyword, dataText, context)) return;
    Flush();
    if (m_writer == nullptr) return;
    keyword.WriteLeadingComment(*m_writer);
    keyword.WriteBehindComment(*m_writer, &dataText, context, Keywords::SimulatorType::Any, m_ownTextOnly);
}

std::size_t SourceFile::PlaceOnDisk(const Keyword& keyword) const
{
    if (keyword.Reader() != m_file.FileReader()) return m_starts.size();
    const auto found = std::lower_bound(m_starts.begin(), m_starts.end(), keyword.Position());
    return static_cast<std::size_t>(found - m_starts.begin());
}

void SourceFile::ComeTo(const Keyword* keyword, const Keyword* follower, const Context& context)
{
    if (!m_blocksWritten) WriteBlocksAhead(keyword, context);
    if (keyword == nullptr) {
        WriteRest();
        return;
    }
    m_blocksWritten =
        m_file.IsListUnchanged() || (!m_file.HasOtherBlocksAhead(follower) && StandAsOnDisk(*keyword, follower));
    m_ownTextOnly = !m_blocksWritten;
    m_isFollowedAnew = m_ownTextOnly && follower != nullptr;
}

void SourceFile::ComeTo(const KeywordFileIterator& place, const Context& context)
{
    const KeywordFileIterator end = m_file.End();
    if (m_file.IsListUnchanged() && place != end) return;
    const auto keywordAt = [&end](const KeywordFileIterator& position) {
        return position != end ? static_cast<const Keyword*>(*position) : nullptr;
    };
    KeywordFileIterator next = place;
    if (next != end) ++next;
    ComeTo(keywordAt(place), keywordAt(next), context);
}

/// On the disk `next` stands straight behind the keyword, or the end of the file, where it is null.
bool SourceFile::StandAsOnDisk(const Keyword& keyword, const Keyword* next) const
{
    const std::size_t place = PlaceOnDisk(keyword);
    if (place >= m_onDisk.size() || m_onDisk[place] != &keyword) return false;
    return next != nullptr ? place + 1 < m_onDisk.size() && m_onDisk[place + 1] == next : place + 1 == m_onDisk.size();
}

void SourceFile::WriteBlocksAhead(const Keyword* keyword, const Context& context)
{
    for (const KeywordFile::Block& block : m_file.BlocksAhead(keyword)) {
        if (!block.text) {
            CopyBlockAhead(static_cast<const Keyword*>(block.below), context);
            continue;
        }
        Flush();
        if (m_writer == nullptr) continue;
        if (keyword != nullptr) KeepApart(*block.text);
        m_writer->WriteText(*block.text);
    }
}

/// What stood ahead of a keyword on the disk, in this file or another.
void SourceFile::CopyBlockAhead(const Keyword* below, const Context& context)
{
    if (below != nullptr && below->Reader() != m_file.FileReader()) {
        KeywordFile* other = below->GetDiskFile();
        if (other == nullptr || other->FileReader() != below->Reader()) return;
        Flush();
        SourceFile source(*other, m_writer, m_extents);
        source.m_keepsBytes = false;
        source.m_takesComment = m_takesComment;
        source.CopyBlockAhead(below, context);
        source.Flush();
        m_takesComment = source.m_takesComment;
        return;
    }
    const RestOfFile stretch = StretchAhead(below, context);
    if (stretch.begin < stretch.end) m_takesComment = false;
    Copy(stretch.begin, stretch.gap);
    if (stretch.gap < stretch.end) EndExtents();
    Copy(stretch.gap, stretch.end);
}

/// Mostly the comment above a keyword. Nothing for the first of the file, whose comment is header. Null: what stands at
/// the end of the file.
RestOfFile SourceFile::StretchAhead(const Keyword* below, const Context& context)
{
    const std::size_t place = below != nullptr ? PlaceOnDisk(*below) : m_onDisk.size();
    if (place == 0) return {};
    const Keyword& ahead = *m_onDisk[place - 1];
    // What a skip keyword has behind it is the region that it skips.
    if (ahead.IsSkipped()) return {};
    RestOfFile stretch;
    stretch.begin = ahead.RestBegin(context);
    stretch.gap = std::max<std::int64_t>(stretch.begin, ahead.Position() + ahead.Size());
    stretch.end = place < m_starts.size() ? m_starts[place] : m_size;
    return stretch;
}

namespace {

/// Null where nothing of the rest stands in a file: a new one has none yet.
std::unique_ptr<ILineReader> OpenRest(const RestBehindText& rest)
{
    const bool isRead =
        std::any_of(rest.pieces.begin(), rest.pieces.end(), [](const RestOfFile& piece) { return piece.text.empty(); });
    return isRead ? rest.reader->OpenLineReader(true) : nullptr;
}

} // namespace

void SourceFile::WriteRest()
{
    const RestBehindText* rest = m_file.Rest();
    if (rest == nullptr || m_writer == nullptr) return;
    Flush();
    const std::unique_ptr<ILineReader> reader = OpenRest(*rest);
    const auto copy = [&](std::int64_t begin, std::int64_t end) {
        if (begin >= end) return;
        if (!reader || (m_writer->Copy(*reader, begin, end - 1) != end - begin && m_writer->IsGood()))
            Refuse("has been changed on disk since it was read");
    };
    for (const RestOfFile& piece : rest->pieces) {
        if (!piece.text.empty()) {
            m_writer->WriteText(piece.text);
            continue;
        }
        copy(piece.begin, piece.gap);
        if (piece.gap < piece.end) EndExtents();
        copy(piece.gap, piece.end);
    }
}

std::string SourceFile::StretchText(const RestOfFile& stretch)
{
    std::string text;
    ILineReader* reader = stretch.begin < stretch.end ? Reader() : nullptr;
    if (reader != nullptr) reader->ReadRange(stretch.begin, stretch.end - 1, text);
    return text;
}

std::string SourceFile::TextAhead(const Keyword* keyword, const Context& context)
{
    std::string text;
    for (const KeywordFile::Block& block : m_file.BlocksAhead(keyword)) {
        const auto* below = static_cast<const Keyword*>(block.below);
        // A file's last line may be open.
        if (!text.empty() && text.back() != '\n') text += '\n';
        if (block.text) {
            text += *block.text;
        } else if (below == nullptr || below->Reader() == m_file.FileReader()) {
            text += StretchText(StretchAhead(below, context));
        } else if (KeywordFile* other = below->GetDiskFile();
                   other != nullptr && other->FileReader() == below->Reader()) {
            SourceFile source(*other, nullptr);
            text += source.StretchText(source.StretchAhead(below, context));
        }
    }
    return text;
}

std::string SourceFile::TextOfRest() const
{
    std::string text;
    const RestBehindText* rest = m_file.Rest();
    if (rest == nullptr) return text;
    const std::unique_ptr<ILineReader> reader = OpenRest(*rest);
    for (const RestOfFile& piece : rest->pieces) {
        std::string own = piece.text;
        if (own.empty() && reader) reader->ReadRange(piece.begin, piece.end - 1, own);
        // A file's last line may be open.
        if (!text.empty() && text.back() != '\n') text += '\n';
        text += own;
    }
    return text;
}

std::vector<RestOfFile> SourceFile::RestOfList(const Context& context)
{
    std::vector<RestOfFile> rest;
    for (const KeywordFile::Block& block : m_file.BlocksAhead(nullptr)) {
        RestOfFile piece;
        if (block.text)
            piece.text = *block.text;
        else
            piece = StretchAhead(static_cast<const Keyword*>(block.below), context);
        if (piece.begin < piece.end || !piece.text.empty()) rest.push_back(std::move(piece));
    }
    return rest;
}

bool SourceFile::WriteAroundName(const FileReferencingKeyword& keyword, const std::string& dataText,
                                 const Context& context)
{
    if (!keyword.IsWrittenAsItStands() || keyword.Reader() != m_file.FileReader()) return false;
    const std::optional<std::string> token = keyword.TokenAlone(dataText);
    if (!token || token->size() > longestToken) return false;
    ILineReader* reader = Reader();
    const std::int64_t end = EndToCopy(keyword, context);
    if (!LineReaderUtil::AdvanceToDataLine(reader, keyword.Position(), keyword.Size())) return false;
    const std::int64_t lineBegin = reader->Tell();
    std::array<char, longestToken * 4> line;
    const std::int64_t count =
        reader->ReadRaw(line.data(), std::min(static_cast<std::int64_t>(line.size()), end - lineBegin));
    const std::string_view text(line.data(), static_cast<std::size_t>(std::max<std::int64_t>(count, 0)));
    const std::string_view active = VeldaneDeckInfo::SkipSuppressMarker(text);
    const auto [at, size] = FileReferencingKeyword::NameToken(active);
    if (size == 0 || at + size >= active.size()) return false;
    const std::int64_t nameBegin = lineBegin + static_cast<std::int64_t>(text.size() - active.size() + at);
    Copy(keyword.Position(), nameBegin);
    FlushOpen();
    m_writer->Write(*token, false);
    m_writer->FlushLine();
    Copy(nameBegin + static_cast<std::int64_t>(size), end);
    return true;
}

void SourceFile::LeaveOut(const Keyword& keyword, const Context& context)
{
    Flush();
    if (m_writer != nullptr && !m_ownTextOnly) keyword.WriteTrailingText(*m_writer, context);
}

std::int64_t SourceFile::GapEnd(std::int64_t begin) const
{
    const auto next = std::lower_bound(m_starts.begin(), m_starts.end(), begin);
    return next == m_starts.end() ? m_size : *next;
}

std::int64_t SourceFile::GapSize(const Keyword& keyword) const
{
    if (keyword.Reader() != m_file.FileReader() || keyword.Position() < 0 || keyword.Size() < 0) return 0;
    // A keyword of a skipped region has no extent: its own line is the gap's.
    const std::int64_t begin = keyword.Position() + keyword.Size();
    return GapEnd(std::max<std::int64_t>(begin, keyword.Position() + 1)) - begin;
}

void SourceFile::CopyGap(const Keyword& keyword)
{
    if (m_ownTextOnly && !keyword.IsSkipped()) return;
    const std::int64_t size = GapSize(keyword);
    const std::int64_t begin = keyword.Position() + keyword.Size();
    if (size <= 0) return;
    m_takesComment = false;
    EndExtents();
    Copy(begin, begin + size);
}

bool SourceFile::IsFirstOnDisk(const Keyword& keyword) const
{
    return !m_onDisk.empty() && m_onDisk.front() == &keyword;
}

bool SourceFile::IsLastOnDisk(const Keyword& keyword) const
{
    return !m_starts.empty() && keyword.Reader() == m_file.FileReader() && keyword.Position() == m_starts.back();
}

void SourceFile::CopyRestAsComments(const Keyword& keyword)
{
    Flush();
    ILineReader* reader = Reader();
    if (m_writer == nullptr || reader == nullptr || keyword.Position() < 0) return;
    std::string text;
    for (std::int64_t begin = keyword.Position(); begin < m_size; begin += pieceSize) {
        std::string piece;
        reader->ReadRange(begin, std::min(begin + pieceSize, m_size) - 1, piece);
        text += piece;
        const std::size_t cut = text.rfind('\n');
        if (cut == std::string::npos) continue;
        m_writer->WriteText(AsComments(std::string_view(text).substr(0, cut + 1)));
        text.erase(0, cut + 1);
    }
    m_writer->WriteText(AsComments(text));
}

} // namespace Tarn::Fjel::Core::DeckManager

// What the view of a deck reads straight from the text of its files: the data lines of a keyword, and the comment above
// one.

#include "deck/DeckKeywords.h"

#include <algorithm>
#include <string_view>

#include "deck/DiskOrder.h"
#include "deck/FilePaths.h"
#include "files/HeaderBlock.h"
#include "files/IteratorAccess.h"
#include "files/KeywordFile.h"
#include "keywords/Keyword.h"
#include "text/KeywordFileReader.h"
#include "text/LineSource.h"
#include "text/LineStreamReader.h"
#include "text/LineStringReader.h"
#include "text/TagRecognisers.h"
#include <deckmanager/Environment.h>
#include <deckmanager/ILineReader.h>
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordRawTextMD.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// Behind the last terminated line that the reader can give below `limit`, or behind the first one when none is; the
/// reader's own position when there is no line. The reader ends anywhere.
long long DataEnd(ILineReader& reader, long long limit)
{
    long long end = reader.Tell();
    bool any = false;
    LineSource source(reader);
    std::string_view line;
    while (reader.Tell() < limit && source.NextData(line, nullptr, true)) {
        const long long behind = reader.Tell();
        if (behind > limit) break;
        if (!any || LineReaderUtil::IsTerminated(line)) end = behind;
        any = true;
    }
    return end;
}

/// Steps over raw text through the line of its terminator; without one nothing of the extent is left.
void SkipRawText(const Keywords::IKeywordRawTextMD& metadata, ILineReader& reader, long long limit)
{
    std::string terminator;
    metadata.GetTerminator(terminator);
    LineSource source(reader);
    std::string_view line;
    while (!terminator.empty() && reader.Tell() < limit && source.Next(line)) {
        if (line.starts_with(terminator)) return;
    }
    reader.Seek(limit, 0);
}

/// How many lines the keyword's comment takes on the disk, whatever an edit has made of it.
std::ptrdiff_t CommentLineCount(const Keyword& keyword, ILineReader& reader)
{
    std::string comment;
    if (!LineReaderUtil::ExtractComment(&reader, keyword.Position(), keyword.Size(), comment)) return 0;
    return std::count(comment.begin(), comment.end(), '\n') + 1;
}

/// Gathers the comment lines from the reader's position up to `end`. False when no line begins there.
bool CollectComment(ILineReader& reader, long long end, std::string& comment)
{
    LineSource source(reader);
    std::string_view line;
    while (reader.Tell() < end) {
        if (!source.Next(line)) return false;
        const std::string_view text = Service::Trimmed(line);
        if (text.empty()) {
            if (!comment.empty()) comment += '\n';
            continue;
        }
        // With the default tags the header's marks look like tag lines; they are needed to find the header.
        if (IsFileTagLine(text) && !HeaderBlock::IsOpening(text) && !HeaderBlock::IsClosing(text)) continue;
        if (!VeldaneDeckInfo::BeginsWithCommentMarker(text)) continue;
        comment.append(text);
        comment += '\n';
    }
    return reader.Tell() == end;
}

bool IsFirstOnDisk(const Keyword& keyword)
{
    const KeywordFile* file = keyword.Owner() != nullptr ? keyword.Owner()->AsKeywordFile() : nullptr;
    if (file == nullptr || file->FileReader() != keyword.Reader()) file = keyword.GetDiskFile();
    return file != nullptr && file->HeaderEnd() + 1 == keyword.Position();
}

} // namespace

std::string DeckKeywords::ReadDataText(ILineReader& reader, long long limit, bool* tagSeen, bool stopAtTag) const
{
    if (tagSeen != nullptr) *tagSeen = false;
    std::string text;
    const long long begin = reader.Tell();
    const long long end = DataEnd(reader, limit);
    reader.Seek(begin, 0);

    LineSource source(reader);
    std::string_view line;
    while (reader.Tell() < end) {
        const bool read = reader.Tell() == begin ? source.NextData(line, nullptr, true) : source.Next(line);
        if (!read) break;
        if (ContainsKeywordTag(line)) {
            if (tagSeen != nullptr) *tagSeen = true;
            if (stopAtTag) {
                reader.Seek(end, 0);
                break;
            }
        }
        text.append(line);
        text += '\n';
    }
    Service::StringTrimRight(text);
    return text;
}

void DeckKeywords::SkipKeywordData(const Keyword& keyword, ILineReader& reader)
{
    const long long begin = keyword.Position();
    const long long end = begin + keyword.Size();
    const Keywords::IKeywordMD* metadata = keyword.GetSyntax()->GetMetaData();
    const bool isRawText = Keywords::KeywordUtils::GetMDType(metadata) == Keywords::MDType::RawText;
    const bool isTitle = keyword.GetName() == "TITLE";

    if (!isRawText && !isTitle && LineReaderUtil::AdvanceToDataLine(&reader, begin, keyword.Size())) {
        reader.Seek(DataEnd(reader, end), 0);
        return;
    }
    LineSource source(reader);
    std::string_view line;
    const std::ptrdiff_t commentLines = isRawText || isTitle ? 0 : CommentLineCount(keyword, reader);
    if (!isRawText && !isTitle && commentLines == 0) {
        reader.Seek(begin, 0);
        source.Next(line);
        return;
    }
    if (!LineReaderUtil::AdvanceToNonTagLine(&reader, begin, keyword.Size(), nullptr, false)) {
        reader.Seek(end, 0);
        return;
    }
    if (isRawText) {
        SkipRawText(static_cast<const Keywords::IKeywordRawTextMD&>(*metadata), reader, end);
        return;
    }
    // What stands below a title's line is the title, whatever it looks like.
    for (std::ptrdiff_t i = isTitle ? -1 : 0; i < commentLines; ++i) {
        source.Next(line);
    }
}

void DeckKeywords::StripGeneratedBlock(std::string& text)
{
    std::string kept;
    bool inBlock = false;
    bool ended = false;
    bool dropEmpty = false;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        if (HeaderBlock::IsOpening(line)) {
            inBlock = true;
            continue;
        }
        if (HeaderBlock::IsClosing(line)) {
            ended = true;
            dropEmpty = true;
            continue;
        }
        if (inBlock && !ended) continue;
        if (dropEmpty && line.empty()) continue;
        dropEmpty = false;
        kept.append(line);
        kept += '\n';
    }
    if (inBlock) text = std::move(kept);
}

/// The keyword whose text stands straight ahead on the disk; null for the first of its file.
const Keyword* DeckKeywords::AheadOnDisk(KeywordFileIterator place, const Keyword& keyword) const
{
    if (IsFirstOnDisk(keyword)) return nullptr;
    const KeywordFileIterator first = IteratorAccess::File(place)->Begin();
    while (place != first) {
        --place;
        const auto* other = static_cast<const Keyword*>(*place);
        if (!other->HasValidExtent() || other->Reader() != keyword.Reader()) continue;
        // Extents that meet leave no room for another keyword.
        if (other->Position() + other->Size() == keyword.Position()) return other;
        break;
    }
    // Something lies between, or an edit has moved one of them: the lists don't tell.
    DropWhatMissedMoves();
    if (!m_diskOrder || m_diskOrderStamp != LinkCounter::Now() || !m_diskOrder->Knows(keyword)) {
        m_diskOrder = std::make_unique<DiskOrder>(FilePaths::ReadFromBelow(*m_rootFile));
        m_diskOrderStamp = LinkCounter::Now();
    }
    return m_diskOrder->Ahead(keyword);
}

/// What an edit has put above a keyword, no commit has written yet; null: nothing.
const std::string* DeckKeywords::TextSetAbove(const KeywordFileIterator& place)
{
    const KeywordFile* file = IteratorAccess::File(place);
    if (file == nullptr || place == file->End()) return nullptr;
    if (const std::string* text = file->TextSetAhead(*place)) return text;
    return place == file->Begin() ? file->TextSetInHead() : nullptr;
}

std::string DeckKeywords::GetComment(const KeywordIterator& position, bool stripHeader) const
{
    std::string comment;
    const auto* keyword = static_cast<const Keyword*>(*position);
    if (keyword == nullptr) return comment;
    const KeywordFileIterator place = GetFileIterator(position);
    if (const std::string* text = TextSetAbove(place)) {
        LineStringReader lines(*text);
        CollectComment(lines, static_cast<long long>(text->size()), comment);
        return comment;
    }
    if (!keyword->HasValidExtent()) return comment;

    const Keyword* ahead = AheadOnDisk(place, *keyword);
    const std::unique_ptr<ILineReader> reader = keyword->Reader()->OpenLineReader(false);
    if (reader) {
        if (ahead != nullptr) {
            SkipKeywordData(*ahead, *reader);
        } else {
            reader->Seek(std::min<long long>(LineStreamReader::MarkSize(*reader), keyword->Position()), 0);
        }
    }
    if (!reader || !CollectComment(*reader, keyword->Position(), comment)) {
        const Service::Log::Place logPlace(keyword->Reader()->GetPath(), keyword->GetLine());
        Service::Log::SendLogMessage("A problem was encountered when parsing the comment above the keyword " +
                                         keyword->GetName(),
                                     Service::Log::Warning);
        return {};
    }
    // A header can only stand above the first keyword; the look goes one keyword further.
    if (stripHeader && (ahead == nullptr || IsFirstOnDisk(*ahead))) StripGeneratedBlock(comment);
    return comment;
}

} // namespace Tarn::Fjel::Core::DeckManager

// The part of the scanner that deals with comments, and turns lines into comments, suppressed lines and back.

#include <deckmanager/LineReaderUtil.h>

#include <deckmanager/Environment.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/Strings.h>

#include "text/LineSource.h"
#include "text/LineStreamReader.h"

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// Cuts the comment at its first blank line.
void KeepFirstParagraph(std::string& comment)
{
    LineStreamReader lines;
    lines.AttachText(comment);
    std::string_view line;
    long long end = 0;
    while (lines.NextLineView(line, nullptr)) {
        if (Service::AllBlanks(line)) {
            std::string paragraph;
            lines.ReadRange(0, end, paragraph);
            Service::StringTrimBlank(paragraph);
            comment = std::move(paragraph);
            return;
        }
        end = lines.Tell();
    }
}

} // namespace

bool LineReaderUtil::ExtractComment(ILineReader* reader, long long pos, long long size, std::string& comment)
{
    comment.clear();
    if (!AdvanceToNonTagLine(reader, pos, size, nullptr, false)) return false;

    const long long last = pos + size - 1;
    const long long start = reader->Tell();
    LineSource source(*reader);
    std::string_view line;
    long long dataPos = 0;
    const long long end = source.NextData(line, &dataPos, true) ? dataPos - 1 : last;
    if (end < start) return false;

    reader->ReadRange(start, end, comment);
    if (end >= last && !VeldaneDeckInfo::BeginsWithCommentMarker(comment)) {
        comment.clear();
        return false;
    }
    Service::StringTrimBlank(comment);
    KeepFirstParagraph(comment);
    return !comment.empty();
}

bool LineReaderUtil::CheckForCommentIssues(ILineReader& reader, std::string& dataLine, long long& pos)
{
    const long long start = reader.Tell();
    bool result = false;
    std::string line;
    while (reader.ReadNextLine(line, nullptr, true) && !reader.Eof()) {
        if (IsAKeyword(line)) break;
        if (!IsACommentedOutKeyword(line)) continue;
        if (!reader.ReadNextDataLine(line, nullptr, true) || reader.Eof() || IsAKeyword(line)) break;
        dataLine = line;
        pos = reader.Tell();
        result = true;
        break;
    }
    reader.Seek(start, 0);
    return result;
}

void LineReaderUtil::CommentLines(std::string& text)
{
    if (!text.empty()) FastStringReplace(text, "\n", VeldaneDeckInfo::COMMENT_MARKER, false);
}

void LineReaderUtil::SuppressLines(std::string& text)
{
    if (text.empty()) return;
    const char* marker =
        Environment::Instance().IsQUORLDeck() ? VeldaneDeckInfo::QUORL_MARKER : VeldaneDeckInfo::SUPPRESS_MARKER;
    FastStringReplace(text, "\n", marker, true);
}

void LineReaderUtil::ActivateLines(std::string& text)
{
    std::string result;
    result.reserve(text.size());
    std::string_view rest = text;
    while (!rest.empty()) {
        rest = VeldaneDeckInfo::SkipSuppressMarker(rest);
        const std::size_t lineEnd = rest.find('\n');
        const std::string_view line = rest.substr(0, lineEnd == std::string_view::npos ? rest.size() : lineEnd + 1);
        result.append(line);
        rest.remove_prefix(line.size());
    }
    text = std::move(result);
}

/// Puts `to` ahead of each part of the text that `from` ends, and behind the last of them. With `keepExisting` a part
/// that begins with it already stays as it is.
void LineReaderUtil::FastStringReplace(std::string& text, std::string_view from, std::string_view to, bool keepExisting)
{
    if (text.empty()) return;
    std::string result;
    std::string_view rest = text;
    while (!rest.empty()) {
        const std::size_t found = from.empty() ? std::string_view::npos : rest.find(from);
        const std::string_view part =
            rest.substr(0, found == std::string_view::npos ? rest.size() : found + from.size());
        if (!keepExisting || !part.starts_with(to)) result.append(to);
        result.append(part);
        rest.remove_prefix(part.size());
    }
    if (!from.empty() && std::string_view(text).ends_with(from)) result.append(to);
    text = std::move(result);
}

} // namespace Tarn::Fjel::Core::DeckManager

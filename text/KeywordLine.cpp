#include "text/KeywordLine.h"

#include <algorithm>

#include "text/LineStreamReader.h"
#include "text/ScannedKeyword.h"
#include "text/TagRecognisers.h"
#include <deckmanager/Environment.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

bool MoveToLine(LineStreamReader& lines, long long position)
{
    if (position == 0) return lines.Seek(0, 0);
    char before = 0;
    if (position < 0 || !lines.Seek(position - 1, 0) || lines.ReadRaw(&before, 1) != 1) return false;
    if (before == '\n') return true;
    constexpr std::string_view mark = LineStreamReader::ByteOrderMark;
    return position == static_cast<long long>(mark.size()) && before == mark.back();
}

std::string_view FirstWord(std::string_view text)
{
    std::size_t size = 0;
    while (size < text.size() && !VeldaneDeckInfo::IsSpace(text[size]))
        ++size;
    return text.substr(0, size);
}

void LookForTagLine(LineStreamReader* lines, ScannedKeyword& found)
{
    found.tagged = found.lineHasTag;
    found.tagKnown = found.lineHasTag;
    if (found.tagKnown || !lines) return;

    bool whole = false;
    std::string_view ahead = lines->Ahead(whole);
    while (!ahead.empty()) {
        const std::size_t lineEnd = ahead.find('\n');
        if (lineEnd == std::string_view::npos && !whole && ahead.size() <= LineStreamReader::MaxLineLength) return;
        const std::string_view line = ahead.substr(0, std::min(lineEnd, LineStreamReader::MaxLineLength));
        const std::string_view text = VeldaneDeckInfo::SkipSuppressMarker(line);
        if (!Service::AllBlanks(text)) {
            found.tagKnown = true;
            found.tagged = IsKeywordTagLine(text) || IsFileTagLine(text);
            return;
        }
        if (lineEnd == std::string_view::npos) break;
        ahead.remove_prefix(lineEnd + 1);
    }
    found.tagKnown = whole;
}

bool ReadKeywordLine(LineStreamReader& lines, long long position, std::string_view name, ScannedKeyword& found)
{
    std::string_view line;
    if (!MoveToLine(lines, position) || !lines.NextLineView(line, nullptr)) return false;
    const std::string_view text = VeldaneDeckInfo::SkipSuppressMarker(line);
    found.suppressed = text.size() != line.size();
    if (found.suppressed && !Environment::Instance().KeywordSuppressionEnabled()) return false;
    const std::string_view word = FirstWord(text);
    if (!Service::NoCaseStringEqual(word, name) &&
        !(name.size() == SignificantCharacters && word.size() > name.size() &&
          Service::NoCaseStringEqual(word.substr(0, name.size()), name)))
    {
        return false;
    }
    found.lineHasTag = ContainsKeywordTag(line);
    LookForTagLine(&lines, found);
    return true;
}

} // namespace Tarn::Fjel::Core::DeckManager

#include "keywords/CommentText.h"

#include <string_view>

#include "text/TagRecognisers.h"
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

bool ReadsAsAnotherMark(std::string_view line)
{
    const std::string comment = VeldaneDeckInfo::COMMENT_MARKER + std::string(line);
    return VeldaneDeckInfo::BeginsWithSuppressMarker(comment) || IsKeywordTagLine(comment) || IsFileTagLine(comment);
}

} // namespace

std::string AsComment(std::string text)
{
    if (text.empty()) return text;
    // The end of the last line begins no further one.
    const bool ended = text.back() == '\n';
    if (ended) text.pop_back();
    for (std::size_t line = 0; line <= text.size();) {
        const std::size_t end = std::min(text.find('\n', line), text.size());
        if (ReadsAsAnotherMark(std::string_view(text).substr(line, end - line))) {
            text.insert(line, 1, ' ');
        } else {
            line = end + 1;
        }
    }
    if (text.empty())
        text = VeldaneDeckInfo::COMMENT_MARKER;
    else
        LineReaderUtil::CommentLines(text);
    if (ended) text += '\n';
    return text;
}

std::string OnLinesOfTheirOwn(std::string first, const std::string& second)
{
    if (!first.empty() && !second.empty() && first.back() != '\n') first += '\n';
    return first.append(second);
}

} // namespace Tarn::Fjel::Core::DeckManager

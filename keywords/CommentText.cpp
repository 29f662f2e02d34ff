#include "keywords/CommentText.h"

#include <algorithm>

#include "text/TagRecognisers.h"
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/Strings.h>

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

std::string AsCommentLines(std::string_view text)
{
    std::string lines;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const std::string_view content = Service::Trimmed(line);
        std::string_view comment = Service::TrimmedRight(line);
        if (VeldaneDeckInfo::BeginsWithCommentMarker(content))
            comment = content.substr(VeldaneDeckInfo::CommentMarker().size());
        if (!content.empty())
            lines += comment.empty() ? VeldaneDeckInfo::COMMENT_MARKER : AsComment(std::string(comment));
        lines += '\n';
    }
    return lines;
}

std::string OnLinesOfTheirOwn(std::string first, const std::string& second)
{
    if (!first.empty() && !second.empty() && first.back() != '\n') first += '\n';
    return first.append(second);
}

} // namespace Tarn::Fjel::Core::DeckManager

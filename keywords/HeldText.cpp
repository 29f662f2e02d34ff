#include "keywords/HeldText.h"

#include <algorithm>
#include <vector>

#include "keywords/DataLine.h"
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// The lines that aren't blank, without suppress markers, which a held text may have lost, and blanks at their ends.
std::vector<std::string_view> LinesOf(std::string_view text)
{
    std::vector<std::string_view> lines;
    for (std::size_t at = 0; at < text.size(); at = BehindLine(text, at)) {
        const std::string_view line =
            Service::TrimmedRight(VeldaneDeckInfo::SkipSuppressMarker(text.substr(at, BehindLine(text, at) - at)));
        if (!line.empty()) lines.push_back(line);
    }
    return lines;
}

/// Where the lines begin with which the text ends; npos when it ends with others, or there are none.
std::size_t FindAtEnd(std::string_view text, const std::vector<std::string_view>& lines)
{
    if (lines.empty()) return std::string_view::npos;
    std::size_t end = text.size();
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        end = Service::TrimmedRight(text.substr(0, end)).size();
        if (end == 0) return std::string_view::npos;
        const std::size_t feed = text.rfind('\n', end - 1);
        const std::size_t begin = feed == std::string_view::npos ? 0 : feed + 1;
        if (VeldaneDeckInfo::SkipSuppressMarker(text.substr(begin, end - begin)) != *line)
            return std::string_view::npos;
        end = begin;
    }
    return end;
}

} // namespace

bool HeldText::BeginsWithComment(std::string_view text)
{
    return VeldaneDeckInfo::BeginsWithCommentMarker(Service::TrimmedLeft(text));
}

std::string HeldText::CommentsAtHead(std::string_view text)
{
    std::size_t end = 0;
    while (end < text.size() && !IsDataLine(text.substr(end, BehindLine(text, end) - end)))
        end = BehindLine(text, end);
    return std::string(text.substr(0, end));
}

HeldText::Rest HeldText::TakeRest(std::string& text, std::string_view rest)
{
    const std::vector<std::string_view> lines = LinesOf(rest);
    if (const std::size_t found = FindAtEnd(text, lines); found != std::string_view::npos) {
        text.resize(found);
        return Rest::Stays;
    }
    const auto isData = [](std::string_view line) { return IsDataLine(line); };
    const auto firstData = std::find_if(lines.begin(), lines.end(), isData);
    if (firstData == lines.end()) return Rest::Stays;

    // The rest is more than comments, and the text has been changed there.
    const std::vector<std::string_view> block(std::find_if(lines.rbegin(), lines.rend(), isData).base(), lines.end());
    if (const std::size_t found = FindAtEnd(text, block); found != std::string_view::npos) {
        text.resize(found);
        return Rest::WithoutBlock;
    }
    // A word that nobody knows tells it from other data; a terminator too many, or a row of numbers, may be like them.
    const auto firstWord =
        std::find_if(firstData, lines.end(), [](std::string_view line) { return Service::IsAlpha(line.front()); });
    const std::vector<std::string_view> textLines = LinesOf(text);
    const std::string_view sought = firstWord != lines.end() ? *firstWord : *firstData;
    const bool hasIt = std::find(textLines.begin(), textLines.end(), sought) != textLines.end();
    return hasIt ? Rest::WithoutBlock : Rest::Stays;
}

} // namespace Tarn::Fjel::Core::DeckManager

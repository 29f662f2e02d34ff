#pragma once

#include <string_view>

#include <deckmanager/Environment.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

/// Whether the line is neither blank nor a comment, as a reader of lines sees it. A suppressed line is as live as
/// suppression is.
inline bool IsDataLine(std::string_view line)
{
    // A reader keeps this much of a line; what lies behind is nobody's data.
    constexpr std::size_t lineLimit = 1024;
    std::string_view rest = Service::TrimmedLeft(line.substr(0, lineLimit));
    if (rest.empty()) return false;
    if (!VeldaneDeckInfo::BeginsWithCommentMarker(rest)) return true;
    if (!VeldaneDeckInfo::BeginsWithSuppressMarker(rest) || !Environment::Instance().KeywordSuppressionEnabled())
        return false;
    rest = VeldaneDeckInfo::SkipSuppressMarker(rest);
    return !VeldaneDeckInfo::BeginsWithCommentMarker(rest) && !Service::AllBlanks(rest);
}

/// The end of the line that begins at `begin`, its line end included.
inline std::size_t BehindLine(std::string_view text, std::size_t begin)
{
    const std::size_t feed = text.find('\n', begin);
    return feed == std::string_view::npos ? text.size() : feed + 1;
}

} // namespace Tarn::Fjel::Core::DeckManager

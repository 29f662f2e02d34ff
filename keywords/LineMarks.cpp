#include "keywords/LineMarks.h"

#include "keywords/DataLine.h"
#include <deckmanager/Environment.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

std::string MarkLines(std::string_view text, LineMark mark)
{
    std::string_view marker = VeldaneDeckInfo::COMMENT_MARKER;
    if (mark == LineMark::Suppress) {
        marker =
            Environment::Instance().IsQUORLDeck() ? VeldaneDeckInfo::QUORL_MARKER : VeldaneDeckInfo::SUPPRESS_MARKER;
    }
    std::string marked;
    marked.reserve(text.size() + text.size() / 8);
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = BehindLine(text, at);
        const std::string_view line = text.substr(at, end - at);
        const bool stays =
            mark == LineMark::Suppress && VeldaneDeckInfo::BeginsWithSuppressMarker(Service::TrimmedLeft(line));
        if (!stays && IsDataLine(line)) marked.append(marker);
        marked.append(line);
        at = end;
    }
    return marked;
}

} // namespace Tarn::Fjel::Core::DeckManager

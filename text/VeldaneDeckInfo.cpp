#include <deckmanager/VeldaneDeckInfo.h>

namespace Tarn::Fjel::Core::DeckManager {

const std::string& VeldaneDeckInfo::CommentMarker()
{
    static const std::string marker = COMMENT_MARKER;
    return marker;
}

const std::string& VeldaneDeckInfo::SuppressMarker()
{
    static const std::string marker = SUPPRESS_MARKER;
    return marker;
}

const std::string& VeldaneDeckInfo::QUORLMarker()
{
    static const std::string marker = QUORL_MARKER;
    return marker;
}

} // namespace Tarn::Fjel::Core::DeckManager

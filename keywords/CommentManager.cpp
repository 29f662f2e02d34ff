#include "keywords/CommentManager.h"

#include "keywords/Keyword.h"
#include "text/KeywordFileReader.h"
#include <deckmanager/ILineReader.h>
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

CommentManager::CommentManager(const Keyword* keyword)
{
    if (keyword == nullptr || !keyword->HasValidExtent()) return;
    const std::unique_ptr<ILineReader> reader = keyword->Reader()->OpenLineReader(false);
    if (!reader || !LineReaderUtil::ExtractComment(reader.get(), keyword->Position(), keyword->Size(), m_comment))
        return;

    const std::string& marker = VeldaneDeckInfo::CommentMarker();
    if (VeldaneDeckInfo::BeginsWithCommentMarker(m_comment.c_str())) m_comment.erase(0, marker.size());
    Service::StringReplace(m_comment, "\n" + marker, "\n");
}

void CommentManager::SetComment(const std::string& text)
{
    if (!m_saved) m_saved = std::make_unique<std::string>(m_comment);
    m_comment = text;
}

void CommentManager::RevertComment()
{
    // A comment that nobody changed stays as it was read.
    if (!m_saved) return;
    m_comment = std::move(*m_saved);
    m_saved.reset();
}

const std::string& CommentManagerDummy::GetComment() const
{
    static const std::string empty;
    return empty;
}

} // namespace Tarn::Fjel::Core::DeckManager

#include "keywords/CommentManager.h"

#include <string_view>

#include "keywords/CommentText.h"
#include "keywords/Keyword.h"
#include "text/ILineWriter.h"
#include "text/KeywordFileReader.h"
#include <deckmanager/ILineReader.h>
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// Takes the comment marker from the head of each line that has one. Those of a suppressed keyword have the suppress
/// marker ahead of it.
std::string WithoutMarkers(std::string_view comment)
{
    std::string text;
    text.reserve(comment.size());
    while (!comment.empty()) {
        std::string_view line = comment.substr(0, comment.find('\n'));
        comment.remove_prefix(line.size());
        if (VeldaneDeckInfo::BeginsWithCommentMarker(VeldaneDeckInfo::SkipSuppressMarker(line)))
            line = VeldaneDeckInfo::SkipSuppressMarker(line);
        if (VeldaneDeckInfo::BeginsWithCommentMarker(line)) line.remove_prefix(VeldaneDeckInfo::CommentMarker().size());
        text.append(line);
        if (comment.empty()) break;
        text += '\n';
        comment.remove_prefix(1);
    }
    return text;
}

} // namespace

CommentManager::CommentManager(const Keyword* keyword)
{
    if (keyword == nullptr || !keyword->HasValidExtent()) return;
    const std::unique_ptr<ILineReader> reader = keyword->Reader()->OpenLineReader(false);
    if (!reader || !LineReaderUtil::ExtractComment(reader.get(), keyword->Position(), keyword->Size(), m_comment))
        return;

    m_comment = WithoutMarkers(m_comment);
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

void CommentManager::WriteComment(ILineWriter& writer) const
{
    writer.WriteText(AsComment(m_comment));
}

const std::string& CommentManagerDummy::GetComment() const
{
    static const std::string empty;
    return empty;
}

} // namespace Tarn::Fjel::Core::DeckManager

#include <deckmanager/KeywordText.h>

#include <algorithm>
#include <memory>
#include <utility>

#include <deckmanager/Environment.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordRawTextMD.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/service/Strings.h>

#include "keywords/DataLine.h"
#include "text/TagRecognisers.h"

namespace Tarn::Fjel::Core::DeckManager {

namespace {

bool IsBlank(std::string_view line)
{
    return Service::AllBlanks(line);
}

} // namespace

KeywordText::KeywordText(const IKeyword& keyword)
{
    const std::shared_ptr<std::string> text = keyword.GetText();
    // A text of hundreds of megabytes is taken over, unless someone else holds it too.
    m_text = text.use_count() == 1 ? std::move(*text) : *text;
    Divide(*keyword.GetSyntax(), keyword.GetName());
}

KeywordText::KeywordText(const Keywords::IKeywordSyntax& syntax, std::string_view name, std::string text)
    : m_text(std::move(text))
{
    Divide(syntax, name);
}

void KeywordText::Divide(const Keywords::IKeywordSyntax& syntax, std::string_view name)
{
    m_ownBegin = KeywordLineBegin();
    m_dataBegin = BehindTagLines(BehindLine(m_text, m_ownBegin));
    const Keywords::IKeywordMD* metadata = syntax.GetMetaData();
    if (Keywords::KeywordUtils::GetMDType(metadata) == Keywords::MDType::RawText) {
        std::string terminator;
        static_cast<const Keywords::IKeywordRawTextMD*>(metadata)->GetTerminator(terminator);
        m_ownEnd = BehindRawText(terminator);
    } else {
        m_ownEnd = BehindLastDataLine();
        if (m_ownEnd == 0) m_ownEnd = name == "TITLE" ? BehindLine(m_text, m_dataBegin) : BehindComment();
    }
    m_ownEnd = std::max(m_ownEnd, m_dataBegin);
}

/// 0 when no line is one: then the whole keyword is a comment.
std::size_t KeywordText::KeywordLineBegin() const
{
    for (std::size_t at = 0; at < m_text.size(); at = BehindLine(m_text, at)) {
        const std::string_view line = std::string_view(m_text).substr(at, BehindLine(m_text, at) - at);
        if (IsDataLine(line) || VeldaneDeckInfo::BeginsWithSuppressMarker(line)) return at;
    }
    return 0;
}

/// Behind the tag lines at `begin`, and the blank lines ahead of them; `begin` when there is no tag line.
std::size_t KeywordText::BehindTagLines(std::size_t begin) const
{
    std::size_t behind = begin;
    for (std::size_t at = begin; at < m_text.size();) {
        const std::size_t end = BehindLine(m_text, at);
        const std::string_view line = std::string_view(m_text).substr(at, end - at);
        if (IsKeywordTagLine(line) || IsFileTagLine(line))
            behind = end;
        else if (behind != begin || !IsBlank(line))
            break;
        at = end;
    }
    return behind;
}

std::size_t KeywordText::BehindRawText(std::string_view terminator) const
{
    if (terminator.empty()) return m_text.size();
    const bool suppressionEnabled = Environment::Instance().KeywordSuppressionEnabled();
    for (std::size_t at = m_dataBegin; at < m_text.size(); at = BehindLine(m_text, at)) {
        std::string_view line = std::string_view(m_text).substr(at, BehindLine(m_text, at) - at);
        if (suppressionEnabled) line = VeldaneDeckInfo::SkipSuppressMarker(line);
        if (line.starts_with(terminator)) return BehindLine(m_text, at);
    }
    return m_text.size();
}

/// 0 when there is no data line. Goes backwards, so that its cost is that of the block and not of the data.
std::size_t KeywordText::BehindLastDataLine() const
{
    const std::string_view text = m_text;
    for (std::size_t end = text.size(); end > m_dataBegin;) {
        const std::size_t feed = end < 2 ? std::string_view::npos : text.rfind('\n', end - 2);
        const std::size_t begin = std::max(feed == std::string_view::npos ? 0 : feed + 1, m_dataBegin);
        if (IsDataLine(text.substr(begin, end - begin))) return end;
        end = begin;
    }
    return 0;
}

std::size_t KeywordText::BehindComment() const
{
    const std::string_view text = m_text;
    if (!VeldaneDeckInfo::BeginsWithCommentMarker(text.substr(m_dataBegin))) return m_dataBegin;
    std::size_t at = m_dataBegin;
    while (at < text.size() && !IsBlank(text.substr(at, BehindLine(text, at) - at)))
        at = BehindLine(text, at);
    return at;
}

} // namespace Tarn::Fjel::Core::DeckManager

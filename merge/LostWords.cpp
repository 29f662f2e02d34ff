#include "merge/LostWords.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include "keywords/IKeywordOwner.h"
#include "keywords/Keyword.h"
#include "text/KeywordFileReader.h"
#include <deckmanager/ILineReader.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

constexpr std::size_t longestName = 8;

/// The word at column 1 that stands alone on its line, comments aside; empty for none. Behind a keyword without data
/// any words are.
std::string_view LoneWord(std::string_view line, bool hasData)
{
    if (!hasData) {
        const std::string_view words = Service::Trimmed(line);
        const bool saysNothing =
            words.starts_with(VeldaneDeckInfo::TERMINATION) || VeldaneDeckInfo::BeginsWithCommentMarker(words);
        return saysNothing ? std::string_view() : words;
    }
    if (line.empty() || !Service::IsAlpha(line.front())) return {};
    std::size_t size = 0;
    while (size < line.size() && (Service::IsAlpha(line[size]) || Service::IsDigit(line[size]) || line[size] == '_' ||
                                  (line[size] == '-' && line.substr(size, 2) != VeldaneDeckInfo::COMMENT_MARKER)))
        ++size;
    const std::string_view rest = Service::Trimmed(line.substr(size));
    const bool isAlone = rest.empty() || rest.starts_with(VeldaneDeckInfo::COMMENT_MARKER);
    return isAlone && size <= longestName ? line.substr(0, size) : std::string_view();
}

std::size_t BehindLine(std::string_view text, std::size_t begin)
{
    return std::min(text.find('\n', begin), text.size() - 1) + 1;
}

} // namespace

std::optional<LostWord> FindLostWord(const Keyword& keyword)
{
    const IKeywordOwner* owner = keyword.Owner();
    if (!keyword.HasValidExtent() || owner == nullptr) return std::nullopt;
    std::shared_ptr<ILineReader> reader = owner->OpenedReader(*keyword.Reader());
    if (!reader) reader = keyword.Reader()->OpenLineReader(false);
    if (!reader) return std::nullopt;
    std::string text(static_cast<std::size_t>(keyword.Size()), '\0');
    reader->Seek(keyword.Position(), 0);
    text.resize(static_cast<std::size_t>(std::max<std::int64_t>(reader->ReadRaw(text.data(), keyword.Size()), 0)));
    const std::string_view view = text;
    const bool hasData = keyword.GetSyntax()->GetMetaData() != nullptr;
    // Most keywords hold no such word at all, and need no read of their data.
    std::size_t begin = text.empty() ? 0 : BehindLine(view, 0);
    while (begin < text.size() && LoneWord(view.substr(begin, BehindLine(view, begin) - begin), hasData).empty())
        begin = BehindLine(view, begin);
    if (begin >= text.size()) return std::nullopt;
    begin = std::max(begin, static_cast<std::size_t>(keyword.OwnSize(owner->RootContext())));
    for (; begin < text.size(); begin = BehindLine(view, begin)) {
        const std::string_view word = LoneWord(view.substr(begin, BehindLine(view, begin) - begin), hasData);
        if (word.empty()) continue;
        const auto lines = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(begin), '\n');
        return LostWord{std::string(word), keyword.GetLine() + static_cast<int>(lines)};
    }
    return std::nullopt;
}

} // namespace Tarn::Fjel::Core::DeckManager

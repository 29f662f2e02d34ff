#include "keywords/SlotPlaces.h"

#include <algorithm>

#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/service/Strings.h>

#include "keywords/KeywordDataStore.h"

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;

namespace {

/// How many values a token stands for by its own text.
std::int64_t CopiesOf(std::string_view token)
{
    constexpr std::size_t maxDigits = 9; // more are no count
    std::int64_t count = 0;
    std::size_t digits = 0;
    for (; digits < token.size() && Service::IsDigit(token[digits]); ++digits) {
        if (digits == maxDigits) return 1;
        count = 10 * count + (token[digits] - '0');
    }
    return digits > 0 && digits < token.size() && token[digits] == VeldaneDeckInfo::REPEAT_CHAR ? count : 1;
}

bool IsItemList(const Keywords::IKeywordData& container)
{
    return container.GetType() == MDType::List &&
           Keywords::KeywordUtils::IsItemMDType(
               static_cast<const Keywords::IKeywordListData&>(container).GetElementType());
}

} // namespace

SlotPlaces::SlotPlaces(const Keywords::IKeywordData& root, std::string_view text, std::vector<int> way,
                       std::int64_t wanted)
    : m_root(&root), m_text(text), m_way(std::move(way)), m_wanted(wanted)
{
}

SlotPlaces::Token SlotPlaces::Find(std::int64_t index) const
{
    const auto found =
        std::find_if(m_tokens.rbegin(), m_tokens.rend(), [&](const auto& t) { return t.first == index; });
    return found == m_tokens.rend() ? Token{} : found->second;
}

/// Elements are reached by their numbers: those that the reader makes on trial, and takes away again, are never taken
/// for others.
bool SlotPlaces::IsSought(const Keywords::IKeywordData& container) const
{
    const Keywords::IKeywordData* at = m_root;
    for (const int step : m_way) {
        if (at->GetType() == MDType::List) {
            const auto& list = static_cast<const Keywords::IKeywordListData&>(*at);
            if (IsItemList(list) || step >= list.GetElementCount()) return false;
            at = &list.GetContainer(step);
        } else if (at->GetType() == MDType::Record) {
            at = &static_cast<const Keywords::IKeywordRecordData&>(*at).GetContainer(step);
        } else {
            return false;
        }
    }
    return at == &container;
}

void SlotPlaces::Begin(const Keywords::IKeywordData& container)
{
    if (m_open || !IsSought(container)) return;
    m_open = &container;
    m_openIsItemList = IsItemList(container);
    m_met = true;
    m_endsWithTerminator = false;
    m_first = m_last = m_lastValue = Token{};
    m_tokens.clear();
}

void SlotPlaces::End(const Keywords::IKeywordData& container, const KeywordDataStore& store)
{
    if (m_open != &container) return;
    m_open = nullptr;
    const KeywordDataStore::TracedToken& last = store.LastToken();
    if (last.linePosition < 0) return;
    m_last = PlaceOf(last.linePosition, {}, last.begin, last.end);
    m_endsWithTerminator = TextOf(m_last) == VeldaneDeckInfo::TERMINATION_TOKEN;
    if (!m_first.IsKnown()) m_first = m_last;
}

SlotPlaces::Token SlotPlaces::Taken(std::int64_t run, const KeywordDataStore& store)
{
    const KeywordDataStore::TracedToken& last = store.LastToken();
    Token token = PlaceOf(last.linePosition, store.Line(), last.begin, last.end);
    token.copies = CopiesOf(TextOf(token));
    token.copy = std::max<std::int64_t>(token.copies - store.CopiesToCome() - run, 0);
    return token;
}

void SlotPlaces::Note(const Keywords::IKeywordData& container, std::int64_t index, std::int64_t run,
                      const KeywordDataStore& store)
{
    if (m_open) Note(container, index, run, Taken(run, store));
}

void SlotPlaces::Note(const Keywords::IKeywordData& container, std::int64_t index, std::int64_t linePosition,
                      std::string_view line, std::size_t begin, std::size_t end)
{
    if (m_open) Note(container, index, 1, PlaceOf(linePosition, line, begin, end));
}

void SlotPlaces::Note(const Keywords::IKeywordData& container, std::int64_t index, std::int64_t run, const Token& token)
{
    if (!m_open) return;
    if (!m_first.IsKnown()) m_first = token;
    m_lastValue = token;
    if (m_open != &container) return;
    const auto keep = [&](std::int64_t slot) {
        Token of = token;
        of.copy += slot - index;
        m_tokens.emplace_back(slot, of);
    };
    if (m_openIsItemList) {
        if (index <= m_wanted && m_wanted < index + run) keep(m_wanted);
        return;
    }
    for (std::int64_t copy = 0; copy < std::min<std::int64_t>(run, 10000); ++copy)
        keep(index + copy);
}

std::int64_t SlotPlaces::UnnotedLimit(const Keywords::IKeywordData& list, std::int64_t index) const
{
    constexpr std::int64_t all = std::numeric_limits<std::int64_t>::max();
    if (!m_open) return all;
    if (m_open != &list) return index;
    if (index < m_wanted) return m_wanted;
    return index == m_wanted ? index : all;
}

std::string_view SlotPlaces::TextOf(const Token& token) const
{
    if (token.begin < 0 || token.end < token.begin || token.end > static_cast<std::int64_t>(m_text.size())) return {};
    return m_text.substr(static_cast<std::size_t>(token.begin), static_cast<std::size_t>(token.end - token.begin));
}

/// A line reaches the reader without the suppress markers at its head, and cut at its end.
SlotPlaces::Token SlotPlaces::PlaceOf(std::int64_t linePosition, std::string_view line, std::size_t begin,
                                      std::size_t end)
{
    Token token;
    if (linePosition < 0 || linePosition > static_cast<std::int64_t>(m_text.size())) {
        m_reliable = false;
        return token;
    }
    const std::string_view raw = m_text.substr(static_cast<std::size_t>(linePosition));
    const std::string_view seen = VeldaneDeckInfo::SkipSuppressMarker(raw);
    if (!seen.starts_with(line)) m_reliable = false;
    const auto head = linePosition + static_cast<std::int64_t>(raw.size() - seen.size());
    token.begin = head + static_cast<std::int64_t>(begin);
    token.end = head + static_cast<std::int64_t>(end);
    return token;
}

} // namespace Tarn::Fjel::Core::DeckManager

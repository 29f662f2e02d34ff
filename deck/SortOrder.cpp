#include "deck/SortOrder.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <queue>
#include <set>
#include <string>

#include <deckmanager/IKeyword.h>
#include <tarn/keywords/IKeywordSyntax.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

using Keywords::SectionType;
using RuleNames = std::set<std::string, std::less<>>;

constexpr std::size_t noName = std::numeric_limits<std::size_t>::max();

/// The rules between the keywords that are there: for each kind the names that it waits for.
class RulesBetween
{
public:
    RulesBetween(const KeywordKinds& keywords, SectionType section) : m_waitsFor(keywords.Kinds().size())
    {
        const std::vector<KeywordKinds::Kind>& kinds = keywords.Kinds();
        std::unordered_map<std::string_view, std::size_t> numbers;
        for (const std::string_view name : keywords.Names())
            numbers.emplace(name, numbers.size());
        std::vector<bool> isNamed(numbers.size(), false);
        for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
            if (!kinds[kind].syntax->HasOrderingRules()) continue;
            for (const std::string& name : kinds[kind].syntax->GetPredecessors(section)) {
                const auto found = numbers.find(name);
                if (found == numbers.end()) continue;
                m_waitsFor[kind].push_back(found->second);
                isNamed[found->second] = true;
            }
        }
        m_takesPart.resize(kinds.size());
        for (std::size_t kind = 0; kind < kinds.size(); ++kind)
            m_takesPart[kind] = isNamed[kinds[kind].name] || !m_waitsFor[kind].empty();
    }

    /// The names that keywords of the kind wait for, by number; their own may be among them.
    const std::vector<std::size_t>& WaitsFor(std::size_t kind) const { return m_waitsFor[kind]; }
    bool TakesPart(std::size_t kind) const { return m_takesPart[kind]; }
    bool Any() const { return std::find(m_takesPart.begin(), m_takesPart.end(), true) != m_takesPart.end(); }

private:
    std::vector<std::vector<std::size_t>> m_waitsFor;
    std::vector<bool> m_takesPart;
};

/// Gives out the keywords that wait for no other. Keywords of a kind wait for the same, so they are counted together
/// and stand in one queue.
class WaitingKeywords
{
public:
    WaitingKeywords(const KeywordKinds& keywords, const RulesBetween& rules)
        : m_keywords(keywords), m_queues(keywords.Kinds().size()), m_names(keywords.Names().size())
    {
        const std::vector<std::uint32_t>& kindAt = keywords.KindAt();
        for (std::size_t place = 0; place < kindAt.size(); ++place) {
            if (!rules.TakesPart(kindAt[place])) continue;
            m_queues[kindAt[place]].places.push_back(place);
            ++m_names[keywords.NameAt(place)].left;
            ++m_count;
        }
        for (std::size_t kind = 0; kind < m_queues.size(); ++kind) {
            if (rules.TakesPart(kind)) Watch(kind, rules.WaitsFor(kind));
        }
    }

    std::vector<std::size_t> TakeAll()
    {
        std::vector<std::size_t> order;
        order.reserve(m_count);
        while (!m_ready.empty()) {
            const auto [place, kind] = m_ready.top();
            m_ready.pop();
            order.push_back(place);
            Queue& queue = m_queues[kind];
            if (++queue.next < queue.places.size()) m_ready.emplace(queue.places[queue.next], kind);
            Name& name = m_names[m_keywords.Kinds()[kind].name];
            --name.left;
            if (name.left == 1) Tell(name.ownFollowers);
            if (name.left == 0) Tell(name.followers);
        }
        return order;
    }

private:
    struct Queue
    {
        std::vector<std::size_t> places; // in their order
        std::size_t next = 0;
        std::size_t waitsFor = 0; ///< so many names
    };
    struct Name
    {
        std::size_t left = 0;
        std::vector<std::size_t> followers;    ///< kinds that wait until no keyword of the name is left
        std::vector<std::size_t> ownFollowers; ///< kinds of the name itself: each keyword waits for the others
    };

    void Watch(std::size_t kind, const std::vector<std::size_t>& names)
    {
        for (const std::size_t number : names) {
            Name& name = m_names[number];
            const bool isOwn = number == m_keywords.Kinds()[kind].name;
            if (isOwn && name.left == 1) continue;
            (isOwn ? name.ownFollowers : name.followers).push_back(kind);
            ++m_queues[kind].waitsFor;
        }
        if (m_queues[kind].waitsFor == 0) Release(kind);
    }

    void Tell(const std::vector<std::size_t>& followers)
    {
        for (const std::size_t kind : followers) {
            if (--m_queues[kind].waitsFor == 0) Release(kind);
        }
    }

    void Release(std::size_t kind) { m_ready.emplace(m_queues[kind].places.front(), kind); }

    using Head = std::pair<std::size_t, std::size_t>; // a place, and its kind

    const KeywordKinds& m_keywords;
    std::vector<Queue> m_queues;
    std::vector<Name> m_names;
    std::size_t m_count = 0;
    std::priority_queue<Head, std::vector<Head>, std::greater<>> m_ready; // the first of each queue that waits for none
};

} // namespace

void KeywordKinds::Add(const IKeyword& keyword)
{
    const Keywords::IKeywordSyntax* syntax = keyword.GetSyntax();
    const std::string& name = keyword.GetName();
    // Most keywords are of the kind of one just before.
    constexpr std::size_t lookBack = 8;
    const std::size_t count = m_kindAt.size();
    for (std::size_t back = 1; back <= std::min(lookBack, count); ++back) {
        const std::uint32_t kind = m_kindAt[count - back];
        if (m_kinds[kind].syntax != syntax || m_names[m_kinds[kind].name] != name) continue;
        m_kindAt.push_back(kind);
        return;
    }
    const auto [number, isNewName] = m_nameNumbers.try_emplace(name, m_names.size());
    if (isNewName) m_names.push_back(name);
    const auto [kind, isNew] =
        m_kindNumbers.try_emplace({syntax, number->second}, static_cast<std::uint32_t>(m_kinds.size()));
    if (isNew) m_kinds.push_back({syntax, number->second});
    m_kindAt.push_back(kind->second);
}

std::vector<std::size_t> SortOrder(const KeywordKinds& keywords, SectionType section)
{
    const RulesBetween rules(keywords, section);
    if (!rules.Any()) return {};
    return WaitingKeywords(keywords, rules).TakeAll();
}

} // namespace Tarn::Fjel::Core::DeckManager

#include "deck/SortOrder.h"

#include <algorithm>
#include <functional>
#include <map>
#include <queue>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include <deckmanager/IKeyword.h>
#include <tarn/keywords/IKeywordSyntax.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

using Keywords::IKeywordSyntax;
using Keywords::SectionType;
using Names = std::set<std::string, std::less<>>;

/// Gives out the keywords that wait for no other. Keywords of one syntax and one name wait for the same, so they are
/// counted together: a deck has many keywords and few names.
class WaitingKeywords
{
public:
    WaitingKeywords(SectionType section, std::size_t places) : m_section(section), m_nameAt(places) {}

    void Add(std::size_t place, const IKeyword& keyword)
    {
        Name& name = m_names[keyword.GetName()];
        ++name.left;
        Group& group = m_groups[{keyword.GetSyntax(), &name}];
        group.places.push_back(place);
        m_nameAt[place] = &name;
    }

    std::vector<std::size_t> TakeAll()
    {
        for (auto& [key, group] : m_groups) {
            Watch(*key.first, *key.second, group);
            if (group.waitsFor == 0) Release(group);
        }
        std::vector<std::size_t> order;
        while (!m_ready.empty()) {
            const std::size_t place = m_ready.top();
            m_ready.pop();
            order.push_back(place);
            Name& name = *m_nameAt[place];
            --name.left;
            if (name.left == 1) Tell(name.ownFollowers);
            if (name.left == 0) Tell(name.followers);
        }
        return order;
    }

private:
    struct Group
    {
        std::vector<std::size_t> places;
        std::size_t waitsFor = 0; ///< so many names
    };
    struct Name
    {
        std::size_t left = 0;
        std::vector<Group*> followers;    ///< wait until no keyword of the name is left
        std::vector<Group*> ownFollowers; ///< of the name themselves: each waits for the others
    };

    void Watch(const IKeywordSyntax& syntax, const Name& own, Group& group)
    {
        if (!syntax.HasOrderingRules()) return;
        for (const std::string& predecessor : syntax.GetPredecessors(m_section)) {
            const auto found = m_names.find(predecessor);
            if (found == m_names.end()) continue;
            Name& name = found->second;
            const bool isOwn = &name == &own;
            if (isOwn && name.left == 1) continue;
            (isOwn ? name.ownFollowers : name.followers).push_back(&group);
            ++group.waitsFor;
        }
    }

    void Tell(const std::vector<Group*>& followers)
    {
        for (Group* group : followers) {
            if (--group->waitsFor == 0) Release(*group);
        }
    }

    void Release(const Group& group)
    {
        for (const std::size_t place : group.places)
            m_ready.push(place);
    }

    SectionType m_section;
    std::unordered_map<std::string_view, Name> m_names; // a name keeps its address
    std::map<std::pair<const IKeywordSyntax*, Name*>, Group> m_groups;
    std::vector<Name*> m_nameAt; // of each place that takes part
    std::priority_queue<std::size_t, std::vector<std::size_t>, std::greater<>> m_ready;
};

} // namespace

std::vector<std::size_t> SortOrder(const std::vector<const IKeyword*>& keywords, SectionType section)
{
    std::unordered_map<const IKeywordSyntax*, const Names*> rules;
    std::unordered_set<std::string_view> required;
    for (const IKeyword* keyword : keywords) {
        const IKeywordSyntax& syntax = *keyword->GetSyntax();
        if (!syntax.HasOrderingRules()) continue;
        const auto [rule, isNew] = rules.try_emplace(&syntax, nullptr);
        if (!isNew) continue;
        rule->second = &syntax.GetPredecessors(section);
        required.insert(rule->second->begin(), rule->second->end());
    }
    if (required.empty()) return {};

    std::unordered_set<std::string_view> present;
    for (const IKeyword* keyword : keywords) {
        if (required.contains(keyword->GetName())) present.insert(keyword->GetName());
    }
    // A rule that names no keyword of the range has nobody take part.
    std::erase_if(rules, [&present](const auto& rule) {
        return std::none_of(rule.second->begin(), rule.second->end(),
                            [&present](const std::string& name) { return present.contains(name); });
    });

    WaitingKeywords waiting(section, keywords.size());
    for (std::size_t place = 0; place < keywords.size(); ++place) {
        const IKeyword& keyword = *keywords[place];
        if (present.contains(keyword.GetName()) || rules.contains(keyword.GetSyntax())) waiting.Add(place, keyword);
    }
    return waiting.TakeAll();
}

} // namespace Tarn::Fjel::Core::DeckManager

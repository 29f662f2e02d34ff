#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordSyntax;
}

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;

/// The keywords of one level, which rules can't tell apart where syntax and name are the same: a deck has many keywords
/// and few kinds of them. Keywords are looked at once, as they are added, and must live as long.
class KeywordKinds
{
public:
    struct Kind
    {
        const Keywords::IKeywordSyntax* syntax;
        std::size_t name; ///< of `Names`
    };

    void Reserve(std::size_t count) { m_kindAt.reserve(count); }
    void Add(const IKeyword& keyword);

    /// Of each keyword, in the order in which they were added.
    const std::vector<std::uint32_t>& KindAt() const { return m_kindAt; }
    std::size_t NameAt(std::size_t place) const { return m_kinds[m_kindAt[place]].name; }
    const Keywords::IKeywordSyntax& SyntaxAt(std::size_t place) const { return *m_kinds[m_kindAt[place]].syntax; }
    const std::vector<Kind>& Kinds() const { return m_kinds; }
    const std::vector<std::string_view>& Names() const { return m_names; }

private:
    std::vector<Kind> m_kinds;
    std::vector<std::string_view> m_names;
    std::vector<std::uint32_t> m_kindAt;
    std::unordered_map<std::string_view, std::size_t> m_nameNumbers;
    std::map<std::pair<const Keywords::IKeywordSyntax*, std::size_t>, std::uint32_t> m_kindNumbers;
};

/// The order that the rules of a section want of some keywords: their places, each at most once.
///
/// Those keywords take part that a rule between two of them names. Of those that wait for none of the others, the one
/// that stands first comes out next. Keywords of a ring of rules, and whatever waits for one of them, are left out.
/// Takes n log k for k kinds.
std::vector<std::size_t> SortOrder(const KeywordKinds& keywords, Keywords::SectionType section);

} // namespace Tarn::Fjel::Core::DeckManager

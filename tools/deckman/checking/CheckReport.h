#pragma once

#include <array>
#include <cstddef>
#include <deque>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "output/Output.h"

namespace Deckman {

class DeckSession;

/// Something that is wrong with a deck.
struct Finding
{
    std::string_view file;    ///< complete; empty when not known
    int line = -1;            ///< -1 when not known
    std::string_view keyword; ///< empty when it concerns none
    int severity = 0;
    std::string_view text;
};

/// Tells what is wrong with a deck: for machines a line each at once, for people grouped, in the order of the deck, at
/// the end. The same about the same place is told once.
class CheckReport
{
public:
    CheckReport(DeckSession& session, Output& out, bool json) : m_session(session), m_out(out), m_json(json) {}

    /// What concerns files comes in the order in which they are named here.
    void AddFile(const std::string& name)
    {
        std::size_t& order = m_fileOrder.try_emplace(name, unnamed).first->second;
        if (order == unnamed) order = m_namedFiles++;
    }

    void Add(const Finding& finding);

    /// Prints what has been gathered, and the sum.
    void Finish(long long keywords, long long files);

    int Warnings() const { return m_warnings; }
    int Errors() const { return m_errors; }

private:
    /// Of one kind of message, how many places are shown.
    static constexpr std::size_t shownPlaces = 3;
    /// The order of a file that was not named: behind all others.
    static constexpr std::size_t unnamed = std::numeric_limits<std::size_t>::max();

    /// A deck may have as many groups as keywords: each is one piece of memory, and its text one more.
    struct Place
    {
        const std::string* file = nullptr; ///< of `m_fileOrder`
        int line = -1;
    };
    struct Group
    {
        int severity;
        std::string text; ///< with the keyword's name
        std::array<Place, shownPlaces> places;
        long long count = 0;
    };

    void AddJson(const Finding& finding);
    void AddToGroup(const Finding& finding);
    void Print(const Group& group);

    DeckSession& m_session;
    Output& m_out;
    bool m_json;
    std::unordered_map<std::string, std::size_t> m_fileOrder;
    std::size_t m_namedFiles = 0;
    std::unordered_set<std::size_t> m_told; // hashes of findings
    std::deque<Group> m_groups;
    std::map<int, std::unordered_map<std::string_view, Group*>> m_groupOf; // by severity and text
    int m_warnings = 0;
    int m_errors = 0;
};

} // namespace Deckman

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

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
    void AddFile(const std::string& name) { m_fileOrder.try_emplace(name, m_fileOrder.size()); }

    void Add(const Finding& finding);

    /// Prints what has been gathered, and the sum.
    void Finish(long long keywords, long long files);

    int Warnings() const { return m_warnings; }
    int Errors() const { return m_errors; }

private:
    /// Of one kind of message, how many places are shown.
    static constexpr std::size_t shownPlaces = 3;

    struct Place
    {
        std::string file;
        int line;
    };
    struct Group
    {
        int severity;
        std::string text; ///< with the keyword's name
        std::vector<Place> places;
        long long count;
    };

    void AddJson(const Finding& finding);
    void AddToGroup(const Finding& finding);
    void Print(const Group& group);

    DeckSession& m_session;
    Output& m_out;
    bool m_json;
    std::unordered_map<std::string, std::size_t> m_fileOrder;
    std::unordered_set<std::size_t> m_told; // hashes of findings
    std::vector<Group> m_groups;
    std::unordered_map<std::string, std::size_t> m_groupOf; // by severity and text
    int m_warnings = 0;
    int m_errors = 0;
};

} // namespace Deckman

#pragma once

#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include <deckmanager/KeywordIterator.h>
#include <tarn/keywords/SectionType.h>

#include "data/ItemPath.h"

namespace Tarn::Fjel::Core::DeckManager {
class IKeyword;
}

namespace Deckman {

class DeckSession;

/// Which keywords of a deck a place may name.
struct WhereLimits
{
    bool all = false; ///< those behind the deck's end too
    int first = 1;    ///< as `ls` counts, with `all` if that is set
    int last = std::numeric_limits<int>::max();
    std::string said = {}; ///< what these two stand for: " at 2026-11-25"

    bool HoldAll() const { return first <= 1 && last == std::numeric_limits<int>::max(); }
    bool Hold(int index) const { return index >= first && index <= last; }
};

/// A place in a deck, in one of the forms in which a user gives it: a keyword, and perhaps a path to one of its items.
class Where
{
public:
    /// Throws `Failure` with wrong usage for a text that is none of the forms.
    static Where Parse(const std::string& text);

    struct Place
    {
        Tarn::Fjel::Core::DeckManager::KeywordIterator position;
        const Tarn::Fjel::Core::DeckManager::IKeyword* keyword = nullptr;
        int index = 0; ///< as `ls` counts
        ItemPath items;
    };

    /// The keyword at that place, and the path to its item, which is not followed. Throws `Failure`, with the nearest
    /// names, when there is none.
    Place Find(DeckSession& session, const WhereLimits& limits) const;
    /// The same for a verb that works on whole keywords, and refuses a path to an item.
    Place FindKeyword(DeckSession& session, const WhereLimits& limits, std::string_view verb) const;

    /// The place in the index of the session that the limits name.
    struct Spot
    {
        int index = 0;
        ItemPath items;
    };
    Spot FindSpot(DeckSession& session, const WhereLimits& limits) const;

    /// The name of a keyword, where the text gives no more than that: several may bear it.
    std::optional<std::string> NameAlone(const std::string& name) const;

    /// The number of the file of the deck that a user means by `typed`, be it with the end of its path alone. Throws
    /// `Failure` when there is none, or more than one.
    static int FindFile(DeckSession& session, const std::string& typed);

private:
    /// A name, and the path behind it.
    struct Reading
    {
        std::string name;
        ItemPath items;
    };
    /// NAME, NAME#3, SECTION/NAME#3
    struct ByName
    {
        /// A dot may belong to the name or begin the path: the ways to read the text, the longest name first.
        std::vector<Reading> readings;
        int number = 1;
        bool isNumbered = false;
        Tarn::Fjel::Core::Keywords::SectionType section = Tarn::Fjel::Core::Keywords::SectionType::None;
    };
    /// FILE:LINE
    struct ByLine
    {
        std::string file;
        int line = 0;
        ItemPath items;
    };
    /// @17
    struct ByIndex
    {
        int index = 0;
        ItemPath items;
    };

    template <class Form>
    explicit Where(Form form) : m_where(std::move(form))
    {
    }

    static std::optional<ByIndex> ParseIndex(std::string_view text);
    static std::optional<ByLine> ParseLine(std::string_view text);
    static std::optional<ByName> ParseName(std::string_view text);

    static Spot Locate(const ByName& where, DeckSession& session, const WhereLimits& limits);
    static Spot Locate(const ByLine& where, DeckSession& session, const WhereLimits& limits);
    static Spot Locate(const ByIndex& where, DeckSession& session, const WhereLimits& limits);

    std::variant<ByName, ByLine, ByIndex> m_where;
};

} // namespace Deckman

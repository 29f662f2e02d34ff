#pragma once

#include <string>
#include <utility>
#include <variant>

#include <deckmanager/KeywordIterator.h>
#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::DeckManager {
class IKeyword;
}

namespace Deckman {

class DeckSession;

/// A place in a deck, in one of the forms in which a user gives it.
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
    };

    /// The keyword at that place; with `all` also behind the deck's end. Throws `Failure`, with the nearest names, when
    /// there is none.
    Place Find(DeckSession& session, bool all) const;

private:
    /// NAME, NAME#3, SECTION/NAME#3
    struct ByName
    {
        std::string name;
        int number = 1;
        Tarn::Fjel::Core::Keywords::SectionType section = Tarn::Fjel::Core::Keywords::SectionType::None;
    };
    /// FILE:LINE
    struct ByLine
    {
        std::string file;
        int line = 0;
    };
    /// @17
    struct ByIndex
    {
        int index = 0;
    };

    template <class Form>
    explicit Where(Form form) : m_where(std::move(form))
    {
    }

    static Place FindPlace(const ByName& where, DeckSession& session, bool all);
    static Place FindPlace(const ByLine& where, DeckSession& session, bool all);
    static Place FindPlace(const ByIndex& where, DeckSession& session, bool all);

    std::variant<ByName, ByLine, ByIndex> m_where;
};

} // namespace Deckman

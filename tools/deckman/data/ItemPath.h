#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordListData;
class IKeywordMD;
class IKeywordMapData;
class IKeywordRecordData;
} // namespace Tarn::Fjel::Core::Keywords

namespace Deckman {

namespace Keywords = Tarn::Fjel::Core::Keywords;

/// The way from a keyword's data to one item of them, as a user writes it behind a keyword: `[PROD1].ORAT`, `.2.0`.
///
/// A step leads to an item of a record by name or number, to an element of a list by number, to a record of a list
/// also by the first string in it, and to an entry of a map by name or number. Numbers count from 0, case doesn't
/// matter, and what stands in quotes is a name even when it looks like a number.
class ItemPath
{
public:
    struct Step
    {
        std::string text;
        bool isQuoted = false;
    };

    /// Where a path leads: a whole container, or what stands at `index` of one that holds single values.
    struct Item
    {
        const Keywords::IKeywordData* container = nullptr;
        int index = -1; ///< -1: the container itself

        bool IsContainer() const { return index < 0; }
    };

    /// Empty for a text that is no path. The empty text is the path that stays where it is.
    static std::optional<ItemPath> Parse(std::string_view text);

    /// `text` as a step in brackets that is taken for a name whatever it looks like.
    static std::string NamedStep(std::string_view text);

    bool IsEmpty() const { return m_steps.empty(); }
    const std::vector<Step>& Steps() const { return m_steps; }

    /// The number of a path of one step that is a number.
    std::optional<int> AsNumber() const;

    /// What `Find` gives, or throws, for such a path in a list of `count` single values. `alone` holds the value that
    /// it leads to and no other; nothing when it leads to none.
    Item FindAlone(const Keywords::IKeywordListData& alone, int count, std::string_view keyword) const;

    /// The place in the data of a keyword, which `keyword` names in messages. Throws `Failure`, with the nearest names
    /// or the bounds, when there is none.
    Item Find(const Keywords::IKeywordData& data, std::string_view keyword) const;

    /// The same way in numbers, from 0, whatever its steps are called. Throws as `Find` does.
    std::vector<int> Numbers(const Keywords::IKeywordData& data, std::string_view keyword) const;

    /// The same as far as the metadata alone tell it: nothing where a record goes by its name, and for a step that
    /// leads nowhere. How many elements a list has, the metadata don't know.
    std::optional<std::vector<int>> Numbers(const Keywords::IKeywordMD& metadata) const;

private:
    std::vector<Step> m_steps;
};

/// The first string in a record, by which a path may name it; null when it has none. Good until the record changes.
std::optional<std::string_view> NameOfRecord(const Keywords::IKeywordData& record);

} // namespace Deckman

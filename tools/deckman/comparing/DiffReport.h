#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "data/DataValues.h"
#include "data/ItemPath.h"
#include "output/Output.h"
#include "output/Table.h"

namespace Deckman {

/// The differences of two decks, as they are found: for machines a JSON object a line at once, for people a table at
/// the end.
class DiffReport
{
public:
    /// The data of one side that are being compared, and how to read them.
    struct Side
    {
        DataReading reading;
        ValueReader* values = nullptr; ///< of the JSON form
    };

    enum class Kind : unsigned char
    {
        Added,
        Removed,
        Changed,
        Moved,
    };

    DiffReport(Output& out, bool json);

    /// What the next differences belong to, for people: a date of the schedule.
    void SetMoment(std::string moment) { m_moment = std::move(moment); }

    /// A place in the data of either side or both.
    void Tell(Kind kind, const std::string& where, const Side* oldSide, const ItemPath::Item& oldItem,
              const Side* newSide, const ItemPath::Item& newItem);
    /// The same with texts for the values; none is null.
    void TellText(Kind kind, const std::string& where, const std::optional<std::string>& oldText,
                  const std::optional<std::string>& newText);
    void TellNumbers(const std::string& where, double oldValue, double newValue);
    void TellMoved(const std::string& where, int oldIndex, int newIndex);
    /// Beyond those that were told there are so many changed values.
    void TellMore(const std::string& where, long long count);

    bool HasDifferences() const { return m_hasDifferences; }
    bool Closed() const { return m_out.Closed(); }
    void Finish();

private:
    void Begin(Kind kind, const std::string& where);
    void WriteValue(const Side* side, const ItemPath::Item& item);
    void AddRow(std::string_view kind, const std::string& where, std::string_view oldText, std::string_view newText);
    std::string Shown(const Side* side, const ItemPath::Item& item) const;

    Output& m_out;
    std::optional<Table> m_table;
    std::string m_moment;
    bool m_hasDifferences = false;
};

} // namespace Deckman

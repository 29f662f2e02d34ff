#pragma once

#include <string_view>

#include "data/DataValues.h"
#include "data/ItemPath.h"
#include "data/Units.h"
#include "output/Output.h"

namespace Deckman {

/// Prints data, or one item of them, for people: a record as a column of items with their units, records as the rows of
/// a table, a long list in rows that begin with the number of their first value. What was left to a default shows as
/// `1*`, a default that was filled in stands in parentheses. Columns without any value are left out of a table.
///
/// `said` is the place as a user would write it, for the headings of what is nested.
void WriteText(Output& out, const ItemPath::Item& item, std::string_view said, const DataReading& reading,
               UnitSystem units);

} // namespace Deckman

#pragma once

#include "data/DataValues.h"
#include "data/ItemPath.h"
#include "output/Output.h"

namespace Deckman {

/// Prints data, or one item of them, as one JSON value without a line end: a record as an object by item names in item
/// order, a list as an array, a map as an object, raw text as a string. An option goes by its name; a reference to a
/// variable is a string; what has no value is null. An item without a name of its own in its record goes by its number.
///
/// Nothing is built up: a large list is written while it is walked, and no further when nobody reads any more.
void WriteJson(Output& out, const ItemPath::Item& item, const DataReading& reading);

} // namespace Deckman

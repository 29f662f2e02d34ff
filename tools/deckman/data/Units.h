#pragma once

#include <string>
#include <string_view>

namespace Deckman {

/// The systems of units in which a deck may be written.
enum class UnitSystem : unsigned char
{
    Metric,
    Field,
    Lab,
    PvtM
};

/// The unit of a dimension as the catalogue writes it ("length", "permeability*length"); the dimension itself when it
/// is not known, and empty for none.
std::string UnitOf(std::string_view dimension, UnitSystem system);

} // namespace Deckman

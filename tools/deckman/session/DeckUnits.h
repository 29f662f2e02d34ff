#pragma once

#include "data/Units.h"

namespace Deckman {

class DeckSession;

/// The system that the deck's RUNSPEC section names; `Metric` when it names none.
UnitSystem UnitSystemOf(DeckSession& session);

} // namespace Deckman

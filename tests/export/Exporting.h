#pragma once

#include <string>
#include <vector>

#include "tests/support/TestDeck.h"
#include <deckmanager/ExportOptions.h>
#include <deckmanager/ExportReport.h>
#include <deckmanager/LineEnds.h>

namespace ExportTests {

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;

} // namespace ExportTests

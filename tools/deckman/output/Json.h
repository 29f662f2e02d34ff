#pragma once

#include <string>
#include <string_view>

#include "output/Output.h"

namespace Deckman {

/// `text` as a JSON string, quotes included, always valid UTF-8: a byte that is none is taken for a Latin-1 character,
/// as old decks have them in their titles.
std::string JsonString(std::string_view text);
void AppendJsonString(Output& out, std::string_view text);

} // namespace Deckman

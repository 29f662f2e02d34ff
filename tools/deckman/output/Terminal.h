#pragma once

#include <string>
#include <string_view>

namespace Deckman {

/// What stands at the ends of the program's output: people, or a file or another program.
namespace Terminal {

bool IsOutput();
bool IsErrors();
/// Another program reads the output while it is made.
bool IsPiped();

/// Colours are for people: on a terminal that knows them, and never against the user's wish (NO_COLOR).
bool HasColours(bool isTerminal);

/// The columns and rows of the terminal that takes the output.
int Columns();
int Rows();

/// The command that pages long output, or an empty text for none: DECKMAN_PAGER, PAGER or less.
std::string PagerCommand();

} // namespace Terminal

} // namespace Deckman

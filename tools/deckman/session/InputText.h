#pragma once

#include <string>

namespace Deckman {

/// The text of a file, - for standard input, with "\n" line ends and without a byte order mark. Throws `Failure` when
/// it can't be read.
std::string ReadInputText(const std::string& path);

} // namespace Deckman

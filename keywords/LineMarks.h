#pragma once

#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::DeckManager {

enum class LineMark
{
    Comment,
    Suppress
};

/// Puts the mark ahead of each line of a keyword's text that is neither blank nor a comment. Suppressed lines stay as
/// they are when all are to be suppressed.
std::string MarkLines(std::string_view text, LineMark mark);

} // namespace Tarn::Fjel::Core::DeckManager

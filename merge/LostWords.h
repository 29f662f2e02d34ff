#pragma once

#include <optional>
#include <string>

namespace Tarn::Fjel::Core::DeckManager {

class Keyword;

/// A word at the head of a line that looks like a keyword and is none that the catalogue knows.
struct LostWord
{
    std::string word;
    int line; ///< from 1
};

/// The first such word behind a keyword's data: to whoever reads the deck it is text of that keyword. What the data's
/// own reader takes (the names of wells at the heads of lines) doesn't count. Behind a keyword without data any text is
/// one that is neither a comment nor behind a "/".
std::optional<LostWord> FindLostWord(const Keyword& keyword);

} // namespace Tarn::Fjel::Core::DeckManager

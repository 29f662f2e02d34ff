#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "keywords/SlotPlaces.h"

namespace Tarn::Fjel::Core::DeckManager {

/// One place of a text, and what is to stand there instead.
struct TextSplice
{
    std::size_t begin = 0;
    std::size_t end = 0;
    std::string replacement;

    /// Replaces one of the slots that a token stands for; a repeat is split around it.
    static TextSplice Replacing(std::string_view text, const SlotPlaces::Token& token, std::string_view replacement);
    /// Puts a token ahead of that slot, within a repeat if need be.
    static TextSplice InsertingAhead(std::string_view text, const SlotPlaces::Token& token, std::string_view inserted);
    static TextSplice InsertingBehind(const SlotPlaces::Token& token, std::string_view inserted);
    /// Takes a slot away: one copy of a repeat, or a token with the blanks on one side of it; a line that then holds
    /// nothing goes as a whole.
    static TextSplice Removing(std::string_view text, const SlotPlaces::Token& token);

    /// The text with the change made. A line that is changed, and would pass column 132, is broken ahead of it where
    /// blanks part two tokens; `fits` is false when there is no such place.
    std::string Apply(std::string_view text, bool& fits) const;
};

/// Lines of a text.
namespace TextLines {

/// The first byte of the line in which `position` stands.
std::size_t Begin(std::string_view text, std::size_t position);
/// The end of that line, without its line end.
std::size_t End(std::string_view text, std::size_t position);
/// The first byte of the line behind it; the text's size when there is none.
std::size_t Next(std::string_view text, std::size_t position);
/// The first character of the line at `begin` that is neither suppress marker nor blank.
std::size_t FirstOfLine(std::string_view text, std::size_t begin);
/// Nothing but suppress markers stands ahead of `position` in its line.
bool IsAtHead(std::string_view text, std::size_t position);
/// The line end in use where `position` stands; that of the line ahead where the line has none.
std::string_view LineEndAt(std::string_view text, std::size_t position);
/// The line that begins at `begin` would be taken for that of a keyword.
bool LooksLikeKeyword(std::string_view text, std::size_t begin);

} // namespace TextLines

/// `count` copies of a default: "1*" or "n*".
std::string DefaultsToken(std::int64_t count);

} // namespace Tarn::Fjel::Core::DeckManager

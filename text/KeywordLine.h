#pragma once

#include <string_view>

namespace Tarn::Fjel::Core::DeckManager {

class LineStreamReader;
struct ScannedKeyword;

/// A word longer than this is a keyword by its head first.
inline constexpr std::size_t SignificantCharacters = 8;

/// The text up to its first white space.
std::string_view FirstWord(std::string_view text);

/// Looks at the first line ahead that isn't blank. A generated tag there belongs to the keyword whose line has been
/// read. `lines` null: nothing is at hand.
void LookForTagLine(LineStreamReader* lines, ScannedKeyword& found);

/// Whether a line begins at `position`: at the beginning of the text, behind its byte order mark, behind a line end.
/// The reader then stands there.
bool MoveToLine(LineStreamReader& lines, long long position);

/// Whether a live line begins at `position` whose first word is the keyword of that name, in any case of letters and
/// behind suppress markers; `name` is in capitals. `found` then tells what a scan would of its marks.
bool ReadKeywordLine(LineStreamReader& lines, long long position, std::string_view name, ScannedKeyword& found);

} // namespace Tarn::Fjel::Core::DeckManager

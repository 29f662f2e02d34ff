#pragma once

#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::DeckManager {

/// Splits the text of a whole keyword, in the form of a deck file: `name` is the word of its first keyword line, in
/// capitals; `dataText` what stands behind that line and the tag lines that follow it, trimmed at the right; `tagText`
/// the last of these tag lines, else the tag on the keyword line itself. A part that is missing is empty. The lines
/// ahead of the keyword line go to `ahead`, which may be null. False when no keyword line is found.
bool SplitKeywordText(std::string_view text, std::string& name, std::string& dataText, std::string& tagText,
                      std::string* ahead = nullptr);

} // namespace Tarn::Fjel::Core::DeckManager

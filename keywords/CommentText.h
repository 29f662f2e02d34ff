#pragma once

#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::DeckManager {

/// Plain text as comment lines. A line that would read as something else behind the comment marker (a suppressed line,
/// a generated tag) gets a blank ahead.
std::string AsComment(std::string text);

/// The second text begins on a line of its own.
std::string OnLinesOfTheirOwn(std::string first, const std::string& second);

/// The lines as comments, those that are none made such. Blank lines stay. What would read as another mark gets a
/// blank ahead of it.
std::string AsCommentLines(std::string_view text);

} // namespace Tarn::Fjel::Core::DeckManager

#pragma once

#include <string_view>

namespace Tarn::Fjel::Core::DeckManager {

/// The tag of older programs: recognised, never written.
inline constexpr std::string_view OldGeneratedTag = "--!!! Program generated";

/// Whether the line begins, white space aside, with the file tag or the old tag.
bool IsFileTagLine(std::string_view line);

/// Whether the line begins, white space aside, with the keyword tag or the old tag.
bool IsKeywordTagLine(std::string_view line);

/// Whether the keyword tag stands anywhere in the line.
bool ContainsKeywordTag(std::string_view line);

} // namespace Tarn::Fjel::Core::DeckManager

#pragma once

namespace Tarn::Fjel::Core::Keywords {

/// What a keyword does to the reading of a deck; the values of IKeywordSyntax::GetKind().
struct KeywordKind
{
    static constexpr int End = 0;      ///< ends the deck
    static constexpr int EndInc = 1;   ///< ends the file that it stands in
    static constexpr int Include = 2;  ///< brings in a further file
    static constexpr int Ordinary = 3; ///< everything else
    static constexpr int EndSkip = 4;  ///< ends a skipped region
    static constexpr int Section = 5;  ///< opens a section
};

} // namespace Tarn::Fjel::Core::Keywords

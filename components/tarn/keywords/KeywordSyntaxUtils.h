#pragma once

namespace Tarn::Fjel::Core::Keywords {

class IKeywordSyntax;

/// Tells the keywords of skipped regions by their names, in whatever table; false for null.
class KeywordSyntaxUtils
{
public:
    static bool IsSKIP(const IKeywordSyntax* syntax) noexcept;
    static bool IsSKIP100(const IKeywordSyntax* syntax) noexcept;
    static bool IsSKIP300(const IKeywordSyntax* syntax) noexcept;
    static bool IsENDSKIP(const IKeywordSyntax* syntax) noexcept;
};

} // namespace Tarn::Fjel::Core::Keywords

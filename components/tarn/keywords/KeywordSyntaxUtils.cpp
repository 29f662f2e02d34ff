#include <tarn/keywords/KeywordSyntaxUtils.h>

#include <string_view>

#include <tarn/keywords/IKeywordSyntax.h>

namespace Tarn::Fjel::Core::Keywords {

namespace {

bool IsNamed(const IKeywordSyntax* syntax, std::string_view name) noexcept
{
    return syntax && syntax->GetName() == name;
}

} // namespace

bool KeywordSyntaxUtils::IsSKIP(const IKeywordSyntax* syntax) noexcept
{
    return IsNamed(syntax, "SKIP");
}

bool KeywordSyntaxUtils::IsSKIP100(const IKeywordSyntax* syntax) noexcept
{
    return IsNamed(syntax, "SKIP100");
}

bool KeywordSyntaxUtils::IsSKIP300(const IKeywordSyntax* syntax) noexcept
{
    return IsNamed(syntax, "SKIP300");
}

bool KeywordSyntaxUtils::IsENDSKIP(const IKeywordSyntax* syntax) noexcept
{
    return IsNamed(syntax, "ENDSKIP");
}

} // namespace Tarn::Fjel::Core::Keywords

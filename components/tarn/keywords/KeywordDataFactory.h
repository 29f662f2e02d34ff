#pragma once

#include <memory>

#include <tarn/keywords/IKeywordData.h>

namespace Tarn::Fjel::Core::Keywords {

class IKeywordSyntax;

/// Makes the data trees of keywords.
class KeywordDataFactory
{
public:
    static const KeywordDataFactory& Instance();

    /// A tree with everything unset, all nested containers of records included; null for a keyword without data.
    std::unique_ptr<IKeywordData> ConstructSafely(const IKeywordSyntax* syntax) const;
    std::unique_ptr<IKeywordData> ConstructSafely(const IKeywordSyntax& syntax) const;

private:
    KeywordDataFactory() = default;
};

} // namespace Tarn::Fjel::Core::Keywords

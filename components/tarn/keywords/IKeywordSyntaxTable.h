#pragma once

#include <span>
#include <string_view>

#include <tarn/keywords/IKeywordSyntax.h>

namespace Tarn::Fjel::Core::Keywords {

/// What a look-up of a name gives: a view of the table's own memory, good as long as the table.
using SyntaxList = std::span<const IKeywordSyntax* const>;

/// A table of keyword syntaxes. Names are looked up as they stand, in capitals; a look-up allocates nothing.
class IKeywordSyntaxTable
{
public:
    virtual ~IKeywordSyntaxTable() = default;

    /// The first syntax of that name that may stand in the section; null if there is none.
    /// anySimulator false: only a syntax that both S100 and S300 support counts.
    virtual const IKeywordSyntax* FindSyntax(std::string_view name, SectionType section, bool anySimulator) const = 0;

    /// The first syntax of that name; null if there is none.
    virtual const IKeywordSyntax* FindSyntax(std::string_view name, bool anySimulator) const = 0;

    /// All syntaxes of that name, in catalogue order, and behind them those whose name ends in "*" and whose stem
    /// begins the name.
    virtual SyntaxList FindSyntaxes(std::string_view name) const = 0;

    /// All syntaxes of the table, in catalogue order.
    virtual SyntaxList GetSyntaxes() const = 0;
};

} // namespace Tarn::Fjel::Core::Keywords

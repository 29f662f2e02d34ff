#pragma once

#include <functional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <tarn/keywords/KeywordKind.h>
#include <tarn/keywords/SectionType.h>
#include <tarn/keywords/SimulatorType.h>

namespace Tarn::Fjel::Core::Keywords {

class IKeywordMD;

/// What is known of one keyword: where it may stand, what it does and what its data look like.
///
/// A syntax is immutable, is owned by its table and lives as long as it does; a pointer to it is its identity.
class IKeywordSyntax
{
public:
    virtual ~IKeywordSyntax() = default;

    /// The first name, in capitals; ends in "*" for a keyword whose names share a stem only.
    virtual const std::string& GetName() const noexcept = 0;

    /// A keyword of this syntax may be made under any name at all.
    virtual bool AcceptsAnyName() const noexcept = 0;

    /// The keyword's name may be longer than the eight characters that are significant elsewhere.
    virtual bool KeepsLongName() const noexcept = 0;

    /// One of KeywordKind.
    virtual int GetKind() const noexcept = 0;

    /// The simulators that support the keyword, in ascending order; Any isn't among them.
    virtual void GetValidSimulators(std::vector<SimulatorType>& simulators) const = 0;

    /// That name, one of the keyword's, is known to the simulator. Any: to some simulator.
    virtual bool IsNameValidForSimulator(SimulatorType simulator, std::string_view name) const noexcept = 0;

    virtual bool IsSupportedBy(SimulatorType simulator) const noexcept = 0;

    /// The keyword may stand in that section of a deck for that simulator. Never so for SectionType::None.
    virtual bool IsValidForSection(SectionType section, SimulatorType simulator) const noexcept = 0;

    /// The sections in which the keyword may stand, in deck order.
    virtual void GetValidSections(std::vector<SectionType>& sections) const = 0;

    /// The one section that the keyword belongs to; None if it belongs to several.
    virtual SectionType GetSection() const noexcept = 0;

    /// The keyword opens a scope.
    virtual bool IsScopeStart() const noexcept = 0;

    /// The keywords that close the scope, in the order of the definition; empty for a section, and for what is no head.
    virtual const std::vector<const IKeywordSyntax*>& GetScopeEndSyntaxes() const = 0;

    /// The closing keyword that a writer adds; null if the scope has none of its own.
    virtual const IKeywordSyntax* GetScopeEndSyntax() const = 0;

    /// The root of the metadata, built when it is first asked for; null for a keyword without data.
    virtual const IKeywordMD* GetMetaData() const = 0;

    /// Some of the data tell keywords of this name apart (KeywordIdentity).
    virtual bool HasIdentity() const noexcept = 0;

    /// The keyword has predecessors in some section.
    virtual bool HasOrderingRules() const noexcept = 0;

    /// The names of the keywords that must stand ahead of this one in that section.
    virtual const std::set<std::string, std::less<>>& GetPredecessors(SectionType section) const = 0;

    /// All names, the first one included, in catalogue order.
    virtual std::span<const std::string> GetNames() const noexcept = 0;

    /// A line that says what the keyword is for; empty if the catalogue doesn't say.
    virtual std::string_view GetSummary() const = 0;

    /// Deck text to start from: data lines as they follow the keyword's line; empty if there is none.
    virtual std::string_view GetExampleText() const = 0;

    /// How sure the catalogue is of the definition: "high", "medium" or "low".
    virtual std::string_view GetConfidence() const noexcept = 0;
};

} // namespace Tarn::Fjel::Core::Keywords

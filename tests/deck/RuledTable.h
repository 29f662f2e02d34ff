#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <vector>

#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordSyntaxTable.h>

namespace TestSupport {

namespace Rules {
using NameSet = std::set<std::string, std::less<>>;
/// By keyword: what must stand ahead of it.
using OfSection = std::map<std::string, NameSet, std::less<>>;
using OfSections = std::map<Tarn::Fjel::Core::Keywords::SectionType, OfSection>;
} // namespace Rules

/// A syntax table with ordering rules of the test's choice, rings and rules on anything included: what a definition
/// file refuses, a host's own table may still say.
class RuledTable : public Tarn::Fjel::Core::Keywords::IKeywordSyntaxTable
{
    using IKeywordSyntax = Tarn::Fjel::Core::Keywords::IKeywordSyntax;
    using SectionType = Tarn::Fjel::Core::Keywords::SectionType;
    using SimulatorType = Tarn::Fjel::Core::Keywords::SimulatorType;
    using SyntaxList = Tarn::Fjel::Core::Keywords::SyntaxList;

public:
    /// `base` has no rules of its own.
    RuledTable(const Tarn::Fjel::Core::Keywords::IKeywordSyntaxTable& base, Rules::OfSections rules)
        : m_base(base), m_rules(std::move(rules))
    {
        for (const IKeywordSyntax* syntax : base.GetSyntaxes()) {
            m_syntaxes.push_back(std::make_unique<Syntax>(*syntax, m_rules));
            m_list.push_back(m_syntaxes.back().get());
            m_of[syntax] = m_list.back();
        }
    }

    const IKeywordSyntax* FindSyntax(std::string_view name, SectionType section, bool anySimulator) const override
    {
        return Of(m_base.FindSyntax(name, section, anySimulator));
    }
    const IKeywordSyntax* FindSyntax(std::string_view name, bool anySimulator) const override
    {
        return Of(m_base.FindSyntax(name, anySimulator));
    }
    SyntaxList FindSyntaxes(std::string_view name) const override
    {
        std::vector<const IKeywordSyntax*>& found = m_found[std::string(name)];
        found.clear();
        for (const IKeywordSyntax* syntax : m_base.FindSyntaxes(name))
            found.push_back(Of(syntax));
        return found;
    }
    SyntaxList GetSyntaxes() const override { return m_list; }

private:
    class Syntax : public IKeywordSyntax
    {
    public:
        Syntax(const IKeywordSyntax& base, const Rules::OfSections& rules) : m_base(base), m_rules(rules) {}

        const std::string& GetName() const noexcept override { return m_base.GetName(); }
        bool AcceptsAnyName() const noexcept override { return m_base.AcceptsAnyName(); }
        bool KeepsLongName() const noexcept override { return m_base.KeepsLongName(); }
        int GetKind() const noexcept override { return m_base.GetKind(); }
        void GetValidSimulators(std::vector<SimulatorType>& all) const override { m_base.GetValidSimulators(all); }
        bool IsNameValidForSimulator(SimulatorType simulator, std::string_view name) const noexcept override
        {
            return m_base.IsNameValidForSimulator(simulator, name);
        }
        bool IsSupportedBy(SimulatorType simulator) const noexcept override { return m_base.IsSupportedBy(simulator); }
        bool IsValidForSection(SectionType section, SimulatorType simulator) const noexcept override
        {
            return m_base.IsValidForSection(section, simulator);
        }
        void GetValidSections(std::vector<SectionType>& sections) const override { m_base.GetValidSections(sections); }
        SectionType GetSection() const noexcept override { return m_base.GetSection(); }
        bool IsScopeStart() const noexcept override { return m_base.IsScopeStart(); }
        const std::vector<const IKeywordSyntax*>& GetScopeEndSyntaxes() const override
        {
            return m_base.GetScopeEndSyntaxes();
        }
        const IKeywordSyntax* GetScopeEndSyntax() const override { return m_base.GetScopeEndSyntax(); }
        const Tarn::Fjel::Core::Keywords::IKeywordMD* GetMetaData() const override { return m_base.GetMetaData(); }
        bool HasIdentity() const noexcept override { return m_base.HasIdentity(); }
        bool HasOrderingRules() const noexcept override
        {
            for (const auto& [section, rules] : m_rules) {
                if (rules.contains(GetName())) return true;
            }
            return false;
        }
        const Rules::NameSet& GetPredecessors(SectionType section) const override
        {
            static const Rules::NameSet none;
            const auto rules = m_rules.find(section);
            if (rules == m_rules.end()) return none;
            const auto rule = rules->second.find(GetName());
            return rule != rules->second.end() ? rule->second : none;
        }
        std::span<const std::string> GetNames() const noexcept override { return m_base.GetNames(); }
        std::string_view GetSummary() const override { return m_base.GetSummary(); }
        std::string_view GetExampleText() const override { return m_base.GetExampleText(); }
        std::string_view GetConfidence() const noexcept override { return m_base.GetConfidence(); }

    private:
        const IKeywordSyntax& m_base;
        const Rules::OfSections& m_rules;
    };

    const IKeywordSyntax* Of(const IKeywordSyntax* base) const { return base != nullptr ? m_of.at(base) : nullptr; }

    const Tarn::Fjel::Core::Keywords::IKeywordSyntaxTable& m_base;
    Rules::OfSections m_rules;
    std::vector<std::unique_ptr<Syntax>> m_syntaxes;
    std::vector<const IKeywordSyntax*> m_list;
    std::map<const IKeywordSyntax*, const IKeywordSyntax*> m_of;
    mutable std::map<std::string, std::vector<const IKeywordSyntax*>, std::less<>> m_found;
};

/// Keywords to sort, without rules: A to H with a number as data; scopes HEAD to TAIL, BLOCK to TAIL or ENDBLOCK, and
/// SPAN, which runs to the next SPAN or to CUT.
inline const Tarn::Fjel::Core::Keywords::KeywordSyntaxTable& SortTable()
{
    static const auto table = Tarn::Fjel::Core::Keywords::KeywordSyntaxTable::FromText([] {
        std::string text = R"([
{"name": "RUNSPEC", "kind": "section", "sections": "all"}, {"name": "GRID", "kind": "section", "sections": "all"},
{"name": "PROPS", "kind": "section", "sections": "all"}, {"name": "SCHEDULE", "kind": "section", "sections": "all"},
{"name": "END", "kind": "end", "sections": "all"}, {"name": "ENDINC", "kind": "endinc", "sections": "all"},
{"name": "INCLUDE", "kind": "include", "sections": "all",
 "data": {"type": "record", "items": [{"name": "FILE", "type": "string", "preservesCase": true}]}},
{"name": "SKIPREST", "sections": "all"}, {"name": "TAIL", "sections": "all"},
{"name": "ENDBLOCK", "sections": "all"}, {"name": "CUT", "sections": "all"},
{"name": "HEAD", "sections": "all", "scope": {"closedBy": ["TAIL"], "closingKeyword": "TAIL"}},
{"name": "BLOCK", "sections": "all", "scope": {"closedBy": ["ENDBLOCK", "TAIL"], "closingKeyword": "ENDBLOCK"}},
{"name": "SPAN", "sections": "all", "scope": {"closedBy": ["SPAN", "CUT"]}},
{"name": "TITLE", "sections": "all", "data": {"type": "record", "termination": "none",
 "items": [{"name": "TEXT", "type": "restOfLine"}]}})";
        for (const char name : std::string("ABCDEFGH")) {
            text.append(",\n{\"name\": \"").append(1, name);
            text += R"(", "sections": "all", "data": {"type": "record", "items": [{"name": "N", "type": "integer"}]}})";
        }
        return text + "]";
    }());
    return *table;
}

} // namespace TestSupport

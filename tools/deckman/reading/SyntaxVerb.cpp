#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <deckmanager/Environment.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordKind.h>

#include "command/Verbs.h"
#include "data/SyntaxShape.h"
#include "output/Json.h"
#include "output/Nearest.h"
#include "output/Table.h"
#include "session/DeckSession.h"
#include "session/Sections.h"

namespace Deckman {

namespace {

using namespace Tarn::Fjel::Core::Keywords;

std::string_view NameOfKind(int kind)
{
    switch (kind) {
    case KeywordKind::End:
        return "end";
    case KeywordKind::EndInc:
        return "endinc";
    case KeywordKind::Include:
        return "include";
    case KeywordKind::EndSkip:
        return "endskip";
    case KeywordKind::Section:
        return "section";
    default:
        return "ordinary";
    }
}

std::vector<std::string> SectionsOf(const IKeywordSyntax& syntax)
{
    std::vector<SectionType> sections;
    syntax.GetValidSections(sections);
    std::vector<std::string> names;
    for (const SectionType section : sections)
        names.emplace_back(NameOf(section));
    return names;
}

std::vector<std::string> SimulatorsOf(const IKeywordSyntax& syntax)
{
    std::vector<std::string> names;
    if (syntax.IsSupportedBy(SimulatorType::S100)) names.emplace_back("100");
    if (syntax.IsSupportedBy(SimulatorType::S300)) names.emplace_back("300");
    return names;
}

/// The names of the keywords that must stand ahead, by section.
std::map<SectionType, std::vector<std::string>> PredecessorsOf(const IKeywordSyntax& syntax)
{
    std::map<SectionType, std::vector<std::string>> predecessors;
    if (!syntax.HasOrderingRules()) return predecessors;
    std::vector<SectionType> sections;
    syntax.GetValidSections(sections);
    for (const SectionType section : sections) {
        const auto& names = syntax.GetPredecessors(section);
        if (!names.empty()) predecessors[section].assign(names.begin(), names.end());
    }
    return predecessors;
}

std::vector<std::string> ScopeEndsOf(const IKeywordSyntax& syntax)
{
    std::vector<std::string> names;
    for (const IKeywordSyntax* closer : syntax.GetScopeEndSyntaxes()) {
        if (closer != nullptr) names.push_back(closer->GetName());
    }
    return names;
}

bool Passes(const IKeywordSyntax& syntax, const Options& options)
{
    const SimulatorType simulator = options.simulator.value_or(SimulatorType::Any);
    if (options.filter.section) return syntax.IsValidForSection(*options.filter.section, simulator);
    return !options.simulator || syntax.IsSupportedBy(simulator);
}

// --- one definition ------------------------------------------------------------------------------------------------

void AppendTexts(Output& out, const std::vector<std::string>& texts)
{
    out.Append('[');
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (i > 0) out.Append(',');
        AppendJsonString(out, texts[i]);
    }
    out.Append(']');
}

void WriteJson(Output& out, const IKeywordSyntax& syntax)
{
    const auto text = [&out](std::string_view field, std::string_view value) {
        out.Append(field);
        AppendJsonString(out, value);
    };
    text("{\"name\":", syntax.GetName());
    const auto names = syntax.GetNames();
    out.Append(",\"names\":");
    AppendTexts(out, {names.begin(), names.end()});
    text(",\"summary\":", syntax.GetSummary());
    text(",\"kind\":", NameOfKind(syntax.GetKind()));
    out.Append(",\"sections\":");
    AppendTexts(out, SectionsOf(syntax));
    out.Append(",\"simulators\":");
    AppendTexts(out, SimulatorsOf(syntax));
    out.Append(",\"scope\":");
    if (syntax.IsScopeStart()) {
        out.Append("{\"closedBy\":");
        AppendTexts(out, ScopeEndsOf(syntax));
        out.Append(",\"closingKeyword\":");
        if (const IKeywordSyntax* closer = syntax.GetScopeEndSyntax())
            AppendJsonString(out, closer->GetName());
        else
            out.Append("null");
        out.Append('}');
    } else {
        out.Append("null");
    }
    out.Append(",\"after\":{");
    bool first = true;
    for (const auto& [section, predecessors] : PredecessorsOf(syntax)) {
        if (!first) out.Append(',');
        first = false;
        AppendJsonString(out, NameOf(section));
        out.Append(':');
        AppendTexts(out, predecessors);
    }
    out.Append(syntax.HasIdentity() ? "},\"identity\":true" : "},\"identity\":false");
    out.Append(",\"data\":");
    SyntaxShape::WriteJson(out, syntax.GetMetaData());
    text(",\"example\":", syntax.GetExampleText());
    text(",\"confidence\":", syntax.GetConfidence());
    out.Append("}\n");
}

void WriteForPeople(Output& out, const IKeywordSyntax& syntax)
{
    out.Append(syntax.GetName(), Style::Strong);
    if (!syntax.GetSummary().empty()) out.Append(fmt::format("  {}", syntax.GetSummary()));
    out.Append('\n');
    const auto line = [&out](std::string_view label, const std::string& value) {
        if (!value.empty()) out.Append(fmt::format("  {:<12} {}\n", label, value));
    };
    const auto list = [](const std::vector<std::string>& texts) { return fmt::format("{}", fmt::join(texts, ", ")); };
    const auto names = syntax.GetNames();
    if (names.size() > 1) line("names", list({names.begin(), names.end()}));
    const std::vector<std::string> sections = SectionsOf(syntax);
    line("sections", sections.size() == SectionCount ? "all" : list(sections));
    line("simulators", list(SimulatorsOf(syntax)));
    if (syntax.GetKind() != KeywordKind::Ordinary) line("kind", std::string(NameOfKind(syntax.GetKind())));
    if (syntax.IsScopeStart()) {
        const std::vector<std::string> closers = ScopeEndsOf(syntax);
        line("scope", closers.empty() ? "opens one" : "opens one, closed by " + list(closers));
    }
    for (const auto& [section, predecessors] : PredecessorsOf(syntax))
        line("stands after", fmt::format("{} (in {})", list(predecessors), NameOf(section)));
    line("confidence", std::string(syntax.GetConfidence()));
    if (const IKeywordMD* shape = syntax.GetMetaData()) {
        out.Append('\n');
        SyntaxShape::WriteRows(out, *shape);
    } else {
        line("data", "none");
    }
    if (!syntax.GetExampleText().empty()) {
        out.Append("\nexample:\n", Style::Faint);
        std::string name = syntax.GetName();
        if (name.ends_with('*')) name.back() = 'X';
        out.Append(fmt::format("{}\n{}", name, syntax.GetExampleText()));
        if (!syntax.GetExampleText().ends_with('\n')) out.Append('\n');
    }
}

// --- many ----------------------------------------------------------------------------------------------------------

void WriteTable(Output& out, const std::vector<const IKeywordSyntax*>& syntaxes)
{
    Table table({{"keyword"},
                 {"sections"},
                 {"simulators"},
                 {"data"},
                 {"confidence"},
                 {"summary", false, {}, Table::Cut::Tail}});
    for (const IKeywordSyntax* syntax : syntaxes) {
        const std::vector<std::string> sections = SectionsOf(*syntax);
        table.Add(fmt::format("{}", fmt::join(syntax->GetNames(), " ")),
                  syntax->GetKind() == KeywordKind::Section ? Style::Strong : Style::Plain);
        table.Add(sections.size() == SectionCount ? "all" : fmt::format("{}", fmt::join(sections, " ")));
        table.Add(fmt::format("{}", fmt::join(SimulatorsOf(*syntax), " ")));
        table.Add(SyntaxShape::Words(syntax->GetMetaData()));
        table.Add(syntax->GetConfidence(), syntax->GetConfidence() == "low" ? Style::Alert : Style::Plain);
        table.Add(syntax->GetSummary());
    }
    table.Print(out);
}

using Counts = std::vector<std::pair<std::string, long long>>;

void Count(Counts& counts, std::string_view what)
{
    for (auto& [name, count] : counts) {
        if (name == what) {
            ++count;
            return;
        }
    }
    counts.emplace_back(what, 1);
}

void WriteStats(Output& out, const std::vector<const IKeywordSyntax*>& syntaxes, bool json)
{
    Counts sections;
    for (const std::string_view section : sectionNames)
        sections.emplace_back(section, 0);
    Counts kinds;
    Counts confidence{{"high", 0}, {"medium", 0}, {"low", 0}};
    std::set<std::string_view> names;
    for (const IKeywordSyntax* syntax : syntaxes) {
        for (const std::string& section : SectionsOf(*syntax))
            Count(sections, section);
        Count(kinds, NameOfKind(syntax->GetKind()));
        Count(confidence, syntax->GetConfidence());
        names.insert(syntax->GetNames().begin(), syntax->GetNames().end());
    }
    const std::pair<std::string_view, const Counts*> tables[] = {
        {"section", &sections}, {"kind", &kinds}, {"confidence", &confidence}};
    if (json) {
        out.Append(fmt::format("{{\"definitions\":{},\"names\":{}", syntaxes.size(), names.size()));
        for (const auto& [title, counts] : tables) {
            out.Append(fmt::format(",\"{}\":{{", title));
            for (std::size_t i = 0; i < counts->size(); ++i)
                out.Append(
                    fmt::format("{}{}:{}", i > 0 ? "," : "", JsonString((*counts)[i].first), (*counts)[i].second));
            out.Append('}');
        }
        out.Append("}\n");
        return;
    }
    out.Append(fmt::format("{} definitions, {} names\n", syntaxes.size(), names.size()));
    for (const auto& [title, counts] : tables) {
        Table table({{title}, {"definitions", true}});
        for (const auto& [name, count] : *counts) {
            table.Add(name);
            table.Add(count);
        }
        out.Append('\n');
        table.Print(out);
    }
}

[[noreturn]] void TellUnknown(const IKeywordSyntaxTable& table, const Options& options)
{
    if (!table.FindSyntaxes(options.name).empty()) {
        throw Failure(NotThere,
                      fmt::format("{} is known, but not in that section or to that simulator.", options.name));
    }
    throw Failure(NotThere,
                  fmt::format("The catalogue knows no keyword {}.{}", options.name, NearestKeywordHint(options.name)));
}

} // namespace

ExitStatus RunSyntax(Messages&, const Options& options, Output& out)
{
    const IKeywordSyntaxTable& table = *DeckManager::Environment::Instance().GetSyntaxTable();
    const SyntaxList found = options.name.empty() ? table.GetSyntaxes() : table.FindSyntaxes(options.name);
    std::vector<const IKeywordSyntax*> syntaxes;
    for (const IKeywordSyntax* syntax : found) {
        if (Passes(*syntax, options)) syntaxes.push_back(syntax);
    }
    if (options.stats) {
        WriteStats(out, syntaxes, options.json);
        return Done;
    }
    if (syntaxes.empty() && !options.name.empty()) TellUnknown(table, options);
    if (options.json) {
        for (const IKeywordSyntax* syntax : syntaxes) {
            if (!out.Closed()) WriteJson(out, *syntax);
        }
    } else if (options.name.empty()) {
        WriteTable(out, syntaxes);
    } else {
        for (std::size_t i = 0; i < syntaxes.size(); ++i) {
            if (i > 0) out.Append('\n');
            WriteForPeople(out, *syntaxes[i]);
        }
    }
    return Done;
}

} // namespace Deckman

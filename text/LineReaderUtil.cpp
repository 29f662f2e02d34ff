#include <deckmanager/LineReaderUtil.h>

#include <algorithm>
#include <optional>

#include <deckmanager/Environment.h>
#include <deckmanager/ISectionContextQuery.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

#include "text/KeywordFileReader.h"
#include "text/KeywordLine.h"
#include "text/LineSource.h"
#include "text/LineStreamReader.h"
#include "text/ScannedKeyword.h"
#include "text/SectionNames.h"
#include "text/TagRecognisers.h"

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::IKeywordSyntax;
using Keywords::SectionType;
using Keywords::SimulatorType;

namespace {

constexpr std::string_view NumberCharacters = "0123456789.-+*/E";

/// Of the syntaxes that share a name, of which there is at least one, that of the section in force.
const IKeywordSyntax* ChooseSyntax(Keywords::SyntaxList syntaxes, std::string_view name,
                                   const ISectionContextQuery& query)
{
    const SectionType section = query.GetSection();
    const IKeywordSyntax* syntax = syntaxes.front();
    if (syntaxes.size() == 1) {
        const bool behindRunspec = section > SectionType::RUNSPEC && section <= SectionType::OPTIMIZE;
        if (behindRunspec && !syntax->IsValidForSection(section, SimulatorType::Any) &&
            syntax->IsValidForSection(SectionType::RUNSPEC, SimulatorType::Any))
            return nullptr;
    } else if (const IKeywordSyntax* valid = Environment::Instance().GetSyntaxTable()->FindSyntax(name, section, true))
    {
        syntax = valid;
    }
    if (section != SectionType::None && !syntax->IsValidForSection(section, SimulatorType::Any)) {
        std::string text = "Keyword ";
        text.append(name).append(" is not valid for section ").append(SectionName(section));
        Service::Log::SendLogMessage(text, Service::Log::Warning);
    }
    return syntax;
}

int PlaceOf(const void* source)
{
    return static_cast<const LineSource*>(source)->LineNumber();
}

void WarnOfUnknownWord(const ScannedKeyword& word, KeywordFileReader* file)
{
    if (!Service::Log::isEnabled()) return;
    std::string text = "Keyword " + word.name + " is not recognized";
    if (!file) {
        Service::Log::SendLogMessage(text + ".", Service::Log::Warning);
        return;
    }
    // Put together here: a format of C strings would lose what stands behind a byte 0 in the word.
    const int line = word.line > 0 ? word.line : file->LineNumberAt(word.pos);
    text.append(" near line ").append(std::to_string(line - 1)).append(" in ").append(file->GetPath()).append(".");
    Service::Log::SendLogMessage(text, Service::Log::Warning);
}

} // namespace

bool LineReaderUtil::ReadNextValidLineAsKeyword(ILineReader& reader, std::string& line, long long* pos,
                                                bool allowIndented, bool* indented, bool* terminated)
{
    if (indented) *indented = false;
    if (terminated) *terminated = false;

    LineSource source(reader);
    std::string_view text;
    if (!source.NextData(text, pos, true)) return false;

    const std::string_view trimmed = Service::TrimmedLeft(text);
    if (trimmed.empty() || !Service::IsAlpha(trimmed.front())) {
        line.clear();
        return true;
    }
    if (terminated) *terminated = IsTerminated(text);
    if (allowIndented) {
        if (indented) *indented = trimmed.size() != text.size();
        text = trimmed;
    }
    line.assign(FirstWord(text));
    Service::StringToUpper(line);
    return true;
}

bool LineReaderUtil::FindNextKeywordSyntax(ILineReader& reader, const ISectionContextQuery& query, std::string& keyword,
                                           long long* pos, bool allowIndented, bool* indented,
                                           const IKeywordSyntax*& syntax, KeywordFileReader* file)
{
    ScannedKeyword found;
    const bool any = FindNextKeywordSyntax(reader, query, allowIndented, file, found);
    keyword.assign(found.name);
    syntax = found.syntax;
    if (pos) *pos = found.pos;
    if (indented) *indented = found.indented;
    return any;
}

bool LineReaderUtil::FindNextKeywordSyntax(ILineReader& reader, const ISectionContextQuery& query, bool allowIndented,
                                           KeywordFileReader* file, ScannedKeyword& found)
{
    while (FindNextCandidate(reader, allowIndented, file, found)) {
        if (ResolveCandidate(reader, query, file, found)) return true;
    }
    return false;
}

bool LineReaderUtil::FindNextCandidate(ILineReader& reader, bool allowIndented, KeywordFileReader* file,
                                       ScannedKeyword& found)
{
    found.syntax = nullptr;
    LineSource source(reader);
    std::optional<Service::Log::Place> place;
    if (file) place.emplace(file->GetPath(), PlaceOf, &source);
    const Keywords::IKeywordSyntaxTable& table = *Environment::Instance().GetSyntaxTable();

    std::string_view line;
    while (source.NextCandidate(line, &found.pos, allowIndented)) {
        std::string_view text = VeldaneDeckInfo::SkipSuppressMarker(line);
        found.suppressed = text.size() != line.size();
        found.indented = false;
        if (allowIndented) {
            const std::string_view trimmed = Service::TrimmedLeft(text);
            found.indented = trimmed.size() != text.size();
            text = trimmed;
        }
        found.name.assign(FirstWord(text));
        Service::StringToUpper(found.name);
        found.line = source.LineNumber();

        const std::string_view word = found.name;
        found.headSyntaxes = {};
        if (word.size() > SignificantCharacters) {
            found.headSyntaxes = table.FindSyntaxes(word.substr(0, SignificantCharacters));
        }
        found.wordSyntaxes = table.FindSyntaxes(word);
        if (!found.headSyntaxes.empty() || !found.wordSyntaxes.empty()) {
            // What the line says is gathered while it is at hand.
            found.terminated = IsTerminated(text);
            found.lineHasTag = ContainsKeywordTag(line);
            return true;
        }
        if (!IsTerminated(text)) TellOfUnknownWord(found, file);
    }
    found.name.clear();
    found.indented = found.suppressed = found.lineHasTag = found.tagged = found.tagKnown = false;
    found.line = -1;
    return false;
}

bool LineReaderUtil::ResolveCandidate(ILineReader& reader, const ISectionContextQuery& query, KeywordFileReader* file,
                                      ScannedKeyword& found)
{
    LineSource source(reader);
    std::optional<Service::Log::Place> place;
    if (file) place.emplace(file->GetPath(), PlaceOf, &source);

    const std::string_view word = found.name;
    bool byHead = false;
    if (!found.headSyntaxes.empty()) {
        found.syntax = ChooseSyntax(found.headSyntaxes, word.substr(0, SignificantCharacters), query);
        byHead = found.syntax != nullptr;
    }
    if (!found.syntax && !found.wordSyntaxes.empty()) found.syntax = ChooseSyntax(found.wordSyntaxes, word, query);
    if (!found.syntax) {
        if (!found.terminated) TellOfUnknownWord(found, file);
        return false;
    }
    if (byHead && !found.syntax->KeepsLongName()) found.name.resize(SignificantCharacters);
    LookForTagLine(source.Lines(), found);
    return true;
}

void LineReaderUtil::TellOfUnknownWord(const ScannedKeyword& word, KeywordFileReader* file)
{
    if (IsNumerical(word.name) || IsOrdaleVariable(word.name)) return;
    // An indented word that is none is more of the data ahead of it.
    std::optional<Service::Log::Probe> harmless;
    if (word.indented) harmless.emplace();
    WarnOfUnknownWord(word, file);
}

bool LineReaderUtil::FindNextKeyword(ILineReader& reader, const IKeywordSyntax* previous, std::string& keyword)
{
    const Keywords::IKeywordSyntaxTable& table = *Environment::Instance().GetSyntaxTable();
    LineSource source(reader);
    std::string_view line;
    while (source.NextCandidate(line, nullptr, false)) {
        keyword.assign(FirstWord(VeldaneDeckInfo::SkipSuppressMarker(line)));
        Service::StringToUpper(keyword);
        const IKeywordSyntax* syntax = table.FindSyntax(keyword, true);
        if (syntax && CanFollowKeyword(syntax, previous)) return true;
    }
    keyword.clear();
    return false;
}

bool LineReaderUtil::IsNameInAnySection(std::string& word)
{
    const Keywords::IKeywordSyntaxTable& table = *Environment::Instance().GetSyntaxTable();
    if (word.size() > SignificantCharacters) {
        const std::string_view head = std::string_view(word).substr(0, SignificantCharacters);
        if (const IKeywordSyntax* syntax = table.FindSyntax(head, true)) {
            if (!syntax->KeepsLongName()) word.resize(SignificantCharacters);
            return true;
        }
    }
    return table.FindSyntax(word, true) != nullptr;
}

bool LineReaderUtil::FindNextKeywordInAnySection(ILineReader& reader, std::string& keyword)
{
    LineSource source(reader);
    std::string_view line;
    while (source.NextCandidate(line, nullptr, false)) {
        keyword.assign(FirstWord(VeldaneDeckInfo::SkipSuppressMarker(line)));
        Service::StringToUpper(keyword);
        if (IsNameInAnySection(keyword)) return true;
    }
    keyword.clear();
    return false;
}

const IKeywordSyntax* LineReaderUtil::FindSyntax(std::string_view name, const ISectionContextQuery& query)
{
    const Keywords::SyntaxList syntaxes = Environment::Instance().GetSyntaxTable()->FindSyntaxes(name);
    return syntaxes.empty() ? nullptr : ChooseSyntax(syntaxes, name, query);
}

bool LineReaderUtil::CanFollowKeyword(const IKeywordSyntax* candidate, const IKeywordSyntax* previous)
{
    if (candidate->GetKind() == Keywords::KeywordKind::Section) return true;
    if (!previous) return false;
    std::vector<SectionType> sections;
    std::vector<SimulatorType> simulators;
    previous->GetValidSections(sections);
    previous->GetValidSimulators(simulators);
    for (const SectionType section : sections) {
        for (const SimulatorType simulator : simulators) {
            if (candidate->IsValidForSection(section, simulator)) return true;
        }
    }
    return false;
}

bool LineReaderUtil::IsTerminated(std::string_view line)
{
    if (line.find(VeldaneDeckInfo::TERMINATION) == std::string_view::npos) return false;
    bool inQuotes = false;
    for (const char c : line) {
        if (c == VeldaneDeckInfo::QUOTE)
            inQuotes = !inQuotes;
        else if (c == VeldaneDeckInfo::TERMINATION && !inQuotes)
            return true;
    }
    return false;
}

bool LineReaderUtil::IsTerminationOnly(std::string_view line)
{
    return Service::TrimmedLeft(line).starts_with(VeldaneDeckInfo::TERMINATION);
}

bool LineReaderUtil::IsNumerical(std::string_view s)
{
    return s.find_first_not_of(NumberCharacters) == std::string_view::npos;
}

/// A variable of older hosts: "$" and at least one letter, digit or "_".
bool LineReaderUtil::IsOrdaleVariable(std::string_view s)
{
    return s.size() >= 2 && s.front() == '$' &&
           std::all_of(s.begin() + 1, s.end(), [](char c) { return Service::IsAlnum(c) || c == '_'; });
}

bool LineReaderUtil::IsAKeyword(std::string_view line)
{
    const std::string name(Service::Trimmed(line.substr(0, SignificantCharacters)));
    return !Environment::Instance().GetSyntaxTable()->FindSyntaxes(name).empty();
}

bool LineReaderUtil::IsACommentedOutKeyword(std::string_view line)
{
    std::string_view text = Service::TrimmedLeft(line);
    if (!VeldaneDeckInfo::BeginsWithCommentMarker(text)) return false;
    text = Service::TrimmedLeft(text.substr(2)).substr(0, SignificantCharacters);
    return !Environment::Instance().GetSyntaxTable()->FindSyntaxes(text).empty();
}

} // namespace Tarn::Fjel::Core::DeckManager

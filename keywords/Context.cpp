#include <deckmanager/Context.h>

#include <algorithm>
#include <list>

#include <boost/lexical_cast.hpp>
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IKeyword.h>
#include <fmt/format.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/IKeywordRecordDataVariables.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/keywords/UnsetValue.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

#include "keywords/IKeywordsByName.h"
#include "keywords/Keyword.h"
#include "keywords/ValueConversions.h"
#include "text/KnownSyntax.h"
#include "text/SectionNames.h"
#include <deckmanager/KeywordVariables.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::SectionType;

namespace {

/// What isn't there in a deck is an expected answer: the message goes out, marked as that of a probe.
void ReportMiss(const std::string& message)
{
    const Service::Log::Probe probe;
    Service::Log::SendLogMessage(message, Service::Log::Error);
}

/// In a deck with variables, a path that begins with an alias reads as a reference to a variable and is no value. As
/// the path of an alias it counts all the same.
void AddAliasesOfAliases(const Keywords::IKeywordData* data, KeywordVariables& variables, Keywords::PathAliases& table)
{
    const auto* const rows = dynamic_cast<const Keywords::IKeywordListData*>(data);
    if (!rows || rows->GetElementType() != Keywords::MDType::Record) return;
    for (int i = 0; i < rows->GetElementCount(); ++i) {
        const auto& row = static_cast<const Keywords::IKeywordRecordData&>(rows->GetContainer(i));
        auto* const texts = dynamic_cast<Keywords::IKeywordRecordDataVariables*>(variables.GetDataVariables(&row));
        if (!texts || row.GetItemCount() < 2 || !row.GetItem(0).HasValue()) continue;
        const std::list<int>& indices = texts->GetVariableIndices();
        if (std::find(indices.begin(), indices.end(), 1) != indices.end())
            table.AddAlias(row.GetItem(0).GetString(), texts->GetVariable(1).GetString());
    }
}

/// The pieces of an expression between ':', '[' and ']'; none is empty.
std::vector<std::string_view> Split(std::string_view expression)
{
    std::vector<std::string_view> pieces;
    while (!expression.empty()) {
        const std::size_t end = expression.find_first_of(":[]");
        if (end != 0) pieces.push_back(expression.substr(0, end));
        expression.remove_prefix(end == std::string_view::npos ? expression.size() : end + 1);
    }
    return pieces;
}

} // namespace

void Context::Bind(const IDeckKeywords* keywords)
{
    m_keywords = keywords;
    m_results = NoResults();
}

bool Context::EvaluateIntegerExpr(const std::string& expression, int& value) const
{
    if (Service::AllDigits(expression)) return ValueConversions::ToInteger(expression, value);
    if (!m_keywords)
        throw DeckManagerException(
            "Context::EvaluateIntegerExpr: IDeckKeywords must be provided to evaluate expression");

    SectionType section = SectionType::None;
    std::string_view keyword;
    std::vector<int> indices;
    for (const std::string_view piece : Split(expression)) {
        if (section == SectionType::None)
            FindSection(piece, section);
        else if (keyword.empty())
            keyword = piece;
        else
            indices.push_back(boost::lexical_cast<int>(piece));
    }
    if (section != SectionType::None && !keyword.empty() && !indices.empty())
        return Eval(section, keyword, indices, value);
    return EvalSpecial(expression, value);
}

KeywordIterator Context::SectionBegin(SectionType section) const
{
    const KeywordIterator begin = m_keywords->SectionBegin(section);
    return begin == m_keywords->End() ? m_keywords->Begin() : begin;
}

KeywordIterator Context::SectionEnd(SectionType section) const
{
    return m_keywords->SectionEnd(section);
}

/// Null when the section, or the whole deck where it lacks the section, doesn't have the keyword.
const IKeyword* Context::FindKeyword(SectionType section, std::string_view keyword) const
{
    if (const auto* const index = dynamic_cast<const IKeywordsByName*>(m_keywords))
        return index->FirstOfName(section, keyword);
    const KeywordIterator end = SectionEnd(section);
    for (KeywordIterator at = SectionBegin(section); at != end; ++at) {
        const IKeyword* const candidate = *at;
        if (!candidate) break;
        if (candidate->GetName() == keyword) return candidate;
    }
    return nullptr;
}

bool Context::IsKeywordPresent(SectionType section, std::string_view keyword) const
{
    return FindKeyword(section, keyword) != nullptr;
}

/// The data of a keyword; null when it is absent or has none.
Keywords::IKeywordData* Context::KeywordData(SectionType section, std::string_view keyword) const
{
    const IKeyword* const found = FindKeyword(section, keyword);
    return found ? m_keywords->GetKeywordData(found) : nullptr;
}

bool Context::Eval(SectionType section, std::string_view keyword, const std::vector<int>& indices, int& value) const
{
    const IKeyword* const found = FindKeyword(section, keyword);
    if (!found) {
        ReportMiss(fmt::format("Context::Eval: keyword {} not found in section {}", keyword, SectionName(section)));
        return false;
    }
    const Keywords::IKeywordData* const data = m_keywords->GetKeywordData(found);
    if (!data) throw DeckManagerException(fmt::format("Context::Eval: keyword {} has no data", keyword));
    if (indices.size() > 1)
        throw DeckManagerException("Context::Eval: currently do not handle data query deeper than 1 level");
    if (data->GetType() != Keywords::MDType::Record)
        throw DeckManagerException("Context::Eval: unrecoqnized keyword data container type");
    const auto& record = static_cast<const Keywords::IKeywordRecordData&>(*data);
    const int index = indices.front();
    if (index < 0 || index >= record.GetItemCount()) {
        throw DeckManagerException(
            fmt::format("Context::Eval: keyword {}, index {} is beyond record range", keyword, index));
    }
    if (record.GetRecordMD()->GetItemMD(index)->GetType() != Keywords::MDType::Integer) {
        throw DeckManagerException(
            fmt::format("Context::Eval: keyword {}, item at index {} expected to be an integer", keyword, index));
    }
    const int item = record.GetItem(index).GetInteger();
    if (item == Keywords::UnsetValue::Integer) {
        ReportMiss(fmt::format("Context::Eval: keyword {}, requested item has not been initialized ", keyword));
        return false;
    }
    value = item;
    return true;
}

bool Context::GetKeywordItem(SectionType section, std::string_view keyword, int index, int& value) const
{
    if (Eval(section, keyword, {index}, value)) return true;
    ReportMiss(
        fmt::format("Context::GetKeywordItem: {} does not have a valid integer value at index {}", keyword, index));
    return false;
}

void Context::NoteKeyword(const IKeyword* keyword) const
{
    static KnownSyntax paths("PATHS");
    if (!keyword || !paths.Is(keyword->GetSyntax()) || !Environment::Instance().PATHSSupport()) return;
    const Keywords::IKeywordData* data = nullptr;
    KeywordVariables* variables = nullptr;
    // Reading fills a cache of the keyword, which its constness doesn't cover.
    if (const auto* const own = dynamic_cast<const Keyword*>(keyword)) {
        data = const_cast<Keyword*>(own)->GetData(*this);
        variables = const_cast<Keyword*>(own)->GetVariables(*this);
    } else if (m_keywords) {
        data = m_keywords->GetKeywordData(keyword);
        variables = m_keywords->GetVariables(keyword);
    }
    Keywords::DataAccessUtils::AddPathAliases(data, m_pathAliases);
    if (variables) AddAliasesOfAliases(data, *variables, m_pathAliases);
}

bool Context::HasPaths(const IKeyword* keyword)
{
    static KnownSyntax include("INCLUDE");
    static KnownSyntax import("IMPORT");
    static KnownSyntax restart("RESTART");
    static KnownSyntax gdfile("GDFILE");
    if (!keyword) return false;
    const Keywords::IKeywordSyntax* const syntax = keyword->GetSyntax();
    return include.Is(syntax) || import.Is(syntax) || restart.Is(syntax) || gdfile.Is(syntax);
}

bool Context::ResolvePathAliases(const IKeyword* keyword, const std::string& in, std::string& out) const
{
    if (HasPaths(keyword)) return m_pathAliases.resolvePathAliases(in, out);
    out = in;
    return true;
}

} // namespace Tarn::Fjel::Core::DeckManager

// The sizes that have a name: what they follow from. Item indices count from 0.

#include <algorithm>
#include <limits>

#include <deckmanager/Context.h>
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeckKeywords.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/keywords/UnsetValue.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::SectionType;

namespace {

constexpr SectionType runspec = SectionType::RUNSPEC;
constexpr SectionType grid = SectionType::GRID;
constexpr SectionType props = SectionType::PROPS;

/// Data as a list; null where they are anything else.
const Keywords::IKeywordListData* AsList(const Keywords::IKeywordData* data)
{
    return data && data->GetType() == Keywords::MDType::List ? static_cast<const Keywords::IKeywordListData*>(data)
                                                             : nullptr;
}

const Keywords::IKeywordRecordData* AsRecord(const Keywords::IKeywordData* data)
{
    return data && data->GetType() == Keywords::MDType::Record ? static_cast<const Keywords::IKeywordRecordData*>(data)
                                                               : nullptr;
}

} // namespace

struct Context::NamedEvaluation
{
    std::string_view name;
    bool (Context::*evaluate)(int& value) const;
    Result result;
};

const Context::NamedEvaluation* Context::FindEvaluation(std::string_view name)
{
    static constexpr NamedEvaluation evaluations[] = {
        {"NCMPHW", &Context::EvalNCMPHW, Result::NCMPHW},
        {"NUMSLT", &Context::EvalNUMSLT, Result::NUMSLT},
        {"NTABSR", &Context::EvalNTABSR, Result::NTABSR},
        {"NCOMPW", &Context::EvalNCOMPW, Result::NCOMPW},
        {"NCOMPW_Or_Default", &Context::EvalNCOMPW_Or_Default, Result::NCOMPW_Or_Default},
        {"MAXUAT", &Context::EvalMAXUAT, Result::MAXUAT},
        {"NUMREP", &Context::EvalNUMREP, Result::NUMREP},
        {"NRPINC", &Context::EvalNRPINC, Result::NRPINC},
        {"NDETAC", &Context::EvalNDETAC, Result::NDETAC},
        {"ROCKTABTRANSMYZ", &Context::EvalROCKTABTRANSMYZ, Result::ROCKTABTRANSMYZ},
        {"OILVISCT_VISCNUM", &Context::EvalOILVISCTVISCNUM, Result::OILVISCT_VISCNUM},
        {"COMPS_OR_1", &Context::EvalCOMPSOR1, Result::COMPS_OR_1},
        {"COMPS", &Context::EvalCOMPS, Result::COMPS},
    };
    const auto* const found = std::find_if(std::begin(evaluations), std::end(evaluations),
                                           [name](const NamedEvaluation& entry) { return entry.name == name; });
    return found == std::end(evaluations) ? nullptr : found;
}

bool Context::EvalSpecial(const std::string& expression, int& value) const
{
    constexpr std::string_view prefix = "context:";
    if (!expression.starts_with(prefix) || expression.size() == prefix.size()) return false;
    if (Environment::Instance().IncompleteDeckKeywordValidation()) return false;
    const NamedEvaluation* const evaluation = FindEvaluation(std::string_view(expression).substr(prefix.size()));
    if (!evaluation)
        throw DeckManagerException(fmt::format("Context::EvalSpecial(): unhandled size \"{}\". ", expression));
    int& result = m_results[static_cast<std::size_t>(evaluation->result)];
    bool known = true;
    if (result == notComputed) known = (this->*evaluation->evaluate)(result);
    value = result;
    return known;
}

bool Context::EvalCOMPS(int& value) const
{
    if (IsKeywordPresent(runspec, "COMPS")) return GetKeywordItem(runspec, "COMPS", 0, value);
    if (IsKeywordPresent(props, "NCOMPS")) return GetKeywordItem(props, "NCOMPS", 0, value);
    if (IsKeywordPresent(runspec, "DEADOIL")) {
        value = 1;
        return true;
    }
    if (IsKeywordPresent(props, "CNAMES")) {
        if (const auto* const names = AsList(KeywordData(props, "CNAMES"))) {
            value = names->GetElementCount();
            return true;
        }
    }
    return false;
}

bool Context::EvalCOMPSOR1(int& value) const
{
    if (!EvalCOMPS(value)) value = 1;
    return true;
}

bool Context::EvalOILVISCTVISCNUM(int& value) const
{
    return EvalCOMPSOR1(value);
}

bool Context::EvalMAXUAT(int& value) const
{
    int count = 0;
    if (!GetKeywordItem(runspec, "AQUDIMS", 2, count)) return false;
    value = count > 0 ? count - 1 : 0;
    return true;
}

bool Context::EvalNCMPHW(int& value) const
{
    value = 0;
    const bool storage = IsKeywordPresent(runspec, "CO2STORE");
    const bool co2 = IsKeywordPresent(runspec, "CO2SOL");
    const bool h2s = IsKeywordPresent(runspec, "H2SSOL");
    const bool gas = IsKeywordPresent(runspec, "GASSOL");
    if (IsKeywordPresent(runspec, "GASWAT")) {
        if (!EvalCOMPS(value))
            throw DeckManagerException("Context::EvalNCMPHW: COMPS keyword does not have integer value at item 1");
        return true;
    }
    if (storage) {
        value = 1;
        return true;
    }
    if (!gas) {
        if (!IsKeywordPresent(runspec, "COMPW"))
            value = (co2 ? 1 : 0) + (h2s ? 1 : 0);
        else if (!GetKeywordItem(runspec, "COMPW", 0, value))
            throw DeckManagerException("Context::EvalNCMPHW: COMPW keyword does not have integer value at item 1");
        return true;
    }
    if (co2 || h2s)
        throw DeckManagerException("Context::EvalSpecial: GASSOL cannot be used with CO2SOL & H2SOL keywords");
    if (!GetKeywordItem(runspec, "GASSOL", 0, value))
        throw DeckManagerException("Context::EvalSpecial: GASSOL keyword does not have integer value at item 1");
    return true;
}

bool Context::EvalNCOMPW(int& value) const
{
    value = 1;
    GetKeywordItem(runspec, "COMPW", 0, value);
    return true;
}

bool Context::EvalNCOMPW_Or_Default(int& value) const
{
    value = 1;
    if (IsKeywordPresent(runspec, "COMPW"))
        GetKeywordItem(runspec, "COMPW", 0, value);
    else if (!IsKeywordPresent(runspec, "WATER"))
        value = 0;
    return true;
}

bool Context::EvalNDETAC(int& value) const
{
    if (!IsKeywordPresent(props, "LUMPING"))
        throw DeckManagerException("Context::EvalNDETAC: keyword LUMPING must be present");
    const auto* const lumps = AsList(KeywordData(props, "LUMPING"));
    if (!lumps) throw DeckManagerException("Context::EvalNDETAC: keyword LUMPING has not data");
    value = 0;
    std::int64_t sum = 0;
    for (int index = 0; index < lumps->GetElementCount(); ++index) {
        const auto* const lump = AsRecord(lumps->GetElement(index).GetContainer());
        if (!lump || lump->GetItemCount() < 2 || lump->GetItem(1).Kind() != Keywords::MDType::Integer) return false;
        const int detailed = lump->GetItem(1).GetInteger();
        if (detailed == Keywords::UnsetValue::Integer) {
            throw DeckManagerException(fmt::format(
                "Context::EvalNDETAC: item 2 of record {} of keyword LUMPING has been defaulted.", index + 1));
        }
        sum += detailed;
        value = static_cast<int>(
            std::clamp<std::int64_t>(sum, -std::numeric_limits<int>::max(), std::numeric_limits<int>::max()));
    }
    // A sum beyond an integer is no size.
    return sum <= std::numeric_limits<int>::max();
}

bool Context::EvalNRPINC(int& value) const
{
    value = 0;
    if (IsKeywordPresent(grid, "PINCHNUM")) return GetKeywordItem(runspec, "GRIDOPTS", 2, value);
    if (IsKeywordPresent(grid, "FLUXNUM")) {
        RaiseTo(runspec, "REGDIMS", 3, value);
        RaiseTo(runspec, "TABDIMS", 10, value);
    }
    return true;
}

bool Context::EvalNTABSR(int& value) const
{
    value = 1;
    GetKeywordItem(runspec, "TABDIMS", 12, value);
    RaiseTo(runspec, "ROCKCOMP", 1, value);
    return true;
}

bool Context::EvalNUMREP(int& value) const
{
    value = 1;
    RaiseTo(runspec, "TABDIMS", 4, value);
    RaiseTo(runspec, "REGDIMS", 0, value);
    RaiseTo(runspec, "DYNRDIMS", 0, value);
    return true;
}

bool Context::EvalNUMSLT(int& value) const
{
    if (!IsKeywordPresent(runspec, "BRINE") || !IsKeywordPresent(runspec, "VLDMC")) {
        value = 1;
        return true;
    }
    const auto* const data = KeywordData(runspec, "BRINE");
    if (!data) throw DeckManagerException("Context::EvalNUMSLT: keyword BRINE has no data");
    const auto* const record = AsRecord(data);
    const auto* const salts =
        record && record->GetItemCount() > 0 ? AsList(record->GetItem(0).GetContainer()) : nullptr;
    if (!salts) return false;
    value = salts->GetElementCount();
    return true;
}

bool Context::EvalROCKTABTRANSMYZ(int& value) const
{
    value = IsKeywordPresent(props, "RKTRMDIR") ? 1 : 0;
    return true;
}

/// Raises a value to an item of another keyword, where that can be read and is larger.
void Context::RaiseTo(SectionType section, std::string_view keyword, int index, int& value) const
{
    int item = 0;
    if (GetKeywordItem(section, keyword, index, item)) value = std::max(value, item);
}

} // namespace Tarn::Fjel::Core::DeckManager

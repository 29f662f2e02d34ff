#pragma once

#include <optional>
#include <string>
#include <vector>

#include <tarn/keywords/PathAliases.h>
#include <tarn/service/Time.h>

namespace Tarn::Fjel::Core::Keywords {

class IKeywordData;

/// Reads and writes what the library itself has to know of certain keywords' data. Null data, or data of another
/// shape, count as data without a value, and are left alone by the setters.
class DataAccessUtils
{
public:
    /// Enters the aliases of a PATHS keyword into table. Rows without both texts are passed over.
    static void AddPathAliases(const IKeywordData* data, PathAliases& table);

    /// The file name that the keyword holds; no value while it is unset.
    static std::optional<std::string> GetINCLUDEFileName(const IKeywordData* data);
    static std::optional<std::string> GetGDFILEName(const IKeywordData* data);
    static std::optional<std::string> GetORDGRIDName(const IKeywordData* data);

    static void SetINCLUDEFileName(IKeywordData* data, const std::string& name);
    static void SetGDFILEName(IKeywordData* data, const std::string& name);
    static void SetORDGRIDName(IKeywordData* data, const std::string& name);

    /// The moment that a START keyword gives; undefined while day, month or year are unset or are no date.
    static Service::Time GetTimeFromSTART(const IKeywordData* data);

    /// The moments that a DATES keyword gives, in its order; a row that is no date gives an undefined time.
    static std::vector<Service::Time> GetTimesFromDATES(const IKeywordData* data);

    /// Where time stands behind a DATES, TSTEP or TIME keyword. DATES: its last date that is one. TSTEP: current plus
    /// its steps. TIME: start plus its last value. unit is what a deck counts time in, Service::DAY or Service::HOUR.
    /// Data that say nothing leave current as it is.
    static Service::Time AdvanceTime(const Service::Time& start, const Service::Time& current, Service::TimeSpan unit,
                                     const IKeywordData* data);
};

} // namespace Tarn::Fjel::Core::Keywords

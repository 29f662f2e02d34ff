#include <tarn/keywords/DataAccessUtils.h>

#include <string_view>

#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordOptionMD.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::Keywords {

namespace {

const IKeywordRecordData* AsRecord(const IKeywordData* data)
{
    return data && data->GetType() == MDType::Record ? static_cast<const IKeywordRecordData*>(data) : nullptr;
}

const IKeywordListData* AsList(const IKeywordData* data)
{
    return data && data->GetType() == MDType::List ? static_cast<const IKeywordListData*>(data) : nullptr;
}

/// The item at index, if it is of that kind and has a value; else a null slot.
ConstSlot ValueAt(const IKeywordRecordData& record, int index, MDType kind)
{
    if (index >= record.GetItemCount()) return ConstSlot();
    const ConstSlot slot = record.GetItem(index);
    return slot.Kind() == kind && slot.HasValue() ? slot : ConstSlot();
}

std::optional<std::string> FirstString(const IKeywordData* data)
{
    const IKeywordRecordData* record = AsRecord(data);
    const ConstSlot slot = record ? ValueAt(*record, 0, MDType::String) : ConstSlot();
    if (!slot) return std::nullopt;
    return std::string(slot.GetString());
}

void SetFirstString(IKeywordData* data, const std::string& text)
{
    if (!AsRecord(data)) return;
    auto& record = static_cast<IKeywordRecordData&>(*data);
    if (record.GetItemCount() > 0 && record.GetItem(0).Kind() == MDType::String) record.GetItem(0).SetString(text);
}

/// The month from 1 that an option or a text names by the first three letters of its English name ("JLY" is July);
/// 0 for none.
int MonthNamed(std::string_view name)
{
    constexpr std::string_view months[] = {"JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                                           "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};
    if (Service::NoCaseStringEqual(name, "JLY")) return 7;
    for (int month = 0; month < 12; ++month) {
        if (Service::NoCaseStringEqual(name, months[month])) return month + 1;
    }
    return 0;
}

int MonthAt(const IKeywordRecordData& record, int index)
{
    if (const ConstSlot text = ValueAt(record, index, MDType::String)) return MonthNamed(text.GetString());
    const ConstSlot slot = ValueAt(record, index, MDType::Option);
    if (!slot) return 0;
    const auto& options = static_cast<const IKeywordOptionMD&>(*slot.GetMD());
    const int option = slot.GetOption();
    return option >= 0 && option < options.GetOptionCount() ? MonthNamed(options.GetOptionName(option)) : 0;
}

/// Takes digits off the front of text; false if there are none, or more than most.
bool TakeNumber(std::string_view& text, std::size_t most, int& number)
{
    std::size_t digits = 0;
    number = 0;
    while (digits < text.size() && digits < most && Service::IsDigit(text[digits])) {
        number = number * 10 + (text[digits++] - '0');
    }
    text.remove_prefix(digits);
    return digits > 0;
}

struct TimeOfDay
{
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

/// "HH:MM:SS.SSSS", of which the later parts may be missing. False if text is no time.
bool ReadTimeOfDay(std::string_view text, TimeOfDay& time)
{
    text = Service::Trimmed(text);
    if (!TakeNumber(text, 2, time.hour)) return false;
    for (int* const part : {&time.minute, &time.second}) {
        if (text.empty()) return true;
        if (text.front() != ':') return false;
        text.remove_prefix(1);
        if (!TakeNumber(text, 2, *part)) return false;
    }
    if (text.empty()) return true;
    if (text.front() != '.') return false;
    text.remove_prefix(1);
    for (int unit = 100; !text.empty() && Service::IsDigit(text.front()); unit /= 10) {
        time.millisecond += (text.front() - '0') * unit;
        text.remove_prefix(1);
    }
    return text.empty();
}

/// The moment that a record of day, month, year and time of day gives.
Service::Time TimeOf(const IKeywordRecordData& record)
{
    const ConstSlot day = ValueAt(record, 0, MDType::Integer);
    const int month = MonthAt(record, 1);
    const ConstSlot year = ValueAt(record, 2, MDType::Integer);
    if (!day || month == 0 || !year) return Service::Time();
    TimeOfDay time;
    const ConstSlot text = ValueAt(record, 3, MDType::String);
    if (text && !ReadTimeOfDay(text.GetString(), time)) return Service::Time();
    return Service::Time(year.GetInteger(), month, day.GetInteger(), time.hour, time.minute, time.second,
                         time.millisecond);
}

} // namespace

void DataAccessUtils::AddPathAliases(const IKeywordData* data, PathAliases& table)
{
    const IKeywordListData* rows = AsList(data);
    if (!rows || rows->GetElementType() != MDType::Record) return;
    for (int i = 0; i < rows->GetElementCount(); ++i) {
        const auto& row = static_cast<const IKeywordRecordData&>(rows->GetContainer(i));
        const ConstSlot alias = ValueAt(row, 0, MDType::String);
        const ConstSlot path = ValueAt(row, 1, MDType::String);
        if (alias && path) table.AddAlias(alias.GetString(), path.GetString());
    }
}

std::optional<std::string> DataAccessUtils::GetINCLUDEFileName(const IKeywordData* data)
{
    return FirstString(data);
}

std::optional<std::string> DataAccessUtils::GetGDFILEName(const IKeywordData* data)
{
    return FirstString(data);
}

std::optional<std::string> DataAccessUtils::GetORDGRIDName(const IKeywordData* data)
{
    return FirstString(data);
}

void DataAccessUtils::SetINCLUDEFileName(IKeywordData* data, const std::string& name)
{
    SetFirstString(data, name);
}

void DataAccessUtils::SetGDFILEName(IKeywordData* data, const std::string& name)
{
    SetFirstString(data, name);
}

void DataAccessUtils::SetORDGRIDName(IKeywordData* data, const std::string& name)
{
    SetFirstString(data, name);
}

Service::Time DataAccessUtils::GetTimeFromSTART(const IKeywordData* data)
{
    const IKeywordRecordData* record = AsRecord(data);
    return record ? TimeOf(*record) : Service::Time();
}

std::vector<Service::Time> DataAccessUtils::GetTimesFromDATES(const IKeywordData* data)
{
    std::vector<Service::Time> times;
    const IKeywordListData* rows = AsList(data);
    if (!rows || rows->GetElementType() != MDType::Record) return times;
    for (int i = 0; i < rows->GetElementCount(); ++i) {
        times.push_back(TimeOf(static_cast<const IKeywordRecordData&>(rows->GetContainer(i))));
    }
    return times;
}

Service::Time DataAccessUtils::AdvanceTime(const Service::Time& start, const Service::Time& current,
                                           Service::TimeSpan unit, const IKeywordData* data)
{
    const IKeywordListData* list = AsList(data);
    if (!list) return current;
    if (list->GetElementType() == MDType::Record) {
        const std::vector<Service::Time> times = GetTimesFromDATES(data);
        for (auto time = times.rbegin(); time != times.rend(); ++time) {
            if (time->IsDef()) return *time;
        }
        return current;
    }
    if (list->GetElementType() != MDType::Real) return current;

    // The steps are added up before they are turned into milliseconds, so that many small ones don't lose by rounding.
    double total = 0;
    double last = 0;
    bool any = false;
    for (int i = 0; i < list->GetElementCount(); ++i) {
        const ConstSlot step = list->GetElement(i);
        if (!step.HasValue()) continue;
        last = step.GetReal();
        total += last;
        any = true;
    }
    if (!any) return current;
    return data->GetSyntax()->GetName() == "TIME" ? start.Plus(last, unit) : current.Plus(total, unit);
}

} // namespace Tarn::Fjel::Core::Keywords

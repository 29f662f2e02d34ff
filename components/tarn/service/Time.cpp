#include <tarn/service/Serializer.h>
#include <tarn/service/Time.h>

#include <fmt/format.h>

#include <chrono>
#include <cmath>
#include <string>

namespace Tarn::Fjel::Core::Service {

namespace {

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();

bool IsWithin(int value, int first, int last)
{
    return first <= value && value <= last;
}

} // namespace

Time::Time(int year, int month, int day, int hour, int minute, int second, int millisecond)
{
    if (!IsWithin(year, 1, 9999) || !IsWithin(month, 1, 12) || !IsWithin(day, 1, 31)) return;
    if (!IsWithin(hour, 0, 23) || !IsWithin(minute, 0, 59) || !IsWithin(second, 0, 59)) return;
    if (!IsWithin(millisecond, 0, 999)) return;
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (!date.ok()) return;
    const std::int64_t days = std::chrono::sys_days(date).time_since_epoch().count();
    m_milliseconds = days * DAY + hour * HOUR + minute * MINUTE + second * SECOND + millisecond;
}

Time::~Time() = default;

Time Time::FromMilliseconds(std::int64_t milliseconds)
{
    Time time;
    time.m_milliseconds = milliseconds;
    return time;
}

Time Time::Now()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return FromMilliseconds(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

Time::Parts Time::ToParts() const
{
    if (!IsDef()) return {};
    std::int64_t days = m_milliseconds / DAY;
    std::int64_t rest = m_milliseconds % DAY;
    if (rest < 0) {
        rest += DAY;
        --days;
    }
    // The Gregorian calendar repeats after 400 years; so dates beyond the calendar type's years are found as well.
    constexpr std::int64_t daysOfCycle = 146097;
    std::int64_t cycle = days / daysOfCycle;
    days %= daysOfCycle;
    const std::chrono::year_month_day date{
        std::chrono::sys_days(std::chrono::days(static_cast<std::chrono::days::rep>(days)))};

    Parts parts;
    parts.year = static_cast<int>(static_cast<int>(date.year()) + 400 * cycle);
    parts.month = static_cast<int>(static_cast<unsigned>(date.month()));
    parts.day = static_cast<int>(static_cast<unsigned>(date.day()));
    parts.hour = static_cast<int>(rest / HOUR);
    parts.minute = static_cast<int>(rest % HOUR / MINUTE);
    parts.second = static_cast<int>(rest % MINUTE / SECOND);
    parts.millisecond = static_cast<int>(rest % SECOND);
    return parts;
}

std::string Time::ToString() const
{
    if (!IsDef()) return {};
    const Parts p = ToParts();
    std::string text = fmt::format("{:04}-{:02}-{:02}", p.year, p.month, p.day);
    if (m_milliseconds % DAY != 0) text += fmt::format("T{:02}:{:02}:{:02}", p.hour, p.minute, p.second);
    if (m_milliseconds % SECOND != 0) text += fmt::format(".{:03}", p.millisecond);
    return text;
}

Time Time::Plus(double amount, TimeSpan unit) const
{
    const double span = std::round(amount * static_cast<double>(unit));
    // 2^63 as a double; at or beyond it the conversion below would be undefined. NaN fails the test too.
    constexpr double limit = 9223372036854775808.0;
    if (!(std::abs(span) < limit)) return {};
    return PlusSpan(static_cast<TimeSpan>(span));
}

Time Time::PlusSpan(TimeSpan span) const
{
    if (!IsDef()) return {};
    if (span > 0 ? m_milliseconds > largest - span : m_milliseconds < std::numeric_limits<TimeSpan>::min() - span) {
        return {};
    }
    return FromMilliseconds(m_milliseconds + span);
}

TimeSpan Time::Minus(const Time& other) const
{
    if (!IsDef() || !other.IsDef()) return largest;
    if (other.m_milliseconds < 0 && m_milliseconds > largest + other.m_milliseconds) return largest;
    // One less than the lower end of the type, so that the absolute value exists.
    if (other.m_milliseconds > 0 && m_milliseconds < -largest + other.m_milliseconds) return -largest;
    return m_milliseconds - other.m_milliseconds;
}

void Time::Serialize(Serializer& serializer)
{
    // The serializer's numbers are of the width of the platform's long long; an undefined time is its smallest.
    long long value = m_milliseconds;
    serializer.Impl().Scalar(value, "ms", 0);
    m_milliseconds = value;
}

} // namespace Tarn::Fjel::Core::Service

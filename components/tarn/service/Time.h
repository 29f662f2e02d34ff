#pragma once

#include <tarn/service/ISerializable.h>

#include <compare>
#include <cstdint>
#include <limits>
#include <string>

namespace Tarn::Fjel::Core::Service {

/// A stretch of time in milliseconds.
using TimeSpan = std::int64_t;

inline constexpr TimeSpan MILLISECOND = 1;
inline constexpr TimeSpan SECOND = 1000 * MILLISECOND;
inline constexpr TimeSpan MINUTE = 60 * SECOND;
inline constexpr TimeSpan HOUR = 60 * MINUTE;
inline constexpr TimeSpan DAY = 24 * HOUR;

/// A moment in UTC, in whole milliseconds; undefined by default. Every comparison with an undefined time is false
/// (`!=`, its negation, is true).
class Time : public ISerializable
{
public:
    /// The calendar parts of a moment: month and day count from 1.
    struct Parts
    {
        int year = 0;
        int month = 0;
        int day = 0;
        int hour = 0;
        int minute = 0;
        int second = 0;
        int millisecond = 0;
    };

    Time() = default;
    /// A moment of the Gregorian calendar, years 1 to 9999. Parts that name no moment (day 30 of February, hour 24)
    /// give the undefined time.
    Time(int year, int month, int day, int hour = 0, int minute = 0, int second = 0, int millisecond = 0);
    ~Time() override;

    Time(const Time&) = default;
    Time(Time&&) = default;
    Time& operator=(const Time&) = default;
    Time& operator=(Time&&) = default;

    /// The moment that many milliseconds behind 1 January 1970, 00:00:00.
    static Time FromMilliseconds(std::int64_t milliseconds);
    /// The present moment.
    static Time Now();

    bool IsDef() const { return m_milliseconds != undefined; }
    /// Milliseconds since 1 January 1970, 00:00:00. REQUIRES: IsDef().
    std::int64_t ToMilliseconds() const { return m_milliseconds; }
    /// The calendar parts; all zero for an undefined time.
    Parts ToParts() const;
    /// "2024-02-29", "2024-02-29T12:30:00" or "2024-02-29T12:30:00.250", the shortest that loses nothing; empty for an
    /// undefined time.
    std::string ToString() const;

    /// This moment plus amount units (DAY, HOUR, ...), rounded to the nearest millisecond. Undefined when this time is
    /// undefined, when amount is no finite number, or when the result leaves the range of the type.
    Time Plus(double amount, TimeSpan unit) const;

    /// The value is written as one number of milliseconds, an undefined time as its own mark.
    void Serialize(Serializer& serializer) override;

    friend bool operator==(const Time& left, const Time& right)
    {
        return left.IsDef() && left.m_milliseconds == right.m_milliseconds;
    }
    friend std::partial_ordering operator<=>(const Time& left, const Time& right)
    {
        if (!left.IsDef() || !right.IsDef()) return std::partial_ordering::unordered;
        return left.m_milliseconds <=> right.m_milliseconds;
    }
    /// right to left, in milliseconds; divide by DAY or HOUR for those units. The largest TimeSpan when either is
    /// undefined, so that no undefined time is near to anything; differences beyond the range are held at its ends.
    friend TimeSpan operator-(const Time& left, const Time& right) { return left.Minus(right); }
    /// Undefined stays undefined; a sum beyond the range of the type is undefined.
    friend Time operator+(const Time& time, TimeSpan span) { return time.PlusSpan(span); }

private:
    static constexpr std::int64_t undefined = std::numeric_limits<std::int64_t>::min();

    TimeSpan Minus(const Time& other) const;
    Time PlusSpan(TimeSpan span) const;

    std::int64_t m_milliseconds = undefined;
};

} // namespace Tarn::Fjel::Core::Service

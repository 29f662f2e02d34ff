#include <tarn/service/Time.h>

#include <cmath>
#include <cstdlib>
#include <limits>

namespace Tarn::Fjel::Core::Service {
namespace {

TEST(Time, CalendarGoesThereAndBack)
{
    struct Case
    {
        Time time;
        std::int64_t milliseconds;
        const char* text;
    };
    const Case cases[] = {
        {Time(1970, 1, 1), 0, "1970-01-01"},
        {Time(1990, 1, 1), 7305 * DAY, "1990-01-01"},
        {Time(2024, 2, 29, 12, 30), 1709209800000, "2024-02-29T12:30:00"},
        {Time(1969, 12, 31, 23, 59, 59, 999), -1, "1969-12-31T23:59:59.999"},
        {Time(1, 1, 1), -719162 * DAY, "0001-01-01"},
        {Time(9999, 12, 31, 0, 0, 0, 5), 2932896 * DAY + 5, "9999-12-31T00:00:00.005"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.time.ToMilliseconds(), c.milliseconds) << c.text;
        EXPECT_EQ(c.time.ToString(), c.text);
        const Time::Parts p = Time::FromMilliseconds(c.milliseconds).ToParts();
        EXPECT_EQ(Time(p.year, p.month, p.day, p.hour, p.minute, p.second, p.millisecond), c.time);
    }
}

TEST(Time, PartsThatNameNoMomentAreUndefined)
{
    for (const Time& time :
         {Time(), Time(2023, 2, 29), Time(2023, 13, 1), Time(2023, 0, 1), Time(2023, 4, 31), Time(2023, 1, 1, 24),
          Time(2023, 1, 1, 0, 60), Time(2023, 1, 1, 0, 0, 0, 1000), Time(0, 1, 1), Time(2023, -1, 1)})
    {
        EXPECT_FALSE(time.IsDef());
        EXPECT_EQ(time.ToString(), "");
    }
}

TEST(Time, EveryComparisonWithUndefinedIsFalse)
{
    const Time undefined;
    const Time defined(2020, 1, 1);
    for (const auto& [left, right] : {std::pair{undefined, defined}, {defined, undefined}, {undefined, undefined}}) {
        EXPECT_FALSE(left < right || left > right || left <= right || left >= right || left == right);
    }
    EXPECT_TRUE(defined >= defined && defined <= defined && defined < defined + MILLISECOND);
    // An undefined time is near to nothing.
    EXPECT_GT(std::abs(undefined - defined), MILLISECOND);
    EXPECT_GT(std::abs(defined - undefined), MILLISECOND);
    EXPECT_GT(std::abs(undefined - undefined), MILLISECOND);
}

TEST(Time, ArithmeticRoundsAndNeverOverflows)
{
    const Time start(1990, 1, 1);
    EXPECT_EQ(start.Plus(365.0, DAY), Time(1991, 1, 1));
    EXPECT_EQ(start.Plus(0.1, DAY), Time(1990, 1, 1, 2, 24));
    EXPECT_EQ(start.Plus(-0.5, HOUR), Time(1989, 12, 31, 23, 30));
    EXPECT_EQ(start.Plus(1.0 / 3, DAY) - start, 8 * HOUR);
    EXPECT_EQ((Time(1990, 1, 31) - start) / DAY, 30);

    EXPECT_FALSE(start.Plus(1e300, DAY).IsDef());
    EXPECT_FALSE(start.Plus(-1e300, DAY).IsDef());
    EXPECT_FALSE(start.Plus(std::nan(""), DAY).IsDef());
    EXPECT_FALSE(Time().Plus(1, DAY).IsDef());
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    const Time late = Time::FromMilliseconds(most);
    const Time early = Time::FromMilliseconds(-most);
    EXPECT_FALSE((late + 1).IsDef());
    EXPECT_FALSE((early + -most).IsDef());
    EXPECT_EQ(late - early, most);
    EXPECT_EQ(std::abs(early - late), most);
    EXPECT_FALSE(late.ToString().empty());
}

} // namespace
} // namespace Tarn::Fjel::Core::Service

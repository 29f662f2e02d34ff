#include "data/TypedDate.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <vector>

#include <tarn/service/Strings.h>

namespace Deckman {

namespace {

constexpr std::array<std::string_view, 12> months{"JANUARY",   "FEBRUARY", "MARCH",    "APRIL",
                                                  "MAY",       "JUNE",     "JULY",     "AUGUST",
                                                  "SEPTEMBER", "OCTOBER",  "NOVEMBER", "DECEMBER"};

/// All of `text` as an unsigned whole number of at most `most` digits.
std::optional<int> WholeNumber(std::string_view text, std::size_t most)
{
    if (text.empty() || text.size() > most || !Service::AllDigits(text)) return std::nullopt;
    int value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

/// From 1; 0 for what is no name of a month.
int MonthNamed(std::string_view name)
{
    const std::string wanted = Service::Uppercased(name);
    if (wanted == "JLY") return 7;
    for (std::size_t i = 0; i < months.size(); ++i) {
        if (wanted.size() >= 3 && months[i].starts_with(wanted)) return static_cast<int>(i) + 1;
    }
    return 0;
}

std::vector<std::string_view> Split(std::string_view text, std::string_view separators)
{
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const std::size_t end = text.find_first_of(separators);
        if (end != 0) parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) break;
        text.remove_prefix(end + 1);
    }
    return parts;
}

struct TimeOfDay
{
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

/// HH:MM, HH:MM:SS or HH:MM:SS.SSS
std::optional<TimeOfDay> ParseTimeOfDay(std::string_view text)
{
    const std::vector<std::string_view> parts = Split(text, ":");
    if (parts.size() < 2 || parts.size() > 3) return std::nullopt;
    const auto hour = WholeNumber(parts[0], 2);
    const auto minute = WholeNumber(parts[1], 2);
    if (!hour || !minute) return std::nullopt;
    TimeOfDay time{*hour, *minute, 0, 0};
    if (parts.size() == 3) {
        const std::vector<std::string_view> pieces = Split(parts[2], ".");
        const auto second = pieces.empty() ? std::nullopt : WholeNumber(pieces[0], 2);
        if (!second || pieces.size() > 2) return std::nullopt;
        time.second = *second;
        if (pieces.size() == 2) {
            const std::string digits = (std::string(pieces[1]) + "00").substr(0, 3);
            const auto fraction = WholeNumber(digits, 3);
            if (!fraction || !Service::AllDigits(pieces[1])) return std::nullopt;
            time.millisecond = *fraction;
        }
    }
    return time;
}

struct Day
{
    int year;
    int month;
    int day;
};

std::optional<Day> ParseDay(const std::vector<std::string_view>& parts, bool mayHaveMonthNumber)
{
    if (parts.size() != 3) return std::nullopt;
    if (const auto year = WholeNumber(parts[0], 4); year && parts[0].size() == 4) {
        const auto month = WholeNumber(parts[1], 2);
        const auto day = WholeNumber(parts[2], 2);
        if (!month || !day) return std::nullopt;
        return Day{*year, *month, *day};
    }
    const auto day = WholeNumber(parts[0], 2);
    const auto year = WholeNumber(parts[2], 4);
    if (!day || !year) return std::nullopt;
    if (const int month = MonthNamed(parts[1])) return Day{*year, month, *day};
    const auto month = WholeNumber(parts[1], 2);
    if (!month || !mayHaveMonthNumber) return std::nullopt;
    return Day{*year, *month, *day};
}

/// 100d, 100.5 days
std::optional<double> ParseDays(std::string_view text)
{
    double days = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), days);
    if (error != std::errc() || !std::isfinite(days)) return std::nullopt;
    const std::string unit =
        Service::Uppercased(Service::Trimmed(text.substr(static_cast<std::size_t>(end - text.data()))));
    if (unit != "D" && unit != "DAY" && unit != "DAYS") return std::nullopt;
    return days;
}

} // namespace

std::optional<TypedDate> TypedDate::Parse(std::string_view given)
{
    const std::string_view trimmed = Service::Trimmed(given);
    if (const auto days = ParseDays(trimmed)) return TypedDate{*days, false};

    std::string text(trimmed);
    for (char& c : text) {
        if (c == '\'' || c == '"') c = ' ';
    }
    // 2026-11-25T12:30
    if (text.size() > 11 && (text[10] == 'T' || text[10] == 't') && Service::IsDigit(text[11])) text[10] = ' ';

    std::vector<std::string_view> words = Split(text, " \t");
    TimeOfDay time;
    bool isWholeDay = true;
    if (words.size() > 1 && words.back().find(':') != std::string_view::npos) {
        const auto parsed = ParseTimeOfDay(words.back());
        if (!parsed) return std::nullopt;
        time = *parsed;
        isWholeDay = false;
        words.pop_back();
    }
    const bool isOneWord = words.size() == 1;
    const bool hasDots = isOneWord && words[0].find('.') != std::string_view::npos;
    const auto day = ParseDay(isOneWord ? Split(words[0], hasDots ? "." : "-/") : words, hasDots);
    if (!day) return std::nullopt;
    const Service::Time moment(day->year, day->month, day->day, time.hour, time.minute, time.second, time.millisecond);
    if (!moment.IsDef()) return std::nullopt;
    return TypedDate{moment, isWholeDay};
}

} // namespace Deckman

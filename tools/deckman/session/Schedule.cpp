#include "session/Schedule.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/KeywordVariables.h>
#include <deckmanager/ReadKeywordData.h>
#include <fmt/format.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordKind.h>

#include "command/Options.h"
#include "data/DataValues.h"
#include "session/DeckLines.h"
#include "session/DeckSession.h"
#include "session/DeckWalk.h"

namespace Deckman {

namespace {

using Keywords::IKeywordData;
using Keywords::IKeywordListData;
using Keywords::MDType;
using Keywords::SectionType;
using Service::Time;

/// Two moments that lie no further apart are one: days are added up as fractions.
constexpr Service::TimeSpan tolerance = Service::SECOND / 2;

double DaysBetween(const Time& from, const Time& to)
{
    return static_cast<double>(to - from) / static_cast<double>(Service::DAY);
}

/// Without the noise of a long sum.
double Rounded(double days)
{
    constexpr double steps = 1e9;
    const double rounded = std::round(days * steps) / steps;
    return std::isfinite(rounded) ? rounded : days;
}

} // namespace

/// One pass over the deck that keeps track of time.
class Schedule::Reader
{
public:
    Reader(DeckSession& session, Schedule& schedule) : m_session(session), m_schedule(schedule) {}

    void Read(bool all)
    {
        DeckWalk walk(m_session, all);
        while (walk.Next())
            Take(walk);
        CloseStretch(walk.Index());
        if (!m_hasSchedule && !m_hasTimeKeyword) {
            m_schedule.m_faults.push_back({nullptr, -1, m_session.PlaceOf(*m_session.Keywords().GetDataFile()), true,
                                           "The deck has no SCHEDULE section."});
        }
    }

private:
    void Take(const DeckWalk& walk)
    {
        const DeckManager::IKeyword& keyword = walk.Keyword();
        // With --simulator, the words of a region have no text and what they enclose isn't there.
        const bool hasText = keyword.GetSize() > 0;
        if (hasText && m_skips.Hides(keyword)) return;
        if (walk.Kind() == Keywords::KeywordKind::Section) {
            if (m_isInSchedule && walk.Section() != SectionType::SCHEDULE) CloseStretch(walk.Index() - 1);
            m_isInSchedule = walk.Section() == SectionType::SCHEDULE;
            if (m_isInSchedule && !m_hasSchedule) OpenSchedule(walk.Index());
            return;
        }
        if (keyword.IsSuppressed() || !hasText) return;
        const SectionType section = walk.Section();
        const std::string& name = keyword.GetName();
        if (name == "START" && !m_hasStart && (section == SectionType::RUNSPEC || section == SectionType::None))
            TakeStart(walk);
        else if (name == "LAB" && section == SectionType::RUNSPEC)
            m_unit = Service::HOUR;
        else if ((name == "DATES" || name == "TSTEP" || name == "TIME") &&
                 (section == SectionType::SCHEDULE || section == SectionType::None))
            TakeTimeKeyword(walk);
    }

    void TakeStart(const DeckWalk& walk)
    {
        m_hasStart = true;
        const std::unique_ptr<IKeywordData> data = DataOf(walk.Keyword());
        m_start = Keywords::DataAccessUtils::GetTimeFromSTART(data.get());
        if (!m_start.IsDef()) {
            Tell(walk.Keyword(), true, fmt::format("START is no date: {}.", RecordText(data.get())));
            return;
        }
        m_base = m_start;
        m_baseDays = 0;
        Moment& moment = Add(walk);
        moment.date = m_start;
        moment.days = 0.0;
        m_startMoment = m_schedule.m_moments.size();
    }

    /// What follows SCHEDULE, up to the first time keyword, is in force from the start.
    void OpenSchedule(int index)
    {
        m_hasSchedule = true;
        if (!m_hasStart) TellNoStart();
        if (m_startMoment == 0) return;
        m_open = m_startMoment;
        OpenMoment().firstInForce = index;
    }

    void TellNoStart()
    {
        m_hasStart = true;
        m_schedule.m_faults.push_back({nullptr, -1, m_session.PlaceOf(*m_session.Keywords().GetDataFile()), true,
                                       "The deck has no START in its RUNSPEC section: its days have no beginning."});
    }

    void TakeTimeKeyword(const DeckWalk& walk)
    {
        m_hasTimeKeyword = true;
        if (!m_hasStart) TellNoStart();
        CloseStretch(walk.Index() - 1);
        const std::size_t before = m_schedule.m_moments.size();
        const std::unique_ptr<IKeywordData> data = DataOf(walk.Keyword());
        if (data != nullptr && data->GetType() == MDType::List) {
            const auto& list = static_cast<const IKeywordListData&>(*data);
            if (list.GetElementType() == MDType::Record)
                TakeDates(walk, list);
            else if (list.GetElementType() == MDType::Real)
                TakeSteps(walk, list, walk.Keyword().GetName() == "TIME");
            m_element = -1;
            if (list.GetElementCount() == 0)
                Tell(walk.Keyword(), false, fmt::format("{} holds no time.", walk.Keyword().GetName()));
        }
        // The keywords behind are in force from the last of them; the others pass without any.
        if (m_schedule.m_moments.size() > before) {
            m_open = m_schedule.m_moments.size();
            OpenMoment().firstInForce = walk.Index();
        }
    }

    void TakeDates(const DeckWalk& walk, const IKeywordListData& list)
    {
        const std::vector<Time> times = Keywords::DataAccessUtils::GetTimesFromDATES(&list);
        for (std::size_t i = 0; i < times.size(); ++i) {
            const int record = m_element = static_cast<int>(i);
            if (!times[i].IsDef()) {
                Tell(walk.Keyword(), true,
                     fmt::format("DATES[{}] is no date: {}.", record, RecordText(&list.GetContainer(record))));
                continue;
            }
            CheckOrder(walk.Keyword(), fmt::format("DATES[{}]", record), times[i]);
            m_base = times[i];
            m_sinceBase = 0;
            m_isLost = false;
            m_baseDays.reset();
            if (m_start.IsDef()) m_baseDays = DaysBetween(m_start, times[i]);
            AddNow(walk).element = record;
        }
    }

    void TakeSteps(const DeckWalk& walk, const IKeywordListData& list, bool fromStart)
    {
        const double unit = static_cast<double>(m_unit) / static_cast<double>(Service::DAY);
        const std::string& name = walk.Keyword().GetName();
        ValueReader values({&m_variables}, ValueReader::Form::People);
        for (int i = 0; i < list.GetElementCount(); ++i) {
            const std::string where = fmt::format("{}[{}]", name, i);
            m_element = i;
            // Infinity is what a number that is too large for anything reads as.
            if (!list.GetElement(i).HasValue() || !std::isfinite(list.GetElement(i).GetReal())) {
                const ValueText value = values.Read(list, i);
                Tell(walk.Keyword(), true,
                     fmt::format("{} is no number of days: {}.", where,
                                 value.origin == ValueText::Origin::None ? "1*" : value.text));
                m_isLost = m_isLost || !fromStart;
                continue;
            }
            const double value = list.GetElement(i).GetReal() * unit;
            if (fromStart) {
                if (m_baseDays && value < *m_baseDays + m_sinceBase)
                    TellBackwards(walk.Keyword(), where, fmt::format("{} days", Rounded(value)));
                m_base = m_start;
                m_baseDays = 0;
                m_sinceBase = value;
                m_isLost = false;
            } else {
                if (value < 0)
                    TellBackwards(walk.Keyword(), where, fmt::format("a step of {} days", Rounded(value)));
                else if (value == 0)
                    Tell(walk.Keyword(), false, fmt::format("Time stands still: {} is 0.", where));
                m_sinceBase += value;
            }
            Moment& moment = AddNow(walk);
            moment.element = i;
            moment.step = list.GetElement(i).GetReal();
        }
    }

    void CheckOrder(const DeckManager::IKeyword& keyword, const std::string& where, const Time& time)
    {
        if (m_isLost) return;
        const Time now = Now();
        if (!now.IsDef() || time - now > tolerance) return;
        if (now - time > tolerance)
            TellBackwards(keyword, where, time.ToString());
        else
            Tell(keyword, false, fmt::format("Time stands still: {} is {} again.", where, now.ToString()));
    }

    void TellBackwards(const DeckManager::IKeyword& keyword, const std::string& where, const std::string& what)
    {
        const Time now = Now();
        Tell(keyword, true,
             fmt::format("Time runs backwards: {} is {}, and the deck has come to {}.", where, what,
                         now.IsDef()  ? now.ToString()
                         : m_baseDays ? fmt::format("day {}", Rounded(*m_baseDays + m_sinceBase))
                                      : std::string("a later time")));
    }

    Time Now() const { return m_isLost ? Time() : m_base.Plus(m_sinceBase, Service::DAY); }

    Moment& AddNow(const DeckWalk& walk)
    {
        Moment& moment = Add(walk);
        if (m_isLost) return moment;
        if (const Time now = Now(); now.IsDef()) moment.date = now;
        if (m_baseDays && std::isfinite(m_sinceBase)) moment.days = Rounded(*m_baseDays + m_sinceBase);
        return moment;
    }

    Moment& Add(const DeckWalk& walk)
    {
        Moment moment;
        moment.keyword = &walk.Keyword();
        moment.index = walk.Index();
        moment.place = fmt::format("{}:{}", m_session.FileShown(walk.File()), walk.Keyword().GetLine());
        moment.firstInForce = moment.lastInForce = walk.Index();
        return m_schedule.m_moments.emplace_back(std::move(moment));
    }

    Moment& OpenMoment() { return m_schedule.m_moments[m_open - 1]; }

    void CloseStretch(int last)
    {
        if (m_open > 0) OpenMoment().lastInForce = std::max(last, OpenMoment().firstInForce);
        m_open = 0;
    }

    std::unique_ptr<IKeywordData> DataOf(const DeckManager::IKeyword& keyword)
    {
        m_variables = DeckManager::KeywordVariables();
        m_element = -1;
        try {
            return DeckManager::ReadKeywordData(m_session.Keywords(), keyword, &m_variables);
        } catch (const Service::Exception& exception) {
            Tell(keyword, true, exception.what());
            return nullptr;
        }
    }

    /// The values of a record as a deck would have them.
    std::string RecordText(const IKeywordData* data)
    {
        if (data == nullptr || data->GetType() != MDType::Record) return "there is nothing";
        const auto& record = static_cast<const Keywords::IKeywordRecordData&>(*data);
        ValueReader values({&m_variables}, ValueReader::Form::People);
        std::string text, pending;
        for (int i = 0; i < record.GetItemCount(); ++i) {
            const ValueText value = values.Read(record, i);
            pending += pending.empty() && text.empty() ? "" : " ";
            if (value.origin == ValueText::Origin::None) {
                pending += "1*";
                continue;
            }
            text += pending;
            text += value.text;
            pending.clear();
        }
        return text.empty() ? "there is nothing" : text;
    }

    void Tell(const DeckManager::IKeyword& keyword, bool isError, std::string text)
    {
        m_schedule.m_faults.push_back({&keyword, m_element, m_session.PlaceOf(keyword), isError, std::move(text)});
    }

    DeckSession& m_session;
    Schedule& m_schedule;
    SkipTracker m_skips{std::nullopt};
    DeckManager::KeywordVariables m_variables; // of the keyword that was read last
    Service::TimeSpan m_unit = Service::DAY;   // what the deck counts time in
    bool m_hasStart = false;                   // or its absence was told
    bool m_hasSchedule = false;
    bool m_hasTimeKeyword = false;
    bool m_isInSchedule = false;
    Time m_start;
    Time m_base;                            // the last date that was given as one
    std::optional<double> m_baseDays = 0.0; // its days since the start
    double m_sinceBase = 0;                 // days that have passed since
    int m_element = -1;                     // of the list at hand
    bool m_isLost = false;                  // a step was no number: time is unknown up to the next date
    std::size_t m_startMoment = 0;          // the place of a moment, from 1; 0 for none
    std::size_t m_open = 0;                 // the moment at which the keywords that come are in force
};

Schedule::Schedule(DeckSession& session, bool all)
{
    Reader(session, *this).Read(all);
}

const Schedule::Moment* Schedule::Find(const TypedDate& date) const
{
    const auto first = [this](const auto& fits) -> const Moment* {
        const auto found = std::ranges::find_if(m_moments, fits);
        return found != m_moments.end() ? &*found : nullptr;
    };
    if (const double* days = std::get_if<double>(&date.when)) {
        constexpr double near = static_cast<double>(tolerance) / static_cast<double>(Service::DAY);
        return first([&](const Moment& moment) { return moment.days && std::abs(*moment.days - *days) <= near; });
    }
    const Time& time = std::get<Time>(date.when);
    const Moment* exact = first([&](const Moment& moment) {
        return moment.date && *moment.date - time <= tolerance && time - *moment.date <= tolerance;
    });
    if (exact != nullptr || !date.isWholeDay) return exact;
    return first([&](const Moment& moment) {
        return moment.date && *moment.date >= time && *moment.date - time < Service::DAY;
    });
}

std::string Schedule::NearestTo(const TypedDate& date) const
{
    const Moment* before = nullptr;
    const Moment* behind = nullptr;
    const double* days = std::get_if<double>(&date.when);
    for (const Moment& moment : m_moments) {
        if (days != nullptr ? !moment.days : !moment.date) continue;
        const bool isBefore = days != nullptr ? *moment.days < *days : *moment.date < std::get<Time>(date.when);
        const auto isLater = [days](const Moment& a, const Moment& b) {
            return days != nullptr ? *a.days > *b.days : *a.date > *b.date;
        };
        if (isBefore && (before == nullptr || isLater(moment, *before))) before = &moment;
        if (!isBefore && (behind == nullptr || isLater(*behind, moment))) behind = &moment;
    }
    std::string text;
    for (const Moment* moment : {before, behind}) {
        if (moment == nullptr) continue;
        text += fmt::format("{}{} ({} @{})", text.empty() ? "" : ", ",
                            days != nullptr ? fmt::format("day {}", *moment->days) : moment->date->ToString(),
                            moment->keyword->GetName(), moment->index);
    }
    return text;
}

WhereLimits LimitsOf(DeckSession& session, const Options& options)
{
    WhereLimits limits{options.all};
    if (options.at.empty()) return limits;
    const auto date = TypedDate::Parse(options.at);
    if (!date) {
        throw Failure(WrongUsage,
                      fmt::format("'{}' is no date. A date is 2026-11-25, '25 NOV 2026', either with a time, "
                                  "or 100d for days since the start.",
                                  options.at));
    }
    const Schedule schedule(session, options.all);
    const Schedule::Moment* moment = schedule.Find(*date);
    if (moment == nullptr) {
        // Only now do the faults of the deck's other dates matter.
        for (const Schedule::Fault& fault : schedule.Faults())
            session.Log().Warning(fault.place, fault.text);
        const std::string nearest = schedule.NearestTo(*date);
        throw Failure(NotThere, fmt::format("The schedule has no time {}.{}", options.at,
                                            nearest.empty() ? nearest : fmt::format(" Nearest: {}.", nearest)));
    }
    limits.first = moment->firstInForce;
    limits.last = moment->lastInForce;
    limits.said = fmt::format(" at {}", options.at);
    return limits;
}

} // namespace Deckman

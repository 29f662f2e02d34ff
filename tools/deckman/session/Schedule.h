#pragma once

#include <optional>
#include <string>
#include <vector>

#include <tarn/service/Time.h>

#include "data/TypedDate.h"
#include "session/Where.h"

namespace Tarn::Fjel::Core::DeckManager {
class IKeyword;
}

namespace Deckman {

class DeckSession;
struct Options;

/// The moments to which a deck's schedule advances: its start, every record of DATES, every step of TSTEP, every value
/// of TIME.
class Schedule
{
public:
    struct Moment
    {
        const Tarn::Fjel::Core::DeckManager::IKeyword* keyword = nullptr; ///< START or the time keyword
        int index = 0;                                                    ///< of the keyword, as `ls` counts
        int element = -1;                                                 ///< of its list; -1 for START
        std::optional<double> step;                                       ///< the value of TSTEP or TIME
        std::string place;                                                ///< of the keyword, for people
        std::optional<Service::Time> date;                                ///< none where the deck doesn't tell it
        std::optional<double> days;                                       ///< since the start of the run
        int firstInForce = 0; ///< from here on keywords are in force at this moment …
        int lastInForce = 0;  ///< … up to here, both as `ls` counts
    };
    /// What is wrong with the deck's times.
    struct Fault
    {
        const Tarn::Fjel::Core::DeckManager::IKeyword* keyword; ///< null for what concerns the deck as a whole
        int element;                                            ///< of its list; -1 for none
        std::string place;
        bool isError;
        std::string text;
    };

    /// Walks the deck once; with `all` also what stands behind its end. Suppressed keywords don't count.
    Schedule(DeckSession& session, bool all);

    const std::vector<Moment>& Moments() const { return m_moments; }
    const std::vector<Fault>& Faults() const { return m_faults; }

    /// The first moment at that date; null when there is none.
    const Moment* Find(const TypedDate& date) const;
    /// The moments around a date, for a message; empty when the schedule has none.
    std::string NearestTo(const TypedDate& date) const;

private:
    class Reader;

    std::vector<Moment> m_moments;
    std::vector<Fault> m_faults;
};

/// The keywords among which a verb looks: with --at those in force at that date. Throws `Failure` for a text that is no
/// date, and with the nearest dates when no time keyword leads to it.
WhereLimits LimitsOf(DeckSession& session, const Options& options);

} // namespace Deckman

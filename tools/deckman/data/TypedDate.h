#pragma once

#include <optional>
#include <string_view>
#include <variant>

#include <tarn/service/Time.h>

namespace Deckman {

namespace Service = Tarn::Fjel::Core::Service;

/// A date as a person types it.
struct TypedDate
{
    /// A moment, or the days since the start of the run.
    std::variant<Service::Time, double> when;
    bool isWholeDay = false; ///< no time of day was given

    /// Reads `2026-11-25`, `25 NOV 2026`, `25-Nov-2026` or `25.11.2026`, all with a time (`12:30`, `12:30:15.5`, behind
    /// a blank or a `T`) or without, and `100d` or `100.5 days`. Month names may be cut short to three letters. Empty
    /// for anything else, and for a date that the calendar doesn't have.
    static std::optional<TypedDate> Parse(std::string_view text);
};

} // namespace Deckman

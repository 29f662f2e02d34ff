#pragma once

namespace Tarn::Fjel::Core::Keywords {

/// The simulators that a deck may be written for.
///
/// S100 and S300 are the ones that SKIP100 and SKIP300 speak of. The decks of NoSuppression know no suppressed lines.
/// Any stands for no simulator in particular: whatever some simulator takes is supported by Any. The numbers between
/// exist so that a value read from elsewhere stays a value of this type; they stand for no one in particular.
enum class SimulatorType : int
{
    S100 = 0,
    S300 = 1,
    Other2 = 2,
    Other3 = 3,
    Other4 = 4,
    Other5 = 5,
    NoSuppression = 6,
    Other7 = 7,
    Other8 = 8,
    Other9 = 9,
    Other10 = 10,
    Any = 11
};

} // namespace Tarn::Fjel::Core::Keywords

#pragma once

#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::DeckManager {

/// How the text of a token becomes a value. All follow the C library's rules in the "C" locale, whatever the locale of
/// the process is, and none sends a message. A conversion that fails leaves `value` alone.
namespace ValueConversions {

/// The whole number at the head of the text, behind white space; what follows it is ignored. Fails only without a
/// digit. A number beyond 32 bits is held at -2147483647 or 2147483647.
bool ToInteger(std::string_view text, int& value);

/// The same, for a text that must be the number and nothing else.
bool ToWholeInteger(std::string_view text, int& value);

/// As `ToInteger`, and 0 without a digit.
int ToIntegerOrZero(std::string_view text);

/// A real number, which must be the whole of the text. The first D or d stands for an exponent's E. An empty text is
/// 0.0. Takes all forms that the C library's `strtod` takes.
bool ToReal(std::string_view text, double& value);

/// YES, Yes, yes, Y, y: 1. NO, No, no, N, n: 0. Nothing else.
bool ConvertYesNo(std::string_view text, signed char& value);

} // namespace ValueConversions
} // namespace Tarn::Fjel::Core::DeckManager

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Tarn::Fjel::Core::DeckManager {

/// Counts the numbers in whole lines of data, at a fraction of what it costs to read them.
///
/// A plain line is one of at most 132 characters in which every token is a number, `n*number` or, where the list knows
/// defaults, `n*`, with white space between. Each of its tokens stands for as many values as its repeat says, and none
/// gives cause for a message. All else (comments, quotes, commas, terminators, a count of 0 or of ten digits) is left
/// to who reads token by token.
class PlainNumbers
{
public:
    enum class Kind : unsigned char
    {
        Integer, ///< digits, with a sign or without
        Real     ///< also with a point and an exponent, of C or of Fortran
    };

    struct Rules
    {
        Kind kind = Kind::Real;
        bool allowsDefaults = false;
    };

    /// What was passed: whole lines, from the beginning of the text on.
    struct Passed
    {
        std::size_t bytes = 0;
        std::int64_t values = 0;
    };

    /// Passes over plain lines until one isn't plain, or holds more values than are left of `most`, or has no line end
    /// within the text. REQUIRES: the text begins at the head of a line.
    static Passed Pass(std::string_view text, Rules rules, std::int64_t most);

    /// The same byte by byte, for processors that the other has no code for.
    static Passed PassByteByByte(std::string_view text, Rules rules, std::int64_t most);
};

} // namespace Tarn::Fjel::Core::DeckManager

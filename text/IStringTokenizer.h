#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::DeckManager {

/// Cuts one line of keyword data into tokens. The line isn't owned: it must stay alive and unchanged until the next
/// `SetText`.
class IStringTokenizer
{
public:
    virtual ~IStringTokenizer() = default;

    /// Starts on a new line, or on the same one again. Null: no line.
    virtual void SetText(const std::string* text) = 0;

    /// The next token; false at the end of the line or at a comment. `quoted`, if given, tells in all cases whether the
    /// token stood in quotes. With `allowCommas` a comma is a character like any other.
    virtual bool Next(std::string& token, bool* quoted, bool allowCommas) = 0;

    /// Whether no character of the line has been taken yet.
    virtual bool AtBegin() const = 0;

    /// As `Next`, without a copy: the view is good until the next call.
    virtual bool NextView(std::string_view& token, bool* quoted, bool allowCommas) = 0;

    /// Takes all further copies of the token that was given last, where it came from a repeat. Returns how many there
    /// were.
    virtual std::int32_t TakeRepeats() { return 0; }
};

} // namespace Tarn::Fjel::Core::DeckManager

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::DeckManager {

class ILineReader;

/// How a line ends.
enum class LineEnd
{
    Lf,
    CrLf
};

constexpr std::string_view BytesOf(LineEnd lineEnd)
{
    return lineEnd == LineEnd::CrLf ? "\r\n" : "\n";
}

/// That of text files on this platform.
LineEnd PlatformLineEnd();

/// How the first line of the text ends; empty when none does. Moves the reader.
std::optional<LineEnd> FirstLineEnd(ILineReader& reader);
/// The same of a file; empty also when it can't be read.
std::optional<LineEnd> FirstLineEnd(const std::string& fileName);

/// Rewrites the line ends of a block of bytes that comes in pieces. What comes out doesn't depend on where the pieces
/// are cut.
class LineEndConverter
{
public:
    /// What becomes of a CR that ends no line. A CR at the very end of the block is dropped in any case.
    enum class LoneCr
    {
        Drop,
        Keep
    };

    LineEndConverter(LineEnd to, LoneCr loneCr) : m_to(to), m_loneCr(loneCr) {}

    /// The most bytes that a piece of that size can become.
    static constexpr std::size_t MostBytes(std::size_t pieceSize) { return 2 * pieceSize + 1; }

    /// Converts the next piece into `out`, which has room for `MostBytes`; returns how many bytes it has become.
    std::size_t Convert(std::string_view piece, char* out);

private:
    LineEnd m_to;
    LoneCr m_loneCr;
    bool m_crHeld = false; ///< the last piece ended with a CR, and what follows decides
};

} // namespace Tarn::Fjel::Core::DeckManager

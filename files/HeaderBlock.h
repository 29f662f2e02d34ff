#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::DeckManager {

class ILineReader;

/// The comment at the head of a file that a host has put there: comment lines between an opening and a closing mark,
/// and the empty lines behind these. The marks begin with the default generated tag.
class HeaderBlock
{
public:
    HeaderBlock() = delete;

    static bool IsOpening(std::string_view line);
    static bool IsClosing(std::string_view line);

    /// The block for a plain text, with "\n" line ends and one empty line behind the closing mark.
    static std::string Of(std::string text);

    struct Place
    {
        long long begin;
        long long end;
    };
    /// Where such a block stands among the comments and blank lines from `begin` on, in a head that ends at `end`.
    /// Nothing when it is never closed: then its text is the user's. Moves the reader.
    static std::optional<Place> Find(ILineReader& reader, long long begin, long long end);
};

} // namespace Tarn::Fjel::Core::DeckManager

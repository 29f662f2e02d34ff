#pragma once

#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::DeckManager {

/// What can be told of the text that a keyword's data were replaced by.
class HeldText
{
public:
    HeldText() = delete;

    /// The text begins, white space aside, with a comment, which then is the keyword's.
    static bool BeginsWithComment(std::string_view text);
    /// What stands ahead of the first data line.
    static std::string CommentsAtHead(std::string_view text);

    enum class Rest
    {
        Stays,        ///< it follows the text from the file
        WithoutBlock, ///< the text has it, but for the block at its end
    };

    /// `rest` is what stands in the file behind the keyword's own text: comments above the keyword below, and perhaps
    /// more. A text that was read from the keyword has it too; such a text ends with the same lines, which are then
    /// taken from it.
    static Rest TakeRest(std::string& text, std::string_view rest);
};

} // namespace Tarn::Fjel::Core::DeckManager

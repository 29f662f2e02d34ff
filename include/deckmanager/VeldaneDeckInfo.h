#pragma once

#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::DeckManager {

/// The vocabulary of the deck text format: its markers, its special characters, and the predicates on them that
/// every reader of deck text shares. All members are static; nothing here depends on a setting or on the locale.
class VeldaneDeckInfo
{
public:
    VeldaneDeckInfo() = delete;

    /// Starts a comment, which runs to the end of the line.
    static constexpr const char* COMMENT_MARKER = "--";
    /// At the head of a line: suppressed, a comment to a simulator and live text here.
    static constexpr const char* SUPPRESS_MARKER = "--@@@";
    /// Stands in place of the suppress marker in a deck flagged by `Environment::setIsQUORLDeck`.
    static constexpr const char* QUORL_MARKER = "--quorl--";
    /// Ends a record or a list of records.
    static constexpr char TERMINATION = '/';
    static constexpr const char* TERMINATION_TOKEN = "/";
    /// Encloses a string; a terminator or a blank inside it is text.
    static constexpr char QUOTE = '\'';
    /// `n*value` is the value n times, `n*` is n defaulted items.
    static constexpr char REPEAT_CHAR = '*';
    /// The token of one defaulted item.
    static constexpr const char* DEFAULT_TOKEN = "1*";
    /// Stands between two tokens of a line that is written.
    static constexpr const char* SEPARATOR_TOKEN = " ";
    /// The character of which the comment marker consists.
    static constexpr char DASH = '-';

    /// Whether `s` begins with the marker, byte for byte. Leading white space isn't skipped.
    static bool BeginsWithCommentMarker(const char* s) { return s[0] == DASH && s[1] == DASH; }
    static bool BeginsWithCommentMarker(std::string_view s) { return s.size() >= 2 && s[0] == DASH && s[1] == DASH; }
    static bool BeginsWithSuppressMarker(const char* s)
    {
        return BeginsWithCommentMarker(s) && s[2] == '@' && s[3] == '@' && s[4] == '@';
    }
    static bool BeginsWithSuppressMarker(std::string_view s)
    {
        return s.size() >= 5 && BeginsWithCommentMarker(s) && s[2] == '@' && s[3] == '@' && s[4] == '@';
    }

    /// `s` behind all the suppress markers that stand at its head; `s` itself if there are none.
    static const char* SkipSuppressMarker(const char* s)
    {
        while (BeginsWithSuppressMarker(s))
            s += 5;
        return s;
    }
    static std::string_view SkipSuppressMarker(std::string_view s)
    {
        while (BeginsWithSuppressMarker(s))
            s.remove_prefix(5);
        return s;
    }

    /// White space of the "C" locale: blank, tab, line feed, vertical tab, form feed, carriage return.
    static constexpr bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

    /// The markers as strings.
    static const std::string& CommentMarker();
    static const std::string& SuppressMarker();
    static const std::string& QUORLMarker();
};

} // namespace Tarn::Fjel::Core::DeckManager

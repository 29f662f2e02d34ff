#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

#include <tarn/service/Log.h>

namespace Deckman {

/// The library's messages and the tool's own, on standard error, one to a line: `file:line: severity: text`.
///
/// While an object of this class lives it is the handler of the process's log. Messages of a read whose failure is an
/// expected answer are neither shown nor counted, and the same message about the same place only once: the library
/// tells it whenever it comes by. Further lines of a message are indented.
class Messages
{
public:
    Messages();
    ~Messages();
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    void Warning(std::string_view place, std::string_view text) { m_warnings += Print(place, "warning", text) ? 1 : 0; }
    void Error(std::string_view place, std::string_view text) { m_errors += Print(place, "error", text) ? 1 : 0; }
    /// Something of use that is no fault of the deck.
    void Note(std::string_view place, std::string_view text) { Print(place, "note", text); }

    /// Shows what is said of text behind a deck's end too.
    void ShowAsides(bool show) { m_showsAsides = show; }

    /// A message of the library. The views are good during the call.
    struct Message
    {
        std::string_view file; ///< complete; empty when not known
        int line;              ///< -1 when not known
        int severity;
        std::string_view text;
    };
    using Taker = std::function<void(const Message&)>;

    /// Hands the library's messages to `taker` from now on, neither printed nor counted; an empty one ends that.
    void SendTo(Taker taker) { m_taker = std::move(taker); }
    /// As `SendTo`, for as long as the object lives.
    class Diversion
    {
    public:
        Diversion(Messages& messages, Taker taker) : m_messages(messages) { m_messages.SendTo(std::move(taker)); }
        ~Diversion() { m_messages.SendTo({}); }
        Diversion(const Diversion&) = delete;
        Diversion& operator=(const Diversion&) = delete;

    private:
        Messages& m_messages;
    };

    /// The word that a message of the scan is about, be it a keyword or not; empty for other messages.
    static std::string_view WordOf(std::string_view text);

    /// What a message says of the value of an item: the word, and what it must be ("a real number"). Both empty for
    /// other messages.
    struct BadValue
    {
        std::string_view word;
        std::string_view wanted;

        bool IsForNumber() const { return wanted == "a real number"; }
    };
    static BadValue BadValueOf(std::string_view text);
    /// The word may be the name of a quantity of the user's own, which may stand in the place of a number.
    static bool IsQuantityName(std::string_view word);

    /// What a verb has told in its own way counts too.
    void Count(int warnings, int errors)
    {
        m_warnings += warnings;
        m_errors += errors;
    }

    /// A scan has told of a word that no catalogue knows, behind a deck's end too.
    bool HasUnknownWords() const { return m_hasUnknownWords; }

    int Warnings() const { return m_warnings; }
    int Errors() const { return m_errors; }

    /// The name of a file as a user in this directory would type it: relative when the file lies below it.
    std::string Shown(std::string_view file) const;

    /// A message may quote a file that is no deck, and a terminal must not take what that holds for orders.
    static void MakeHarmless(std::string& text);

private:
    void Take(std::string_view text, int severity);
    /// False for a message that has been told.
    bool Print(std::string_view place, std::string_view severity, std::string_view text);

    std::string m_currentDirectory;
    bool m_colours; ///< standard error is a terminal
    Tarn::Fjel::Core::Service::Log::Handler m_previous;
    Taker m_taker;
    std::unordered_set<std::size_t> m_told; // hashes of what was printed about a place
    bool m_showsAsides = false;
    bool m_hasUnknownWords = false;
    int m_warnings = 0;
    int m_errors = 0;
};

} // namespace Deckman

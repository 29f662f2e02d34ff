#pragma once

#include <span>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace Deckman {

struct VerbEntry;

/// A line of help: how something is written, and what it is.
struct HelpRow
{
    std::string_view written;
    std::string_view is;
};

/// The verbs that serve one want.
struct VerbGroup
{
    std::string_view want;
    std::span<const HelpRow> rows;
};

std::span<const VerbGroup> VerbGroups();
/// The forms of WHERE: of a keyword, and of an item behind it.
std::span<const HelpRow> PlaceForms();
std::span<const HelpRow> ExitStatuses();
std::span<const HelpRow> EnvironmentVariables();

inline constexpr std::string_view whatItIs = "shows, checks, edits and compares reservoir simulation decks";
inline constexpr std::string_view countingRule = "Keywords and lines count from 1, items and records from 0.";
/// The first word of the project verbs, in `deckman project --help`.
inline constexpr std::string_view projectHelp =
    "A directory of decks, which keeps what lets an unchanged deck open fast.";

/// Verbs of two words share the first: the name of such a verb, or of the only word.
std::string NameOf(const CLI::App& verb);

/// What `deckman --help` prints, 80 columns wide. `app` has the options of every verb.
std::string MainHelp(const CLI::App& app);
/// What `deckman VERB --help` prints behind the options.
std::string VerbRemarks(const VerbEntry& verb);
/// The manual page, for `man`.
std::string ManualPage(const CLI::App& app);

} // namespace Deckman

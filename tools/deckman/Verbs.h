#pragma once

#include <span>
#include <string_view>
#include <variant>

#include "ExitStatus.h"
#include "Options.h"
#include "Output.h"

namespace Deckman {

class DeckSession;
class Messages;

/// The verbs, a source file each. They print to `out`, tell trouble through the messages or by `Failure`, and change
/// nothing on disk.
ExitStatus RunLs(DeckSession& session, const Options& options, Output& out);
ExitStatus RunTree(DeckSession& session, const Options& options, Output& out);
ExitStatus RunSections(DeckSession& session, const Options& options, Output& out);
ExitStatus RunScopes(DeckSession& session, const Options& options, Output& out);
ExitStatus RunDates(DeckSession& session, const Options& options, Output& out);
ExitStatus RunShow(DeckSession& session, const Options& options, Output& out);
ExitStatus RunGet(DeckSession& session, const Options& options, Output& out);
ExitStatus RunFind(DeckSession& session, const Options& options, Output& out);
ExitStatus RunCheck(DeckSession& session, const Options& options, Output& out);
ExitStatus RunDiff(Messages& messages, const Options& options, Output& out);

/// What a verb takes besides the options that every verb takes.
enum Takes : unsigned
{
    TakesDeck = 1U << 0,     ///< DECK
    TakesWhere = 1U << 1,    ///< WHERE
    TakesRegex = 1U << 2,    ///< REGEX
    TakesFilter = 1U << 3,   ///< --section, --name, --user, --generated
    TakesAll = 1U << 4,      ///< --all
    TakesDefaults = 1U << 8, ///< --defaults
    TakesAt = 1U << 9,       ///< --at
    TakesDecks = 1U << 10,   ///< OLD, NEW
};

/// A verb that works on the one deck that it names, or one that opens what it needs by itself.
using OnDeck = ExitStatus (*)(DeckSession& session, const Options& options, Output& out);
using OnItsOwn = ExitStatus (*)(Messages& messages, const Options& options, Output& out);

struct VerbEntry
{
    std::string_view name;
    std::variant<OnDeck, OnItsOwn> run;
    unsigned takes; ///< of `Takes`
    std::string_view does;
    std::string_view more; ///< an example, and what the options don't say
};

/// All verbs, in the order of the help.
std::span<const VerbEntry> AllVerbs();

} // namespace Deckman

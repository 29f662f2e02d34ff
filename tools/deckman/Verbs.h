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

/// The verbs. They print to `out`, and tell trouble through the messages or by `Failure`. Nothing is changed on disk
/// but by those that take `TakesWriting`.
ExitStatus RunLs(DeckSession& session, const Options& options, Output& out);
ExitStatus RunTree(DeckSession& session, const Options& options, Output& out);
ExitStatus RunSections(DeckSession& session, const Options& options, Output& out);
ExitStatus RunScopes(DeckSession& session, const Options& options, Output& out);
ExitStatus RunDates(DeckSession& session, const Options& options, Output& out);
ExitStatus RunShow(DeckSession& session, const Options& options, Output& out);
ExitStatus RunGet(DeckSession& session, const Options& options, Output& out);
ExitStatus RunFind(DeckSession& session, const Options& options, Output& out);
ExitStatus RunCheck(DeckSession& session, const Options& options, Output& out);
ExitStatus RunSet(DeckSession& session, const Options& options, Output& out);
ExitStatus RunInsert(DeckSession& session, const Options& options, Output& out);
ExitStatus RunRm(DeckSession& session, const Options& options, Output& out);
ExitStatus RunMv(DeckSession& session, const Options& options, Output& out);
ExitStatus RunCommentOut(DeckSession& session, const Options& options, Output& out);
ExitStatus RunSuppress(DeckSession& session, const Options& options, Output& out);
ExitStatus RunUnsuppress(DeckSession& session, const Options& options, Output& out);
ExitStatus RunTag(DeckSession& session, const Options& options, Output& out);
ExitStatus RunUntag(DeckSession& session, const Options& options, Output& out);
ExitStatus RunNote(DeckSession& session, const Options& options, Output& out);
ExitStatus RunAbove(DeckSession& session, const Options& options, Output& out);
ExitStatus RunFlatten(DeckSession& session, const Options& options, Output& out);
ExitStatus RunCopy(DeckSession& session, const Options& options, Output& out);
ExitStatus RunClone(DeckSession& session, const Options& options, Output& out);
ExitStatus RunSort(DeckSession& session, const Options& options, Output& out);
ExitStatus RunTemplate(Messages& messages, const Options& options, Output& out);
ExitStatus RunDiff(Messages& messages, const Options& options, Output& out);
ExitStatus RunMerge(Messages& messages, const Options& options, Output& out);
ExitStatus RunRead(Messages& messages, const Options& options, Output& out);
ExitStatus RunSyntax(Messages& messages, const Options& options, Output& out);
ExitStatus RunProjectInit(Messages& messages, const Options& options, Output& out);
ExitStatus RunProjectAdd(Messages& messages, const Options& options, Output& out);
ExitStatus RunProjectLs(Messages& messages, const Options& options, Output& out);
ExitStatus RunProjectMove(Messages& messages, const Options& options, Output& out);
ExitStatus RunProjectFlush(Messages& messages, const Options& options, Output& out);

/// What a verb takes besides the options that every verb takes.
enum Takes : unsigned
{
    TakesDeck = 1U << 0,           ///< DECK
    TakesWhere = 1U << 1,          ///< WHERE
    TakesRegex = 1U << 2,          ///< REGEX
    TakesFilter = 1U << 3,         ///< --section, --name, --user, --generated
    TakesAll = 1U << 4,            ///< --all
    TakesComments = 1U << 5,       ///< --comments
    TakesSyntax = 1U << 6,         ///< NAME, --section, --stats
    TakesFile = 1U << 7,           ///< FILE
    TakesDefaults = 1U << 8,       ///< --defaults
    TakesAt = 1U << 9,             ///< --at
    TakesDecks = 1U << 10,         ///< OLD, NEW
    TakesValue = 1U << 11,         ///< VALUE
    TakesText = 1U << 12,          ///< TEXT
    TakesTarget = 1U << 13,        ///< WHERE2
    TakesAfter = 1U << 14,         ///< --after
    TakesWithComment = 1U << 15,   ///< --with-comment
    TakesName = 1U << 16,          ///< NAME
    TakesOutput = 1U << 17,        ///< -o
    TakesDirectory = 1U << 18,     ///< DIR
    TakesSuffix = 1U << 19,        ///< --suffix
    TakesRange = 1U << 20,         ///< --from, --to
    TakesRewrite = 1U << 21,       ///< --rewrite
    TakesWriting = 1U << 22,       ///< --dry-run, --eol: the verb changes something on disk
    TakesProjectDir = 1U << 23,    ///< DIR
    TakesNewDeck = 1U << 24,       ///< NAME, DECK
    TakesNewProjectDir = 1U << 26, ///< NEWDIR, --replace
    TakesMerge = 1U << 25,         ///< -o DIR, --comments, --map, --exclude, --into-edited, --allow-truncated
    TakesBackup = 1U << 27,        ///< --backup: the verb changes the files of the deck
};

/// A verb that works on the one deck that it names, or one that opens what it needs by itself.
using OnDeck = ExitStatus (*)(DeckSession& session, const Options& options, Output& out);
using OnItsOwn = ExitStatus (*)(Messages& messages, const Options& options, Output& out);

struct VerbEntry
{
    std::string_view name; ///< of one word, or of two
    std::variant<OnDeck, OnItsOwn> run;
    unsigned takes;            ///< of `Takes`
    std::string_view does;     ///< one sentence
    std::string_view more;     ///< what the options don't say
    std::string_view json;     ///< what --json prints
    std::string_view shows;    ///< what the examples show; empty where they need no word
    std::string_view examples; ///< command lines that work in the folder of the example decks, in this order
};

/// All verbs, in the order of the help.
std::span<const VerbEntry> AllVerbs();

} // namespace Deckman

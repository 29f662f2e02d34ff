#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <variant>

#include "command/ExitStatus.h"

namespace Deckman {

class DeckSession;
class KeywordEdits;
class Messages;
class Output;
struct Options;

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
ExitStatus RunRename(DeckSession& session, const Options& options, Output& out);
ExitStatus RunApply(DeckSession& session, const Options& options, Output& out);
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

/// The edits: each changes the deck in memory, or throws `Failure`. What a verb has edited is then written, or shown.
void EditSet(KeywordEdits& run, const Options& options);
void EditInsert(KeywordEdits& run, const Options& options);
void EditRm(KeywordEdits& run, const Options& options);
void EditMv(KeywordEdits& run, const Options& options);
void EditCommentOut(KeywordEdits& run, const Options& options);
void EditSuppress(KeywordEdits& run, const Options& options);
void EditUnsuppress(KeywordEdits& run, const Options& options);
void EditTag(KeywordEdits& run, const Options& options);
void EditUntag(KeywordEdits& run, const Options& options);
void EditNote(KeywordEdits& run, const Options& options);
void EditAbove(KeywordEdits& run, const Options& options);
void EditHeader(KeywordEdits& run, const Options& options);
void EditResolve(KeywordEdits& run, const Options& options);

/// What a verb takes besides the options that every verb takes.
enum Takes : std::uint64_t
{
    TakesDeck = 1ULL << 0,           ///< DECK
    TakesWhere = 1ULL << 1,          ///< WHERE
    TakesRegex = 1ULL << 2,          ///< REGEX
    TakesFilter = 1ULL << 3,         ///< --section, --name, --user, --generated
    TakesAll = 1ULL << 4,            ///< --all
    TakesComments = 1ULL << 5,       ///< --comments
    TakesSyntax = 1ULL << 6,         ///< NAME, --section, --stats
    TakesFile = 1ULL << 7,           ///< FILE
    TakesDefaults = 1ULL << 8,       ///< --defaults
    TakesAt = 1ULL << 9,             ///< --at
    TakesDecks = 1ULL << 10,         ///< OLD, NEW
    TakesValue = 1ULL << 11,         ///< VALUE or --text
    TakesText = 1ULL << 12,          ///< TEXT
    TakesTarget = 1ULL << 13,        ///< --before, --after
    TakesPlace = 1ULL << 14,         ///< --before, --after, --section
    TakesWithComment = 1ULL << 15,   ///< --with-comment
    TakesName = 1ULL << 16,          ///< NAME
    TakesOutput = 1ULL << 17,        ///< -o
    TakesDirectory = 1ULL << 18,     ///< DIR
    TakesSuffix = 1ULL << 19,        ///< --suffix
    TakesRange = 1ULL << 20,         ///< --from, --to
    TakesRewrite = 1ULL << 21,       ///< --rewrite
    TakesWriting = 1ULL << 22,       ///< --dry-run, --eol: the verb changes something on disk
    TakesProjectDir = 1ULL << 23,    ///< DIR
    TakesNewDeck = 1ULL << 24,       ///< NAME, DECK
    TakesNewProjectDir = 1ULL << 26, ///< NEWDIR, --replace
    TakesMerge = 1ULL << 25,         ///< -o DIR, --comments, --map, --exclude, --into-edited, --allow-truncated
    TakesWheres = 1ULL << 28,        ///< WHERE...
    TakesFileOfDeck = 1ULL << 29,    ///< --file
    TakesVariables = 1ULL << 30,     ///< --set
    TakesWhole = 1ULL << 31,         ///< with TakesWheres: none stands for the whole deck, where --all is given
    TakesRenames = 1ULL << 32,       ///< OLD=NEW..., --replace
    TakesBackup = 1ULL << 27,        ///< --backup: the verb changes the files of the deck
};

/// A verb that works on the one deck that it names, one that edits it, or one that opens what it needs by itself.
using OnDeck = ExitStatus (*)(DeckSession& session, const Options& options, Output& out);
using OnEdits = void (*)(KeywordEdits& run, const Options& options);
using OnItsOwn = ExitStatus (*)(Messages& messages, const Options& options, Output& out);

struct VerbEntry
{
    std::string_view name; ///< of one word, or of two
    std::variant<OnDeck, OnEdits, OnItsOwn> run;
    std::uint64_t takes;       ///< of `Takes`
    std::string_view does;     ///< one sentence
    std::string_view more;     ///< what the options don't say
    std::string_view json;     ///< what --json prints
    std::string_view shows;    ///< what the examples show; empty where they need no word
    std::string_view examples; ///< command lines that work in the folder of the example decks, in this order
};

/// All verbs, in the order of the help.
std::span<const VerbEntry> AllVerbs();

} // namespace Deckman

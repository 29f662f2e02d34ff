#include "Verbs.h"

namespace Deckman {

namespace {

constexpr VerbEntry verbs[] = {
    {"ls", RunLs, TakesDeck | TakesFilter | TakesAll | TakesAt,
     "Lists the keywords of a deck in deck order, across all its files.",
     "The index counts all keywords of the deck, so that @17 is the same keyword whatever is listed.\n"
     "With --json a line each: "
     "{\"index\",\"name\",\"section\",\"file\",\"line\",\"position\",\"size\",\"depth\", "
     "\"generated\",\"suppressed\"}; position and size in bytes, depth 0 in the top file.\n\n"
     "Example: the user's well controls\n"
     "  deckman ls FIELD.DATA --section SCHEDULE --name 'WCON*' --user\n"},
    {"tree", RunTree, TakesDeck, "Shows the files of a deck, what includes what, and the grid files.",
     "Keywords and bytes are those of the file itself, whatever stands behind its end included.\n"
     "With --json one object: {\"file\",\"exists\",\"keywords\",\"bytes\",\"includes\":[...]}; keywords is "
     "null for what is no file of keywords.\n\n"
     "Example:\n"
     "  deckman tree FIELD.DATA\n"},
    {"sections", RunSections, TakesDeck, "Shows the sections of a deck with their ends, and names those that recur.",
     "Begin and end are indices of ls; the end is the first keyword that is not in the section.\n"
     "With --json a line each: {\"section\",\"begin\",\"end\"}.\n\n"
     "Example:\n"
     "  deckman sections FIELD.DATA\n"},
    {"scopes", RunScopes, TakesDeck, "Shows what encloses what: sections, boxes, refinements, skips, actions, dates.",
     "Begin and end are indices of ls; the end is the first keyword behind the scope and its closing keyword.\n"
     "With --json a line each: {\"head\",\"begin\",\"end\",\"depth\"}; depth 0 for what nothing encloses.\n\n"
     "Example: where the actions are\n"
     "  deckman scopes FIELD.DATA --json | grep ACTION\n"},
    {"dates", RunDates, TakesDeck | TakesAll, "Shows the moments of the schedule, with their days since the start.",
     "The start, every record of DATES, every step of TSTEP and every value of TIME; index is the keyword's in "
     "ls. Dates that are none, and time that runs backwards, are errors.\n"
     "With --json a line each: {\"index\",\"date\",\"days\"}; a date is 2026-11-25 or 2026-11-25T12:00:00, "
     "what the deck doesn't tell is null.\n\n"
     "Example: when the run ends\n"
     "  deckman dates FIELD.DATA | tail -1\n"},
    {"show", RunShow, TakesDeck | TakesWhere | TakesAll | TakesAt | TakesComments,
     "Shows the text of one keyword as it stands.",
     "WHERE is NAME, NAME#3, SECTION/NAME#3, FILE:LINE or @17. The comment lines above the next keyword are "
     "not shown: they belong to that one.\n"
     "With --json one object: {\"name\",\"text\",\"comment\",\"above\"}; comment is the one below the "
     "keyword's line, above the lines above it.\n\n"
     "Example: the keyword around line 120 of a file, and the second COMPDAT\n"
     "  deckman show FIELD.DATA wells.inc:120\n"
     "  deckman show FIELD.DATA COMPDAT#2\n"},
    {"get", RunGet, TakesDeck | TakesWhere | TakesAll | TakesAt | TakesDefaults,
     "Shows the data of one keyword, or one item of them.",
     "WHERE is a keyword as for show, and behind it a path to an item, with brackets or dots: TABDIMS[3] is "
     "TABDIMS.3, WELSPECS[2].WELL the item WELL of the third record, WCONPROD[PROD1].ORAT that of the record "
     "whose first string is PROD1. Items and records count from 0. A value that was left to its default shows "
     "as 1*, with --defaults as (20).\n"
     "With --json a record is an object by item names, a list an array, a map an object; an option goes by its "
     "name, yes and no are true and false, a variable is a string (\"$NAME\"), and what has no value is null.\n\n"
     "Example: an oil rate, and a table\n"
     "  deckman get FIELD.DATA WCONPROD[PROD1].ORAT\n"
     "  deckman get FIELD.DATA PROPS/SWOF[0] --json\n"},
    {"find", RunFind, TakesDeck | TakesRegex | TakesFilter | TakesAll | TakesAt,
     "Lists the keywords whose data or comments match a regular expression.",
     "The expression is searched for in all lines of the data at once: ^ and $ stand for the ends of a line, "
     "(?i) at the head is for any case, (?s) lets a dot match a line end. Printed as ls does. Exit status 1 "
     "when nothing matches.\n\n"
     "Example: everything that concerns one well\n"
     "  deckman find FIELD.DATA \"'?HR-P1\\b\"\n"},
    {"check", RunCheck, TakesDeck | TakesAll, "Reads all data of a deck and says what is wrong with it.",
     "Nothing is said of what stands between SKIP and ENDSKIP, and with --simulator of what that simulator "
     "skips; keywords that it doesn't know are named. The same message is shown at its first places only. Exit "
     "status 1 when there are errors, with --strict for warnings too.\n"
     "With --json a line each: {\"file\",\"line\",\"keyword\",\"severity\",\"text\"}; severity is error, "
     "warning or note.\n\n"
     "Example: is the deck fit for a run\n"
     "  deckman check FIELD.DATA --simulator 300 --strict\n"},
    {"set", RunSet, TakesDeck | TakesWhere | TakesAll | TakesAt | TakesBackup | TakesWriting | TakesValue,
     "Sets one item of a keyword, and leaves every other byte as it is.",
     "WHERE is a keyword as for show, and behind it a path to an item as for get. VALUE is what a deck would have "
     "there; "
     "1* is the default, and a string may stand in quotes.\n"
     "With --json a line for each change: {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}, old "
     "null "
     "for a keyword that is new, new null for one that goes.\n\n"
     "Example: more tables\n"
     "  deckman set FIELD.DATA TABDIMS.3 5\n"},
    {"insert", RunInsert,
     TakesDeck | TakesWhere | TakesAll | TakesAt | TakesBackup | TakesWriting | TakesText | TakesAfter,
     "Inserts a keyword ahead of another, or behind it.",
     "TEXT is that of a whole keyword, its name in the first line. It goes ahead of the comment above the keyword at "
     "WHERE.\n"
     "With --json a line for each change: {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}, old "
     "null "
     "for a keyword that is new, new null for one that goes.\n\n"
     "Example:\n"
     "  deckman template EQLDIMS | deckman insert FIELD.DATA TABDIMS --after -\n"},
    {"rm", RunRm, TakesDeck | TakesWhere | TakesAll | TakesAt | TakesBackup | TakesWriting | TakesWithComment,
     "Removes a keyword, and leaves the comment above it.",
     "Of an INCLUDE only the keyword goes, not the file.\n"
     "With --json a line for each change: {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}, old "
     "null "
     "for a keyword that is new, new null for one that goes.\n\n"
     "Example:\n"
     "  deckman rm FIELD.DATA SCHEDULE/WCONPROD#2 --with-comment\n"},
    {"mv", RunMv, TakesDeck | TakesWhere | TakesAll | TakesAt | TakesBackup | TakesWriting | TakesTarget | TakesAfter,
     "Moves a keyword, with the comment above it, in its file or to another.",
     "WHERE2 is the keyword ahead of which it goes, with --after behind which.\n"
     "With --json a line for each change: {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}, old "
     "null "
     "for a keyword that is new, new null for one that goes.\n\n"
     "Example:\n"
     "  deckman mv FIELD.DATA PERMX PORO --after\n"},
    {"comment-out", RunCommentOut, TakesDeck | TakesWhere | TakesAll | TakesAt | TakesBackup | TakesWriting,
     "Makes a keyword a comment, which is a keyword no more.",
     ""
     "With --json a line for each change: {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}, old "
     "null "
     "for a keyword that is new, new null for one that goes.\n\n"
     "Example:\n"
     "  deckman comment-out FIELD.DATA SCHEDULE/TUNING\n"},
    {"suppress", RunSuppress, TakesDeck | TakesWhere | TakesAll | TakesAt | TakesBackup | TakesWriting,
     "Suppresses a keyword: its lines stay, and a simulator passes them over.",
     ""
     "With --json a line for each change: {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}, old "
     "null "
     "for a keyword that is new, new null for one that goes.\n\n"
     "Example:\n"
     "  deckman suppress FIELD.DATA RPTSCHED\n"},
    {"unsuppress", RunUnsuppress, TakesDeck | TakesWhere | TakesAll | TakesAt | TakesBackup | TakesWriting,
     "Brings a suppressed keyword back.",
     ""
     "With --json a line for each change: {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}, old "
     "null "
     "for a keyword that is new, new null for one that goes.\n\n"
     "Example:\n"
     "  deckman unsuppress FIELD.DATA RPTSCHED\n"},
    {"tag", RunTag, TakesDeck | TakesWhere | TakesAll | TakesAt | TakesBackup | TakesWriting,
     "Gives a keyword the generated tag, as if a program had written it.",
     ""
     "With --json a line for each change: {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}, old "
     "null "
     "for a keyword that is new, new null for one that goes.\n\n"
     "Example:\n"
     "  deckman tag FIELD.DATA EQLDIMS\n"},
    {"untag", RunUntag, TakesDeck | TakesWhere | TakesAll | TakesAt | TakesBackup | TakesWriting,
     "Takes the generated tag of a keyword away, which makes it the user's.",
     ""
     "With --json a line for each change: {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}, old "
     "null "
     "for a keyword that is new, new null for one that goes.\n\n"
     "Example:\n"
     "  deckman untag FIELD.DATA EQLDIMS\n"},
    {"note", RunNote, TakesDeck | TakesWhere | TakesAll | TakesAt | TakesBackup | TakesWriting | TakesText,
     "Sets the comment between a keyword's line and its data; empty takes it away.",
     ""
     "With --json a line for each change: {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}, old "
     "null "
     "for a keyword that is new, new null for one that goes.\n\n"
     "Example:\n"
     "  deckman note FIELD.DATA EQUIL 'from the 2024 study'\n"},
    {"above", RunAbove, TakesDeck | TakesWhere | TakesAll | TakesAt | TakesBackup | TakesWriting | TakesText,
     "Replaces the comment above a keyword; empty takes it away.",
     ""
     "With --json a line for each change: {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}, old "
     "null "
     "for a keyword that is new, new null for one that goes.\n\n"
     "Example:\n"
     "  deckman above FIELD.DATA EQUIL 'two regions'\n"},
    {"template", RunTemplate, TakesName, "Prints the text to start a keyword from.",
     "NAME in any case. With --json one object: {\"name\",\"text\"}.\n\n"
     "Example: a new table of relative permeabilities\n"
     "  deckman template SWOF\n"},
    {"sort", RunSort, TakesDeck | TakesWriting | TakesBackup,
     "Moves keywords that must stand ahead of others there, each file by itself.",
     "deckman syntax NAME tells what a keyword stands after. TITLE goes straight behind RUNSPEC, and SKIPREST to the "
     "head of SCHEDULE. A keyword takes the comment above it along; a refinement or a box is sorted by itself. What "
     "stands in order stays. All files are written, or none.\n"
     "With --json a line for each keyword that moves: "
     "{\"action\":\"moved\",\"name\",\"file\",\"line\",\"newFile\",\"newLine\"}.\n\n"
     "Example: what would move, and the same with the old files kept\n"
     "  deckman sort FIELD.DATA --dry-run\n"
     "  deckman sort FIELD.DATA --backup\n"},
    {"flatten", RunFlatten, TakesDeck | TakesOutput | TakesRange | TakesAll | TakesRewrite | TakesWriting,
     "Writes a deck into one file, with what each INCLUDE includes in its place.",
     "What stands behind the deck's end is written too, and so are all comments. An INCLUDE that brings "
     "nothing in stays. What stands behind an ENDINC becomes comments. A file of the deck is never written "
     "over.\n"
     "With --json a line for each file: {\"action\",\"from\",\"to\"}; action is written or missing. With "
     "--dry-run also {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}, new null for a "
     "keyword that goes.\n\n"
     "Example: the whole deck, and its schedule from a well's first keyword on\n"
     "  deckman flatten FIELD.DATA -o FLAT.DATA\n"
     "  deckman flatten FIELD.DATA -o late.inc --from SCHEDULE/WELSPECS#2\n"},
    {"copy", RunCopy, TakesDeck | TakesDirectory | TakesRewrite | TakesWriting,
     "Copies a deck with all files that it refers to into another directory.",
     "All files lie side by side there, and the keywords name them so; of two with one name the second gets a "
     "number. Grid files come along, but replace none that is there. With --simulator the keywords that it "
     "doesn't know are left out.\n"
     "With --json a line for each file: {\"action\",\"from\",\"to\"}; action is written, kept (a grid file was "
     "there) or missing. With --dry-run also "
     "{\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}.\n\n"
     "Example:\n"
     "  deckman copy FIELD.DATA ../run2\n"},
    {"clone", RunClone, TakesDeck | TakesSuffix | TakesRewrite | TakesWriting,
     "Copies each file of a deck beside itself, under a name with a suffix.",
     "The suffix goes ahead of the last dot of each file's name, and of the names in INCLUDE keywords.\n"
     "With --json a line for each file: {\"action\",\"from\",\"to\"}; action is written or missing. With "
     "--dry-run also {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}.\n\n"
     "Example: FIELD_B.DATA, with wells_B.inc and all others\n"
     "  deckman clone FIELD.DATA --suffix _B\n"},
    {"diff", RunDiff, TakesDecks, "Tells what another deck has changed, by keyword and item.",
     "Layout, comments, repeat counts, and how a deck is cut into files don't count. Keywords are matched in "
     "their section by name and identity, and in the schedule by time. A place is NEW's, and OLD's for what "
     "was removed; 1* is what was left to a default. Of a row of changed values the first five are told, and "
     "how many more there are. Exit status 0 when nothing differs, 1 when something does.\n"
     "With --json a line each: {\"kind\",\"where\",\"old\",\"new\"}; kind is added, removed, changed or moved.\n\n"
     "Example: what the new schedule changes\n"
     "  deckman diff OLD/FIELD.DATA NEW/FIELD.DATA\n"},
    {"merge", RunMerge, TakesDecks | TakesMerge | TakesWriting,
     "Carries what a user wrote in OLD into NEW, which its generator has made anew.",
     "The user's are the keywords without a generated tag. Each goes next to the generated keyword that it followed, "
     "with its comments; one that stands for a generated keyword (the same well, table, ...) takes its place. What "
     "is suppressed in OLD is suppressed in NEW. NEW is written in its place, or with -o with all its files into "
     "another directory; nothing is written before the whole merge has succeeded. A NEW that holds keywords of a "
     "user already is refused: each would be put in once more.\n"
     "A line for each keyword, with its file and line in OLD and where that is in NEW as it stood; with --json "
     "{\"action\",\"name\",\"file\",\"line\",\"newFile\",\"newLine\",\"text\"}, action is carried, replaced, "
     "suppressed, cut, refused, lost, commented or missing; newLine is null at the end of a file.\n\n"
     "Example: look first, then merge\n"
     "  deckman merge last/FIELD.DATA FIELD.DATA --comments --dry-run\n"
     "  deckman merge last/FIELD.DATA FIELD.DATA --comments\n"},
    {"read", RunRead, TakesFile, "Reads a piece of deck text, as the SCHEDULE section knows it, without a deck.",
     "FILE - is standard input. Sizes that only a deck can tell are errors; the keyword's text is given all "
     "the same.\n"
     "With --json a line each: {\"name\",\"data\",\"text\"}; text is what stands below the keyword's line, "
     "data are as get shows them, null without data and where they can't be read.\n\n"
     "Example: a pasted well, as JSON\n"
     "  deckman read --json - < new_wells.txt\n"},
    {"syntax", RunSyntax, TakesSyntax, "Shows what the catalogue knows of keywords: all, or every definition of one.",
     "NAME in any case, also one that a family of names such as FU* covers. With --simulator only what that "
     "one knows.\n"
     "With --json an object for each definition, a line each; --stats one object.\n\n"
     "Example: the items of WELSPECS\n"
     "  deckman syntax WELSPECS\n"},
    {"project init", RunProjectInit, TakesProjectDir,
     "Makes a directory a project of decks, with a cache of where keywords stand.",
     "Makes DIR where it doesn't exist, and in it the empty file deck_cache_xml.lock, which has the cache kept in "
     "its fast form. Decks that are there already, each as NAME/NAME.DATA, belong to the project.\n"
     "With --json a line for each deck: {\"name\",\"file\",\"keywords\"}, file relative to DIR.\n\n"
     "Example:\n"
     "  deckman project init studies\n"},
    {"project add", RunProjectAdd, TakesProjectDir | TakesNewDeck | TakesWriting,
     "Copies a deck with all its files into a project, as DIR/NAME/NAME.DATA.",
     "All files lie side by side there, as after deckman copy.\n"
     "With --json a line: {\"name\",\"file\",\"keywords\"}, file relative to DIR; with --dry-run keywords is "
     "null, and lines {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"} follow.\n\n"
     "Example:\n"
     "  deckman project add studies base FIELD.DATA\n"},
    {"project ls", RunProjectLs, TakesProjectDir, "Lists the decks of a project with the number of their keywords.",
     "With --json a line each: {\"name\",\"file\",\"keywords\"}, file relative to DIR; keywords is null for a "
     "deck that can't be read.\n\n"
     "Example:\n"
     "  deckman project ls studies\n"},
    {"project move", RunProjectMove, TakesProjectDir | TakesNewProjectDir | TakesWriting,
     "Moves a project, and corrects the paths of its INCLUDE keywords.",
     "Each INCLUDE names the file that it named before, in the project or outside; paths with a variable or an alias "
     "stay as they are. Until the new place is whole the old one is left alone. NEWDIR must not exist, or be an "
     "empty directory, or --replace deletes what is there.\n"
     "With --json a line for each deck: {\"name\",\"file\",\"keywords\"}, file relative to NEWDIR; with "
     "--dry-run keywords is null, and lines {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\","
     "\"new\"} follow.\n\n"
     "Example:\n"
     "  deckman project move studies /archive/studies\n"},
    {"project flush", RunProjectFlush, TakesProjectDir,
     "Empties the cache of a project: the next time its decks are scanned.",
     "With --json a line for each deck: {\"name\",\"file\",\"keywords\"}, file relative to DIR, keywords null.\n\n"
     "Example:\n"
     "  deckman project flush studies\n"},
};

} // namespace

std::span<const VerbEntry> AllVerbs()
{
    return verbs;
}

} // namespace Deckman

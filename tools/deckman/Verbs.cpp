#include "command/Verbs.h"

namespace Deckman {

namespace {

/// Of the verbs that change keywords.
constexpr std::string_view changesAsJson =
    "With --json a line for each change: {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}, old "
    "null for a keyword that is new, new null for one that goes.";

constexpr VerbEntry verbs[] = {
    {"ls", RunLs, TakesDeck | TakesFilter | TakesAll | TakesAt,
     "Lists the keywords of a deck in deck order, across all its files.",
     "The index counts all keywords of the deck, so that @17 is the same keyword whatever is listed.",
     "With --json a line each: {\"index\",\"name\",\"section\",\"file\",\"line\",\"position\",\"size\",\"depth\", "
     "\"generated\",\"suppressed\"}; position and size in bytes, depth 0 in the top file.",
     "the user's well controls", "deckman ls field/FIELD.DATA --section SCHEDULE --name 'WCON*' --user"},
    {"tree", RunTree, TakesDeck, "Shows the files of a deck, what includes what, and the grid files.",
     "Keywords and bytes are those of the file itself, whatever stands behind its end included.",
     "With --json one object: {\"file\",\"exists\",\"keywords\",\"bytes\",\"includes\":[...]}; keywords is null for "
     "what is no file of keywords.",
     "", "deckman tree field/FIELD.DATA"},
    {"sections", RunSections, TakesDeck, "Shows the sections of a deck with their ends, and names those that recur.",
     "Begin and end are indices of ls; the end is the first keyword that is not in the section.",
     "With --json a line each: {\"section\",\"begin\",\"end\"}.", "", "deckman sections field/FIELD.DATA"},
    {"scopes", RunScopes, TakesDeck, "Shows what encloses what: sections, boxes, refinements, skips, actions, dates.",
     "Begin and end are indices of ls; the end is the first keyword behind the scope and its closing keyword.",
     "With --json a line each: {\"head\",\"begin\",\"end\",\"depth\"}; depth 0 for what nothing encloses.",
     "where the actions are", "deckman scopes field/FIELD.DATA --json | grep ACTION"},
    {"dates", RunDates, TakesDeck | TakesAll, "Shows the moments of the schedule, with their days since the start.",
     "The start, every record of DATES, every step of TSTEP and every value of TIME; index is the keyword's in ls. "
     "Dates that are none, and time that runs backwards, are errors.",
     "With --json a line each: {\"index\",\"date\",\"days\"}; a date is 2026-11-25 or 2026-11-25T12:00:00, what the "
     "deck doesn't tell is null.",
     "when the run ends", "deckman dates field/FIELD.DATA | tail -1"},
    {"show", RunShow, TakesDeck | TakesWhere | TakesAll | TakesAt | TakesComments,
     "Shows the text of one keyword as it stands.",
     "The comment lines above the next keyword are not shown: they belong to that one.",
     "With --json one object: {\"name\",\"text\",\"comment\",\"above\"}; comment is the one below the keyword's "
     "line, above the lines above it.",
     "what holds a line, and the second WELSPECS",
     "deckman show field/FIELD.DATA wells.inc:12\n"
     "deckman show field/FIELD.DATA WELSPECS#2"},
    {"get", RunGet, TakesDeck | TakesWhere | TakesAll | TakesAt | TakesDefaults,
     "Shows the data of one keyword, or one item of them.",
     "WHERE may lead to an item. A value that was left to its default shows as 1*, with --defaults as (20).",
     "With --json a record is an object by item names, a list an array, a map an object; an option goes by its "
     "name, yes and no are true and false, a variable is a string (\"$NAME\"), and what has no value is null.",
     "an oil rate, a table, and what a date has in force",
     "deckman get field/FIELD.DATA 'WCONPROD[HR-P2].ORAT'\n"
     "deckman get field/FIELD.DATA 'PROPS/SWOF[0]' --json\n"
     "deckman get field/FIELD.DATA WCONHIST --at 2023-06-01"},
    {"find", RunFind, TakesDeck | TakesRegex | TakesFilter | TakesAll | TakesAt,
     "Lists the keywords whose data or comments match a regular expression.",
     "The expression is searched for in all lines of the data at once: ^ and $ stand for the ends of a line, (?i) "
     "at the head is for any case, (?s) lets a dot match a line end. Printed as ls does. Exit status 1 when nothing "
     "matches.",
     "", "everything that concerns one well", "deckman find field/FIELD.DATA \"'?HR-P1\\b\""},
    {"check", RunCheck, TakesDeck | TakesAll, "Reads all data of a deck and says what is wrong with it.",
     "Nothing is said of what stands between SKIP and ENDSKIP, and with --simulator of what that simulator skips; "
     "keywords that it doesn't know are named. The same message is shown at its first places only. Exit status 1 "
     "when there are errors, with --strict for warnings too.",
     "With --json a line each: {\"file\",\"line\",\"keyword\",\"severity\",\"text\"}; severity is error, warning or "
     "note.",
     "is the deck fit for a run", "deckman check field/FIELD.DATA --simulator 300 --strict"},
    {"set", EditSet, TakesDeck | TakesWhere | TakesAll | TakesAt | TakesValue | TakesBackup | TakesWriting,
     "Sets one item of a keyword, and leaves every other byte as it is.",
     "WHERE leads to an item. VALUE is what a deck would have there; 1* is the default, and a string may stand in "
     "quotes. WHERE[+] adds to a list behind its last element, WHERE[+2] ahead of element 2; VALUE is then the "
     "element, or the values of the record. --text sets all data of a keyword.",
     changesAsJson, "a rate, more tables, and a record more",
     "deckman set field/FIELD.DATA 'WCONPROD[HR-P2].ORAT' 1500\n"
     "deckman set field/FIELD.DATA TABDIMS.NTSFUN 3\n"
     "deckman set field/FIELD.DATA 'WELTARG#1[+]' \"'HR-P2' ORAT 900\" --dry-run"},
    {"insert", EditInsert, TakesDeck | TakesText | TakesPlace | TakesAll | TakesAt | TakesBackup | TakesWriting,
     "Inserts keywords ahead of another, behind it, or at the end of a section.",
     "TEXT is that of one or more whole keywords, each name at the head of a line, with the comments above them. It "
     "goes ahead of the comment above the keyword below. A section that is missing is made in its place.",
     changesAsJson, "",
     "deckman template WELTARG | deckman insert field/FIELD.DATA --after DATES#3 -\n"
     "deckman insert field/FIELD.DATA --section SUMMARY FOPR"},
    {"rm", EditRm, TakesDeck | TakesWheres | TakesAll | TakesAt | TakesWithComment | TakesBackup | TakesWriting,
     "Removes keywords, and leaves the comments above them; or elements of a list.",
     "Of an INCLUDE only the keyword goes, not the file.", changesAsJson, "",
     "deckman rm field/FIELD.DATA TUNING --with-comment\n"
     "deckman rm field/FIELD.DATA 'WCONPROD[HR-P2]'"},
    {"mv", EditMv, TakesDeck | TakesWhere | TakesTarget | TakesAll | TakesAt | TakesBackup | TakesWriting,
     "Moves a keyword, with the comment above it, in its file or to another.", "", changesAsJson, "look first",
     "deckman mv field/FIELD.DATA GRIDOPTS --after START --dry-run"},
    {"comment-out", EditCommentOut, TakesDeck | TakesWheres | TakesAll | TakesAt | TakesBackup | TakesWriting,
     "Makes keywords comments, which are keywords no more.", "", changesAsJson, "",
     "deckman comment-out field/FIELD.DATA SCHEDULE/TUNING"},
    {"suppress", EditSuppress, TakesDeck | TakesWheres | TakesAll | TakesAt | TakesBackup | TakesWriting,
     "Suppresses keywords: their lines stay, and a simulator passes them over.", "", changesAsJson, "",
     "deckman suppress field/FIELD.DATA RPTSCHED#2"},
    {"unsuppress", EditUnsuppress, TakesDeck | TakesWheres | TakesAll | TakesAt | TakesBackup | TakesWriting,
     "Brings suppressed keywords back.", "", changesAsJson, "", "deckman unsuppress field/FIELD.DATA NOSIM"},
    {"tag", EditTag, TakesDeck | TakesWheres | TakesWhole | TakesAll | TakesAt | TakesBackup | TakesWriting,
     "Gives keywords the generated tag, as if a program had written them.",
     "--all without WHERE stands for all keywords of the deck.", changesAsJson, "",
     "deckman tag field/FIELD.DATA EQLDIMS"},
    {"untag", EditUntag, TakesDeck | TakesWheres | TakesWhole | TakesAll | TakesAt | TakesBackup | TakesWriting,
     "Takes the generated tag of keywords away, which makes them the user's.",
     "--all without WHERE stands for all keywords of the deck.", changesAsJson, "",
     "deckman untag field/FIELD.DATA START"},
    {"note", EditNote, TakesDeck | TakesWhere | TakesText | TakesAll | TakesAt | TakesBackup | TakesWriting,
     "Sets the comment between a keyword's line and its data; empty takes it away.", "", changesAsJson, "",
     "deckman note field/FIELD.DATA EQUIL 'from the 2024 study'"},
    {"above", EditAbove, TakesDeck | TakesWhere | TakesText | TakesAll | TakesAt | TakesBackup | TakesWriting,
     "Replaces the comment above a keyword; empty takes it away.", "", changesAsJson, "",
     "deckman above field/FIELD.DATA EQUIL 'two regions'"},
    {"header", EditHeader, TakesDeck | TakesText | TakesFileOfDeck | TakesBackup | TakesWriting,
     "Puts a comment between marks at the head of a file, in place of an earlier one.",
     "The marks begin with the generated tag. Unless --file-tag names a tag of its own for files, the file would count "
     "as generated as a whole; one that holds keywords without a tag is refused then.",
     changesAsJson, "", "deckman header field/FIELD.DATA 'made by the planning script' --file-tag whole"},
    {"resolve", EditResolve, TakesDeck | TakesVariables | TakesAll | TakesBackup | TakesWriting,
     "Replaces the references to variables in a deck by values.",
     "References to other variables stay, and so do the aliases of PATHS.", changesAsJson, "",
     "deckman resolve field/FIELD.DATA --set SCHED=include/schedule"},
    {"apply", RunApply, TakesDeck | TakesFile | TakesBackup | TakesWriting,
     "Makes the edits of a script, one a line, all or none, in one go.",
     "A line is a verb that edits (set, insert, rm, mv, comment-out, suppress, unsuppress, tag, untag, note, above, "
     "header, resolve) with what stands behind DECK on its command line. Words are quoted as in a shell, # begins a "
     "comment, and <<END stands for the text of the lines below, up to the line END. Places are those of the deck as "
     "it "
     "was, so that a script may be made from one ls; a keyword that the script inserts counts behind those of its "
     "name.",
     changesAsJson, "", "echo \"set 'WCONPROD[HR-P2].ORAT' 1500\" | deckman apply field/FIELD.DATA -"},
    {"rename", RunRename, TakesDeck | TakesRenames | TakesBackup | TakesWriting,
     "Renames files of a deck, with every keyword that names them.",
     "OLD is the file's name, or as much of its path as tells it from others; NEW is a name in the same folder. Names "
     "may "
     "be exchanged. The deck's top file and its grid files are files of it too. A file that has a new name already, "
     "and "
     "one OLD of many files, are refused without --replace.",
     "With --json a line for each file: {\"action\":\"renamed\",\"from\",\"to\"}, and one for each keyword: "
     "{\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}.",
     "", "deckman rename field/FIELD.DATA wells.inc=producers_and_injectors.inc"},
    {"template", RunTemplate, TakesName, "Prints the text to start a keyword from.", "NAME in any case.",
     "With --json one object: {\"name\",\"text\"}.", "a new table of relative permeabilities", "deckman template SWOF"},
    {"sort", RunSort, TakesDeck | TakesWriting | TakesBackup,
     "Moves keywords that must stand ahead of others there, each file by itself.",
     "deckman syntax NAME tells what a keyword stands after. TITLE goes straight behind RUNSPEC, and SKIPREST to "
     "the head of SCHEDULE. A keyword takes the comment above it along; a refinement or a box is sorted by itself. "
     "What stands in order stays. All files are written, or none.",
     "With --json a line for each keyword that moves: "
     "{\"action\":\"moved\",\"name\",\"file\",\"line\",\"newFile\",\"newLine\"}.",
     "what would move, then the same with backups",
     "deckman sort unsorted/NORTH.DATA --dry-run\n"
     "deckman sort unsorted/NORTH.DATA --backup"},
    {"flatten", RunFlatten, TakesDeck | TakesOutput | TakesRange | TakesAll | TakesRewrite | TakesWriting,
     "Writes a deck into one file, with what each INCLUDE includes in its place.",
     "What stands behind the deck's end is written too, and so are all comments. An INCLUDE that brings nothing in "
     "stays. What stands behind an ENDINC becomes comments. A file of the deck is never written over.",
     "With --json a line for each file: {\"action\",\"from\",\"to\"}; action is written or missing. With --dry-run "
     "also {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}, new null for a keyword that goes.",
     "the whole deck, and its late schedule",
     "deckman flatten field/FIELD.DATA -o field/FLAT.DATA\n"
     "deckman flatten field/FIELD.DATA -o field/late.inc --from SCHEDULE/WELSPECS#2"},
    {"copy", RunCopy, TakesDeck | TakesDirectory | TakesRewrite | TakesWriting,
     "Copies a deck with all files that it refers to into another directory.",
     "All files lie side by side there, and the keywords name them so; of two with one name the second gets a "
     "number. Grid files come along, but replace none that is there. With --simulator the keywords that it doesn't "
     "know are left out.",
     "With --json a line for each file: {\"action\",\"from\",\"to\"}; action is written, kept (a grid file was "
     "there) or missing. With --dry-run also {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}.",
     "", "deckman copy field/FIELD.DATA run2"},
    {"clone", RunClone, TakesDeck | TakesSuffix | TakesRewrite | TakesWriting,
     "Copies each file of a deck beside itself, under a name with a suffix.",
     "The suffix goes ahead of the last dot of each file's name, and of the names in INCLUDE keywords.",
     "With --json a line for each file: {\"action\",\"from\",\"to\"}; action is written or missing. With --dry-run "
     "also {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"}.",
     "FIELD_B.DATA, with wells_B.inc and all others", "deckman clone field/FIELD.DATA --suffix _B"},
    {"diff", RunDiff, TakesDecks, "Tells what another deck has changed, by keyword and item.",
     "Layout, comments, repeat counts, and how a deck is cut into files don't count. Keywords are matched in their "
     "section by name and identity, and in the schedule by time. A place is NEW's, and OLD's for what was removed; "
     "1* is what was left to a default. Of a row of changed values the first five are told, and how many more there "
     "are. Exit status 0 when nothing differs, 1 when something does.",
     "With --json a line each: {\"kind\",\"where\",\"old\",\"new\"}; kind is added, removed, changed or moved.",
     "what the new deck changes", "deckman diff regenerated/last/BRYNJE.DATA regenerated/now/BRYNJE.DATA"},
    {"merge", RunMerge, TakesDecks | TakesMerge | TakesWriting | TakesBackup,
     "Carries what a user wrote in OLD into NEW, which its generator has made anew.",
     "The user's are the keywords without a generated tag. Each goes next to the generated keyword that it "
     "followed, with its comments; one that stands for a generated keyword (the same well, table, ...) takes its "
     "place. What is suppressed in OLD is suppressed in NEW. NEW is written in its place, or with -o with all its "
     "files into another directory; nothing is written before the whole merge has succeeded. A NEW that holds "
     "keywords of a user already is refused: each would be put in once more.",
     "With --json a line each: {\"action\",\"name\",\"file\",\"line\",\"newFile\",\"newLine\",\"text\"}, with the "
     "file and line in OLD and where that is in NEW as it stood; action is carried, replaced, suppressed, cut, "
     "refused, lost, commented or missing; newLine is null at the end of a file.",
     "look first, then merge",
     "cd regenerated\n"
     "deckman merge last/BRYNJE.DATA now/BRYNJE.DATA --comments --dry-run\n"
     "deckman merge last/BRYNJE.DATA now/BRYNJE.DATA --comments"},
    {"read", RunRead, TakesFile, "Reads a piece of deck text, as the SCHEDULE section knows it, without a deck.",
     "FILE - is standard input. Sizes that only a deck can tell are errors; the keyword's text is given all the "
     "same.",
     "With --json a line each: {\"name\",\"data\",\"text\"}; text is what stands below the keyword's line, data are "
     "as get shows them, null without data and where they can't be read.",
     "a piece of text, as JSON", "printf \"WELOPEN\\n 'HR-P1' SHUT /\\n/\\n\" | deckman read --json -"},
    {"syntax", RunSyntax, TakesSyntax, "Shows what the catalogue knows of keywords: all, or every definition of one.",
     "NAME in any case, also one that a family of names such as FU* covers. With --simulator only what that one "
     "knows.",
     "With --json an object for each definition, a line each; --stats one object.", "the items of WELSPECS",
     "deckman syntax WELSPECS"},
    {"project init", RunProjectInit, TakesProjectDir,
     "Makes a directory a project of decks, with a cache of where keywords stand.",
     "Makes DIR where it doesn't exist, and in it the empty file deck_cache_xml.lock, which has the cache kept in "
     "its fast form. Decks that are there already, each as NAME/NAME.DATA, belong to the project.",
     "With --json a line for each deck: {\"name\",\"file\",\"keywords\"}, file relative to DIR.", "",
     "deckman project init studies"},
    {"project add", RunProjectAdd, TakesProjectDir | TakesNewDeck | TakesWriting,
     "Copies a deck with all its files into a project, as DIR/NAME/NAME.DATA.",
     "All files lie side by side there, as after deckman copy.",
     "With --json a line: {\"name\",\"file\",\"keywords\"}, file relative to DIR; with --dry-run keywords is null, "
     "and lines {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"} follow.",
     "",
     "deckman project init studies\n"
     "deckman project add studies base field/FIELD.DATA"},
    {"project ls", RunProjectLs, TakesProjectDir, "Lists the decks of a project with the number of their keywords.", "",
     "With --json a line each: {\"name\",\"file\",\"keywords\"}, file relative to DIR; keywords is null for a deck "
     "that can't be read.",
     "",
     "deckman project init studies\n"
     "deckman project add studies base field/FIELD.DATA\n"
     "deckman project ls studies"},
    {"project move", RunProjectMove, TakesProjectDir | TakesNewProjectDir | TakesWriting,
     "Moves a project, and corrects the paths of its INCLUDE keywords.",
     "Each INCLUDE names the file that it named before, in the project or outside; paths with a variable or an "
     "alias stay as they are. Until the new place is whole the old one is left alone. NEWDIR must not exist, or be "
     "an empty directory, or --replace deletes what is there. With --backup the project stays in DIR too, and "
     "decks there and at NEWDIR go their own ways from then on.",
     "With --json a line for each deck: {\"name\",\"file\",\"keywords\"}, file relative to NEWDIR; with --dry-run "
     "keywords is null, and lines {\"action\":\"changed\",\"file\",\"line\",\"name\",\"old\",\"new\"} follow.",
     "",
     "deckman project init studies\n"
     "deckman project move studies archive/2026"},
    {"project flush", RunProjectFlush, TakesProjectDir,
     "Empties the cache of a project: the next time its decks are scanned.", "",
     "With --json a line for each deck: {\"name\",\"file\",\"keywords\"}, file relative to DIR, keywords null.", "",
     "deckman project init studies\n"
     "deckman project flush studies"},
};

} // namespace

std::span<const VerbEntry> AllVerbs()
{
    return verbs;
}

} // namespace Deckman

#pragma once

#include <string_view>

namespace Deckman {

/// What `deckman --help` prints: all verbs, the forms of a place and the common options on one screen, 80 columns wide.
inline constexpr std::string_view helpText =
    R"(deckman lists, shows, searches and edits the deck of a reservoir simulation.

  deckman ls DECK           the keywords in deck order
  deckman tree DECK         the files and what includes what, grid files too
  deckman sections DECK     the sections with their ends
  deckman scopes DECK       what encloses what
  deckman dates DECK        the moments of the schedule
  deckman show DECK WHERE   a keyword's text as it stands
  deckman get DECK WHERE    the data of a keyword, or one item of them
  deckman find DECK REGEX   the keywords whose data match
  deckman diff OLD NEW      what differs, by keyword and item
  deckman merge OLD NEW     carry a user's work into a deck that was made anew
  deckman check DECK        what is wrong with the deck
  deckman template NAME     the text to start a keyword from
  deckman sort DECK         put keywords ahead of those that need them
  deckman flatten DECK -o FILE    the deck in one file
  deckman copy DECK DIR           the deck with all its files in another folder
  deckman clone DECK --suffix S   the deck beside itself
  deckman read FILE         a piece of deck text as keywords and data
  deckman syntax [NAME]     what the catalogue knows of keywords
  deckman project init|add|ls|move|flush DIR   a directory of decks

DECK is the deck's top file. WHERE is a place in the deck:
  WELSPECS              the first keyword of that name
  WELSPECS#3            the third of that name, in deck order
  SCHEDULE/WELSPECS#3   the third of that name in that section
  wells.inc:120         the keyword that holds line 120 of that file
  @17                   the seventeenth keyword of ls
  TABDIMS[3], TABDIMS.3   the fourth item of the record
  WELSPECS[2].WELL        an item of the third record
  WCONPROD[PROD1].ORAT    an item of the record whose first string is PROD1
--at DATE keeps to what is in force at a date: 2026-11-25, '25 NOV 2026', 100d.
Keywords and lines count from 1, items and records from 0.

For every verb:
  --project DIR         use the cache of that project
  --json                for machines: one JSON object, or one a line
  --strict              exit status 1 for warnings too
  --simulator 100|300   leave out what that simulator skips
  --keyword-tag WORD, --file-tag WORD   the word behind "-- Generated" in tags
Exit status: 0 done, 1 errors in the deck or not there, 2 wrong usage, 3 file
trouble.
deckman VERB --help tells a verb's options, with an example; deckman --version.
)";

/// The first word of the project verbs, in `deckman project --help`.
inline constexpr std::string_view projectHelp =
    "A directory of decks, which keeps what lets an unchanged deck open fast.";

} // namespace Deckman

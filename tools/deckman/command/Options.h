#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <tarn/keywords/SectionType.h>
#include <tarn/keywords/SimulatorType.h>

namespace Deckman {

struct VerbEntry;

/// Which keywords of a deck are listed.
struct KeywordFilter
{
    std::optional<Tarn::Fjel::Core::Keywords::SectionType> section;
    std::string nameGlob; ///< in capitals; empty for any
    bool userOnly = false;
    bool generatedOnly = false;
};

/// A command line, checked as far as that goes without a deck.
struct Options
{
    const VerbEntry* verb = nullptr; ///< set by `ParseOptions`
    std::string deck;                ///< the top file, as the user gave it
    std::string where;               ///< show
    std::string value;               ///< set
    std::vector<std::string> wheres; ///< the verbs that take many places
    std::string text;                ///< set, insert, note, above, header; "-" for standard input
    bool hasText = false;            ///< set: a text in place of a value
    std::string target;              ///< insert, mv: the keyword beside which it goes
    bool after = false;              ///< insert, mv: behind the keyword, and not ahead of it
    bool withComment = false;        ///< rm
    std::string newDeck;             ///< diff, merge; `deck` is the old one
    std::string regex;               ///< find
    std::string at;                  ///< a date; empty for any

    KeywordFilter filter;
    bool all = false;      ///< the keywords behind the end too
    bool defaults = false; ///< get

    bool comments = false; ///< the comment above a keyword too; merge: comments are carried
    std::string file;      ///< read, apply; "-" for standard input. header: a file of the deck; empty: the top file
    std::string name;      ///< syntax, template: in capitals; empty for all
    bool stats = false;

    std::string output;    ///< flatten
    std::string directory; ///< copy, merge
    std::string suffix;    ///< clone
    std::string from;      ///< a range of keywords, both ends included; empty: from the first
    std::string to;        ///< empty: to the last
    bool rewrite = false;  ///< keywords are written from their data
    bool backup = false;   ///< the old files stay beside the new ones
    bool dryRun = false;   ///< say what would be done, and do nothing
    bool crLf = false;     ///< what is written has CR LF line ends, and not those of the files

    std::vector<std::pair<std::string, std::string>> variables; ///< resolve: names and values
    std::vector<std::pair<std::string, std::string>> renames;   ///< rename: old and new names of files
    std::vector<std::pair<std::string, std::string>> fileMap;   ///< merge: names of included files in OLD and in NEW
    std::vector<std::string> excluded;                          ///< merge: files of OLD
    bool intoEdited = false;                                    ///< merge: NEW may hold keywords of a user already
    bool allowTruncated = false;                                ///< merge: a result that lacks something is written too

    std::string projectDir;    ///< of the project verbs: the project's directory
    std::string deckName;      ///< project add
    std::string newProjectDir; ///< project move
    bool replace = false;      ///< project move, rename: what stands at the new place goes

    std::string project; ///< the directory of the project whose cache is used; empty: none
    bool noPager = false;
    bool json = false;
    bool strict = false;
    std::optional<Tarn::Fjel::Core::Keywords::SimulatorType> simulator;
    std::optional<std::string> keywordTag;
    std::optional<std::string> fileTag;
};

} // namespace Deckman

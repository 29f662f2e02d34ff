#include "usage/Help.h"

#include <algorithm>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "command/Verbs.h"

namespace Deckman {

namespace {

constexpr HelpRow toSee[] = {
    {"ls, tree DECK", "its keywords, in deck order; its files"},
    {"sections, scopes, dates DECK", "what encloses what; the schedule's moments"},
    {"show, get DECK WHERE", "a keyword's text; its data, or an item"},
    {"find DECK REGEX", "the keywords whose data match"},
    {"check DECK", "what is wrong with the deck"},
    {"diff OLD NEW", "what another deck has changed"},
};
constexpr HelpRow toChange[] = {
    {"set DECK WHERE VALUE", "one item, and not a byte besides"},
    {"insert, rm, mv DECK WHERE", "put keywords in, out, elsewhere"},
    {"comment-out, suppress, unsuppress", "put keywords to sleep, and wake them"},
    {"tag, untag DECK WHERE", "say who wrote a keyword: a program, or you"},
    {"note, above, header", "the comment in, above, at a file's head"},
    {"resolve DECK --set NAME=VALUE", "put values in the place of variables"},
    {"apply DECK FILE", "a script of such edits, all or none"},
    {"rename DECK OLD=NEW", "files, and the keywords that name them"},
    {"sort DECK", "put keywords ahead of those that need them"},
    {"merge OLD NEW", "carry your work into a deck made anew"},
};
constexpr HelpRow toPassOn[] = {
    {"flatten DECK -o FILE", "the deck in one file"},
    {"copy DECK DIR, clone --suffix S", "the deck elsewhere, or beside itself"},
    {"project init|add|ls|move|flush", "a directory of decks that open fast"},
};
constexpr HelpRow toLearn[] = {
    {"syntax [NAME], template NAME", "what a keyword holds; a text to begin with"},
    {"read FILE", "deck text as keywords, without a deck"},
};
constexpr VerbGroup groups[] = {
    {"See and judge", toSee},
    {"Change, with --dry-run to look first and --backup to keep the old files", toChange},
    {"Pass on", toPassOn},
    {"Know the language", toLearn},
};

constexpr HelpRow places[] = {
    {"WELSPECS, WELSPECS#3", "the first keyword of that name; the third in deck order"},
    {"SCHEDULE/WELSPECS#3", "the third of that name in that section"},
    {"wells.inc:120, @17", "what holds that line; the seventeenth keyword of ls"},
    {"TABDIMS.3, TABDIMS[3]", "the fourth item of the record"},
    {"WELSPECS[2].WELL", "an item of the third record"},
    {"WCONPROD[PROD1].ORAT", "an item of the record whose first string is PROD1"},
};

constexpr HelpRow statuses[] = {
    {"0", "done, with or without warnings"},
    {"1", "the deck has errors, or what was asked for isn't there"},
    {"2", "wrong usage"},
    {"3", "a file could not be read or written"},
};

constexpr HelpRow variables[] = {
    {"NO_COLOR", "set to anything: no colours on a terminal either"},
    {"DECKMAN_PAGER, PAGER", "the pager for long output on a terminal, the first that is set; empty or cat for none. "
                             "Without them less, with the options FRX unless LESS has others."},
};

void AppendRow(std::string& text, std::string_view written, std::string_view is, std::size_t width)
{
    text += fmt::format("  {:<{}} {}\n", written, width, is);
}

/// `text` with its lines broken at blanks so that they fit a terminal. What can't be broken stays long.
std::string Wrapped(std::string_view text)
{
    constexpr std::size_t columns = 80;
    std::string wrapped;
    while (!text.empty()) {
        std::size_t end = std::min(text.find('\n'), text.size());
        if (end > columns) {
            const std::size_t blank = text.rfind(' ', columns);
            if (blank != std::string_view::npos && text.find_first_not_of(' ') < blank) end = blank;
        }
        wrapped.append(text.substr(0, end)).append(1, '\n');
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return wrapped;
}

} // namespace

std::span<const VerbGroup> VerbGroups()
{
    return groups;
}

std::span<const HelpRow> PlaceForms()
{
    return places;
}

std::span<const HelpRow> ExitStatuses()
{
    return statuses;
}

std::span<const HelpRow> EnvironmentVariables()
{
    return variables;
}

std::string NameOf(const CLI::App& verb)
{
    const CLI::App* group = verb.get_parent();
    const bool isSecondWord = group != nullptr && group->get_parent() != nullptr;
    return isSecondWord ? group->get_name() + " " + verb.get_name() : verb.get_name();
}

std::string MainHelp(const CLI::App& app)
{
    std::string text = fmt::format("deckman VERB ... {}.\n", whatItIs);
    for (const VerbGroup& group : groups) {
        text += fmt::format("{}:\n", group.want);
        for (const HelpRow& row : group.rows)
            AppendRow(text, row.written, row.is, 34);
    }
    text += "WHERE is a place in the deck:\n";
    for (const HelpRow& row : places)
        AppendRow(text, row.written, row.is, 22);
    text += fmt::format("{}\nFor every verb:\n", countingRule);
    for (const CLI::Option* option : app.get_options()) {
        // Those that end the program are told below.
        if (option->get_configurable())
            AppendRow(text, fmt::format("--{} {}", option->get_lnames().front(), option->get_type_name()),
                      option->get_description(), 22);
    }
    text += "Exit status: 0 done, 1 errors in the deck or not there, 2 wrong usage, 3 file\n"
            "trouble. deckman VERB --help has a verb's options and an example; man deckman.\n";
    return text;
}

std::string VerbRemarks(const VerbEntry& verb)
{
    std::string text;
    if (!verb.more.empty()) text += Wrapped(verb.more);
    if (!verb.json.empty()) text += Wrapped(verb.json);
    if ((verb.takes & (TakesWhere | TakesWheres | TakesTarget | TakesPlace | TakesRange)) != 0) {
        text += "\nWHERE is:\n";
        for (const HelpRow& row : places)
            AppendRow(text, row.written, row.is, 22);
        text += Wrapped(countingRule);
    }
    text += fmt::format("\nExample, in examples/decks:{}{}\n", verb.shows.empty() ? "" : " ", verb.shows);
    for (std::string_view rest = verb.examples; !rest.empty();) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        text += fmt::format("  {}\n", rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return text + "\ndeckman --help tells the options that every verb takes: --json, --strict, ...";
}

} // namespace Deckman

#include "Options.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "Help.h"
#include "Nearest.h"
#include "Output.h"
#include "Sections.h"

namespace Deckman {

namespace {

using Tarn::Fjel::Core::Keywords::SimulatorType;

struct VerbHelp
{
    Verb verb;
    std::string_view name;
    std::string_view does;
    std::string_view more; // an example, and what the options don't say
};

constexpr VerbHelp verbs[] = {
    {Verb::Ls, "ls", "Lists the keywords of a deck in deck order, across all its files.",
     "The index counts all keywords of the deck, so that @17 is the same keyword whatever is listed.\n"
     "With --json a line each: {\"index\",\"name\",\"section\",\"file\",\"line\",\"position\",\"size\",\"depth\",\n"
     "\"generated\",\"suppressed\"}; position and size in bytes, depth 0 in the top file.\n\n"
     "Example: the user's well controls\n"
     "  deckman ls FIELD.DATA --section SCHEDULE --name 'WCON*' --user\n"},
    {Verb::Tree, "tree", "Shows the files of a deck, what includes what, and the grid files.",
     "Keywords and bytes are those of the file itself, whatever stands behind its end included.\n"
     "With --json one object: {\"file\",\"exists\",\"keywords\",\"bytes\",\"includes\":[...]}; keywords is null for "
     "what is\n"
     "no file of keywords.\n\n"
     "Example:\n"
     "  deckman tree FIELD.DATA\n"},
    {Verb::Sections, "sections", "Shows the sections of a deck with their ends, and names those that recur.",
     "Begin and end are indices of ls; the end is the first keyword that is not in the section.\n"
     "With --json a line each: {\"section\",\"begin\",\"end\"}.\n\n"
     "Example:\n"
     "  deckman sections FIELD.DATA\n"},
    {Verb::Scopes, "scopes", "Shows what encloses what: sections, boxes, refinements, skips, actions, dates.",
     "Begin and end are indices of ls; the end is the first keyword behind the scope and its closing keyword.\n"
     "With --json a line each: {\"head\",\"begin\",\"end\",\"depth\"}; depth 0 for what nothing encloses.\n\n"
     "Example: where the actions are\n"
     "  deckman scopes FIELD.DATA --json | grep ACTION\n"},
    {Verb::Show, "show", "Shows the text of one keyword as it stands.",
     "WHERE is NAME, NAME#3, SECTION/NAME#3, FILE:LINE or @17. The comment lines above the next keyword are not "
     "shown:\n"
     "they belong to that one.\n"
     "With --json one object: {\"name\",\"text\",\"comment\"}; comment is the one below the keyword's line.\n\n"
     "Example: the keyword around line 120 of a file, and the second COMPDAT\n"
     "  deckman show FIELD.DATA wells.inc:120\n"
     "  deckman show FIELD.DATA COMPDAT#2\n"},
    {Verb::Find, "find", "Lists the keywords whose data, comments among them included, match a regular expression.",
     "The expression is searched for in all lines of the data at once: ^ and $ stand for the ends of a line, (?i) at "
     "the\n"
     "head is for any case, (?s) lets a dot match a line end. Printed as ls does. Exit status 1 when nothing "
     "matches.\n\n"
     "Example: everything that concerns one well\n"
     "  deckman find FIELD.DATA \"'?HR-P1\\b\"\n"},
};

std::vector<std::string_view> VerbNames()
{
    std::vector<std::string_view> names;
    for (const VerbHelp& verb : verbs)
        names.push_back(verb.name);
    return names;
}

/// Help without the library's remarks on what is required and what excludes what: the usage line says it.
class HelpFormatter : public CLI::Formatter
{
public:
    std::string make_option_opts(const CLI::Option* option) const override
    {
        const std::string type = option->get_type_name();
        return type.empty() ? type : " " + type;
    }
};

void AddDeck(CLI::App& verb, Options& options)
{
    verb.add_option("DECK", options.deck, "the top file of the deck")->required()->type_name("");
}

void AddFilter(CLI::App& verb, Options& options)
{
    const auto toSection = [&options](const std::string& name) {
        options.filter.section = FindSection(name);
        if (!options.filter.section) {
            throw CLI::ValidationError("--section",
                                       fmt::format("'{}' is not a section.{}", name, NearestHint(name, sectionNames)));
        }
    };
    const auto toGlob = [&options](const std::string& glob) {
        options.filter.nameGlob = Tarn::Fjel::Core::Service::Uppercased(glob);
    };
    verb.add_option_function<std::string>("--section", toSection, "only the keywords of a section")->type_name("S");
    verb.add_option_function<std::string>("--name", toGlob, "only keywords with such a name; * and ? match any")
        ->type_name("GLOB");
    CLI::Option* user = verb.add_flag("--user", options.filter.userOnly, "only keywords without the generated tag");
    verb.add_flag("--generated", options.filter.generatedOnly, "only keywords with the generated tag")->excludes(user);
}

void AddAll(CLI::App& verb, Options& options)
{
    verb.add_flag("--all", options.all, "the keywords behind the end too; then they count in the index");
}

void AddVerb(CLI::App& app, const VerbHelp& help, Options& options)
{
    CLI::App* verb = app.add_subcommand(std::string(help.name), std::string(help.does));
    verb->fallthrough();
    verb->formatter(std::make_shared<HelpFormatter>());
    verb->footer(fmt::format(
        "{}\ndeckman --help tells the options that every verb takes: --json, --simulator, --strict, ...", help.more));
    verb->callback([&options, value = help.verb] { options.verb = value; });
    AddDeck(*verb, options);
    if (help.verb == Verb::Show)
        verb->add_option("WHERE", options.where, "a place in the deck")->required()->type_name("");
    if (help.verb == Verb::Find)
        verb->add_option("REGEX", options.regex, "a regular expression")->required()->type_name("");
    if (help.verb == Verb::Ls || help.verb == Verb::Find) AddFilter(*verb, options);
    if (help.verb == Verb::Ls || help.verb == Verb::Find || help.verb == Verb::Show) AddAll(*verb, options);
}

void AddCommonOptions(CLI::App& app, Options& options)
{
    const auto toSimulator = [&options](const std::string& name) {
        if (name != "100" && name != "300") throw CLI::ValidationError("--simulator", "100 or 300 is expected.");
        options.simulator = name == "100" ? SimulatorType::S100 : SimulatorType::S300;
    };
    app.add_flag("--json", options.json);
    app.add_flag("--strict", options.strict);
    app.add_option_function<std::string>("--simulator", toSimulator)->type_name("100|300");
    app.add_option("--keyword-tag", options.keywordTag)->type_name("WORD");
    app.add_option("--file-tag", options.fileTag)->type_name("WORD");
}

void PrintError(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stderr);
}

/// What was asked for: unlike a message it must not get lost without a word.
ExitStatus PrintAnswer(std::string_view text)
{
    Output out;
    out.Append(text);
    out.Flush();
    if (out.Failure() == 0) return Done;
    PrintError(fmt::format("standard output: error: {}\n", std::strerror(out.Failure())));
    return FileFailure;
}

/// The options that a verb takes, its own and those of every verb.
std::vector<std::string> OptionNames(const CLI::App& app, const CLI::App& verb)
{
    std::vector<std::string> names;
    for (const CLI::App* level : {&verb, &app}) {
        for (const CLI::Option* option : level->get_options()) {
            for (const std::string& name : option->get_lnames())
                names.push_back("--" + name);
        }
    }
    return names;
}

/// What is wrong with a command line that has a verb, in place of the parser's own words where those say too little.
std::string Complaint(const CLI::App& app, const CLI::App& verb, const CLI::ParseError& error)
{
    const std::string text = error.what();
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
        for (const std::string& word : app.remaining(true)) {
            if (!word.starts_with('-')) continue;
            const std::vector<std::string> names = OptionNames(app, verb);
            return fmt::format(
                "{} has no option {}.{}", verb.get_name(), word,
                NearestHint(word.substr(0, word.find('=')), std::vector<std::string_view>(names.begin(), names.end())));
        }
    } else if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr && text.starts_with("--")) {
        return fmt::format("{} needs a value.", text.substr(0, text.find(':')));
    }
    return text;
}

ExitStatus TellWrongUsage(const CLI::App& app, const CLI::ParseError& error)
{
    const auto chosen = app.get_subcommands();
    if (!chosen.empty()) {
        const CLI::App& verb = *chosen.front();
        PrintError(
            fmt::format("deckman: error: {}\nSee deckman {} --help.\n", Complaint(app, verb, error), verb.get_name()));
        return WrongUsage;
    }
    for (const std::string& word : app.remaining()) {
        if (word.starts_with('-')) continue;
        PrintError(fmt::format("deckman: error: There is no verb {}.{}\nSee deckman --help.\n", word,
                               NearestHint(word, VerbNames())));
        return WrongUsage;
    }
    const std::string text =
        dynamic_cast<const CLI::RequiredError*>(&error) != nullptr ? "A verb is missing." : error.what();
    PrintError(fmt::format("deckman: error: {}\nSee deckman --help.\n", text));
    return WrongUsage;
}

} // namespace

std::variant<Options, ExitStatus> ParseOptions(int argc, char** argv)
{
    Options options;
    CLI::App app("", "deckman");
    app.require_subcommand(1);
    app.set_version_flag("--version", "deckman " DECKMAN_VERSION);
    AddCommonOptions(app, options);
    for (const VerbHelp& verb : verbs)
        AddVerb(app, verb, options);

    // People ask for help in this way too.
    std::vector<const char*> arguments(argv, argv + argc);
    if (argc > 1 && std::string_view(argv[1]) == "help") {
        arguments.erase(arguments.begin() + 1);
        arguments.push_back("--help");
    }
    try {
        app.parse(static_cast<int>(arguments.size()), arguments.data());
        return options;
    } catch (const CLI::CallForHelp&) {
        const auto chosen = app.get_subcommands();
        return PrintAnswer(chosen.empty() ? std::string(helpText) : chosen.front()->help("deckman"));
    } catch (const CLI::CallForVersion& version) {
        return PrintAnswer(fmt::format("{}\n", version.what()));
    } catch (const CLI::ParseError& error) {
        if (argc == 1) {
            PrintError(helpText);
            return WrongUsage;
        }
        return TellWrongUsage(app, error);
    }
}

} // namespace Deckman

#include "usage/CommandLine.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "command/Verbs.h"
#include "output/Nearest.h"
#include "output/Output.h"
#include "session/DeckSession.h"
#include "session/Sections.h"
#include "usage/Completion.h"
#include "usage/Help.h"

namespace Deckman {

namespace {

using Tarn::Fjel::Core::Keywords::SimulatorType;

/// The words that may follow the words of a verb that has been begun.
std::vector<std::string_view> VerbNames(std::string_view begun)
{
    std::vector<std::string_view> names;
    for (const VerbEntry& verb : AllVerbs()) {
        if (verb.name.starts_with(begun)) names.push_back(verb.name.substr(begun.size()));
    }
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

void AddSection(CLI::App& verb, Options& options, const char* does)
{
    const auto toSection = [&options](const std::string& name) {
        options.filter.section = FindSection(name);
        if (!options.filter.section) {
            throw CLI::ValidationError("--section", fmt::format("'{}' is not a section.{}", name,
                                                                NearestOrAllHint(name, sectionNames, "The sections")));
        }
    };
    verb.add_option_function<std::string>("--section", toSection, does)->type_name("S");
}

void AddFilter(CLI::App& verb, Options& options)
{
    const auto toGlob = [&options](const std::string& glob) {
        options.filter.nameGlob = Tarn::Fjel::Core::Service::Uppercased(glob);
    };
    AddSection(verb, options, "only the keywords of a section");
    verb.add_option_function<std::string>("--name", toGlob, "only keywords with such a name; * and ? match any")
        ->type_name("GLOB");
    CLI::Option* user = verb.add_flag("--user", options.filter.userOnly, "only keywords without the generated tag");
    verb.add_flag("--generated", options.filter.generatedOnly, "only keywords with the generated tag")->excludes(user);
}

void AddAll(CLI::App& verb, Options& options)
{
    verb.add_flag("--all", options.all, "the keywords behind the end too, and count them");
}

void AddSyntax(CLI::App& verb, Options& options)
{
    const auto toName = [&options](const std::string& name) {
        options.name = Tarn::Fjel::Core::Service::Uppercased(name);
    };
    CLI::Option* name = verb.add_option_function<std::string>("NAME", toName, "a keyword's name")->type_name("");
    AddSection(verb, options, "only keywords that may stand in a section");
    verb.add_flag("--stats", options.stats, "counts by section, kind and confidence")->excludes(name);
}

/// What the verbs that write take.
void AddWriting(CLI::App& verb, bool isEdit, Options& options)
{
    const auto toLineEnds = [&options](const std::string& kind) {
        if (kind != "crlf" && kind != "keep") throw CLI::ValidationError("--eol", "crlf or keep is expected.");
        options.crLf = kind == "crlf";
    };
    verb.add_flag("--dry-run", options.dryRun, "say what would be done, and do nothing");
    if (isEdit) verb.add_flag("--backup", options.backup, "leave each old file beside the new one, as FILE~");
    verb.add_option_function<std::string>("--eol", toLineEnds, "line ends: crlf, or keep, those of the files")
        ->type_name("KIND");
}

void AddExport(CLI::App& verb, std::uint64_t takes, Options& options)
{
    if ((takes & TakesOutput) != 0)
        verb.add_option("-o,--output", options.output, "the file to write")->required()->type_name("FILE");
    if ((takes & TakesDirectory) != 0)
        verb.add_option("DIR", options.directory, "the directory to copy to")->required()->type_name("");
    if ((takes & TakesSuffix) != 0) {
        verb.add_option("--suffix", options.suffix, "what goes behind the root of each file's name")
            ->required()
            ->type_name("S");
    }
    if ((takes & TakesRange) != 0) {
        verb.add_option("--from", options.from, "only from that keyword on")->type_name("WHERE");
        verb.add_option("--to", options.to, "only through that keyword and all that it includes")->type_name("WHERE");
    }
    if ((takes & TakesRewrite) != 0)
        verb.add_flag("--rewrite", options.rewrite, "write keywords afresh from their data");
}

/// Takes texts of the form A=B; `expected` says so otherwise.
auto ToPairs(std::vector<std::pair<std::string, std::string>>& pairs, const char* option, const char* expected)
{
    return [&pairs, option, expected](const std::vector<std::string>& texts) {
        for (const std::string& text : texts) {
            const std::size_t sign = text.find('=');
            if (sign == 0 || sign == std::string::npos || sign + 1 == text.size())
                throw CLI::ValidationError(option, expected);
            pairs.emplace_back(text.substr(0, sign), text.substr(sign + 1));
        }
    };
}

/// Where an edit is made, and of what.
void AddEdit(CLI::App& verb, std::uint64_t takes, Options& options)
{
    if ((takes & TakesWheres) != 0) {
        CLI::Option* wheres = verb.add_option("WHERE", options.wheres, "places in the deck")->type_name("...");
        if ((takes & TakesWhole) == 0) wheres->required();
    }
    if ((takes & TakesValue) != 0) {
        const auto toText = [&options](const std::string& text) {
            options.text = text;
            options.hasText = true;
        };
        verb.add_option("VALUE", options.value, "the new value")->type_name("");
        verb.add_option_function<std::string>("--text", toText, "all data of the keyword, - for standard input")
            ->type_name("TEXT");
    }
    if ((takes & (TakesTarget | TakesPlace)) != 0) {
        const auto toTarget = [&options](bool after) {
            return [&options, after](const std::string& where) {
                if (!options.target.empty())
                    throw CLI::ValidationError("--before", "One place is expected, and there are two.");
                options.target = where;
                options.after = after;
            };
        };
        verb.add_option_function<std::string>("--before", toTarget(false), "ahead of that keyword")->type_name("WHERE");
        verb.add_option_function<std::string>("--after", toTarget(true), "behind that keyword")->type_name("WHERE");
    }
    if ((takes & TakesPlace) != 0) AddSection(verb, options, "at the end of that section; it is made if need be");
    if ((takes & TakesFileOfDeck) != 0)
        verb.add_option("--file", options.file, "that file of the deck, and not the top file")->type_name("FILE");
    if ((takes & TakesRenames) != 0) {
        verb.add_option_function<std::vector<std::string>>(
                "OLD=NEW",
                ToPairs(options.renames, "rename", "OLD=NEW is expected, a file of the deck and its new name."),
                "files of the deck, and their new names")
            ->required()
            ->type_name("...");
        verb.add_flag("--replace", options.replace, "delete a file that has a new name");
    }
    if ((takes & TakesVariables) != 0) {
        verb.add_option_function<std::vector<std::string>>(
                "--set", ToPairs(options.variables, "--set", "NAME=VALUE is expected, a variable and its value."),
                "what stands for a variable")
            ->required()
            ->type_name("NAME=VALUE...");
    }
}

/// What the parser can't tell of an edit. Throws as it does.
void CheckEdit(const Options& options)
{
    const std::uint64_t takes = options.verb->takes;
    const std::string name(options.verb->name);
    const bool hasTarget = !options.target.empty();
    const bool hasSection = (takes & TakesPlace) != 0 && options.filter.section;
    if ((takes & (TakesTarget | TakesPlace)) != 0 && hasTarget == hasSection) {
        throw CLI::ValidationError(name, hasTarget                   ? "--section goes without another place."
                                         : (takes & TakesPlace) != 0 ? "Where? --before WHERE, --after WHERE or "
                                                                       "--section S is expected."
                                                                     : "Where to? --before WHERE or --after WHERE is "
                                                                       "expected.");
    }
    if ((takes & TakesValue) != 0 && options.hasText == !options.value.empty())
        throw CLI::ValidationError(name, options.hasText ? "A VALUE or --text is expected, and not both."
                                                         : "A VALUE or --text TEXT is expected; 1* is the default.");
    if ((takes & TakesWhole) != 0 && options.wheres.empty() && !options.all)
        throw CLI::ValidationError(name, "WHERE is expected, or --all for the whole deck.");
}

void AddMerge(CLI::App& verb, Options& options)
{
    verb.add_option("-o,--output", options.directory, "write the result there, and leave NEW as it is")
        ->type_name("DIR");
    verb.add_flag("--comments", options.comments, "carry the comments of generated keywords too");
    const auto toPairs = ToPairs(options.fileMap, "--map", "A=B is expected, the names of a file in OLD and in NEW.");
    verb.add_option_function<std::vector<std::string>>("--map", toPairs, "the file that OLD includes as A is B in NEW")
        ->type_name("A=B")
        ->allow_extra_args(false);
    verb.add_option("--exclude", options.excluded, "carry nothing from that file of OLD")
        ->type_name("FILE")
        ->allow_extra_args(false);
    verb.add_flag("--into-edited", options.intoEdited, "NEW may hold keywords of a user already");
    verb.add_flag("--allow-truncated", options.allowTruncated, "write a result that lacks something, too");
}

void AddProject(CLI::App& verb, std::uint64_t takes, Options& options)
{
    if ((takes & TakesProjectDir) != 0)
        verb.add_option("DIR", options.projectDir, "the directory of the project")->required()->type_name("");
    if ((takes & TakesNewDeck) != 0) {
        verb.add_option("NAME", options.deckName, "the deck's name in the project")->required()->type_name("");
        AddDeck(verb, options);
        verb.add_flag("--backup", options.backup, "has nothing to keep: no file is ever replaced");
    }
    if ((takes & TakesNewProjectDir) != 0) {
        verb.add_option("NEWDIR", options.newProjectDir, "the directory where it is to be")->required()->type_name("");
        verb.add_flag("--replace", options.replace, "delete what stands at NEWDIR");
        verb.add_flag("--backup", options.backup, "delete nothing: DIR stays, NEWDIR goes to NEWDIR~");
    }
}

/// Verbs of two words share the first, which is none by itself.
CLI::App* AddCommand(CLI::App& app, const VerbEntry& entry)
{
    const std::string name(entry.name);
    const std::size_t blank = name.find(' ');
    if (blank == std::string::npos) return app.add_subcommand(name, std::string(entry.does));
    const std::string groupName = name.substr(0, blank);
    const auto groups = app.get_subcommands([&](CLI::App* command) { return command->get_name() == groupName; });
    CLI::App* group = groups.empty() ? app.add_subcommand(groupName, std::string(projectHelp)) : groups.front();
    group->require_subcommand(1);
    group->fallthrough();
    return group->add_subcommand(name.substr(blank + 1), std::string(entry.does));
}

/// The verb that a command line names; the first word of a verb of two where the second isn't one. Null for none.
const CLI::App* ChosenVerb(const CLI::App& app)
{
    const CLI::App* chosen = nullptr;
    for (auto words = app.get_subcommands(); !words.empty(); words = chosen->get_subcommands())
        chosen = words.front();
    return chosen;
}

/// What a verb takes of its own.
void AddArguments(CLI::App& verb, std::uint64_t given, Options& options)
{
    const auto takes = [given](Takes what) { return (given & what) != 0; };
    if (takes(TakesDeck)) AddDeck(verb, options);
    if (takes(TakesDecks)) {
        verb.add_option("OLD", options.deck, "the top file of a deck")->required()->type_name("");
        verb.add_option("NEW", options.newDeck, "the top file of the other deck")->required()->type_name("");
    }
    if (takes(TakesWhere)) verb.add_option("WHERE", options.where, "a place in the deck")->required()->type_name("");
    AddEdit(verb, given, options);
    if (takes(TakesText))
        verb.add_option("TEXT", options.text, "the text, - for standard input")->required()->type_name("");
    if (takes(TakesWithComment)) verb.add_flag("--with-comment", options.withComment, "with the comment above it");
    if (takes(TakesRegex)) verb.add_option("REGEX", options.regex, "a regular expression")->required()->type_name("");
    if (takes(TakesFilter)) AddFilter(verb, options);
    if (takes(TakesAll)) AddAll(verb, options);
    if (takes(TakesSyntax)) AddSyntax(verb, options);
    if (takes(TakesFile)) {
        const char* const does =
            takes(TakesDeck) ? "a script of edits, - for standard input" : "a file of deck text, - for standard input";
        verb.add_option("FILE", options.file, does)->required()->type_name("");
    }
    if (takes(TakesComments)) verb.add_flag("--comments", options.comments, "the comment above the keyword too");
    if (takes(TakesAt)) {
        verb.add_option("--at", options.at, "only keywords in force at that date")->type_name("DATE");
    }
    if (takes(TakesName)) {
        const auto toName = [&options](const std::string& name) {
            options.name = Tarn::Fjel::Core::Service::Uppercased(name);
        };
        verb.add_option_function<std::string>("NAME", toName, "a keyword's name")->required()->type_name("");
    }
    AddProject(verb, given, options);
    AddExport(verb, given, options);
    if (takes(TakesMerge)) AddMerge(verb, options);
    if (takes(TakesWriting)) AddWriting(verb, takes(TakesBackup), options);
    if (takes(TakesDefaults)) verb.add_flag("--defaults", options.defaults, "fill in the defaults that are known");
}

void AddVerb(CLI::App& app, const VerbEntry& entry, Options& options)
{
    CLI::App* verb = AddCommand(app, entry);
    verb->fallthrough();
    verb->formatter(std::make_shared<HelpFormatter>());
    verb->footer(VerbRemarks(entry));
    verb->callback([&options, &entry] { options.verb = &entry; });
    AddArguments(*verb, entry.takes, options);
}

// A text such as "-- a comment" looks like an option to the parser, and gets a mark ahead as long as that is at work.
constexpr char textMark = '\1';

/// Whether a word is text in spite of a dash ahead: no option has a blank in its name.
bool IsTextWithDash(std::string_view word)
{
    return word.starts_with('-') && word.substr(0, word.find('=')).find_first_of(" \t\n") != std::string_view::npos;
}

void Parse(CLI::App& app, std::vector<std::string> words)
{
    for (std::string& word : words) {
        if (IsTextWithDash(word)) word.insert(0, 1, textMark);
    }
    std::reverse(words.begin(), words.end());
    app.parse(std::move(words));
}

void Unmark(std::string& word)
{
    if (word.starts_with(textMark)) word.erase(0, 1);
}

void UnmarkTexts(Options& options)
{
    for (std::string* word :
         {&options.text, &options.value, &options.where, &options.target, &options.regex, &options.deck,
          &options.newDeck, &options.file, &options.output, &options.directory, &options.suffix, &options.from,
          &options.to, &options.projectDir, &options.deckName, &options.newProjectDir, &options.project})
        Unmark(*word);
    for (std::vector<std::string>* words : {&options.wheres, &options.excluded})
        std::for_each(words->begin(), words->end(), Unmark);
    for (auto* pairs : {&options.variables, &options.renames, &options.fileMap}) {
        for (auto& pair : *pairs)
            Unmark(pair.first);
    }
}

void AddCommonOptions(CLI::App& app, Options& options)
{
    const auto toSimulator = [&options](const std::string& name) {
        if (name != "100" && name != "300") throw CLI::ValidationError("--simulator", "100 or 300 is expected.");
        options.simulator = name == "100" ? SimulatorType::S100 : SimulatorType::S300;
    };
    app.add_option("--project", options.project, "use the cache of that project")->type_name("DIR");
    app.add_flag("--json", options.json, "for machines: one JSON object, or one a line");
    app.add_flag("--no-pager", options.noPager, "print long output on a terminal as it comes");
    app.add_flag("--strict", options.strict, "exit status 1 for warnings too");
    app.add_option_function<std::string>("--simulator", toSimulator, "leave out what that simulator skips")
        ->type_name("100|300");
    app.add_option("--keyword-tag", options.keywordTag, "the word behind \"-- Generated\" of a keyword's tag")
        ->type_name("WORD");
    app.add_option("--file-tag", options.fileTag, "the same of a file's tag")->type_name("WORD");
}

void PrintError(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stderr);
}

/// What was asked for: unlike a message it must not get lost without a word.
ExitStatus PrintAnswer(std::string_view text, bool mayPage = true)
{
    Output out(mayPage);
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        // What is told below a line, and what that is of.
        const bool isHeading = line.ends_with(':') && !line.starts_with(' ');
        out.Append(line, isHeading ? Style::Strong : Style::Plain);
        if (line.size() < text.size()) out.Append('\n');
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    out.Finish();
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
    std::string text = error.what();
    std::erase(text, textMark);
    const bool isMissing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    if (isMissing || dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
        for (const std::string& word : app.remaining(true)) {
            if (!word.starts_with('-') || word == "-") continue;
            const std::vector<std::string> names = OptionNames(app, verb);
            if (std::find(names.begin(), names.end(), word) != names.end())
                return fmt::format("{} stands behind -- and is taken for a word of the command.", word);
            const std::string hint =
                NearestHint(word.substr(0, word.find('=')), std::vector<std::string_view>(names.begin(), names.end()));
            return fmt::format("{} has no option {}.{}{}", NameOf(verb), word, hint,
                               isMissing ? " A text that begins with - goes behind the word --." : "");
        }
    } else if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr && text.starts_with("--")) {
        return fmt::format("{} needs a value.", text.substr(0, text.find(':')));
    }
    return text;
}

ExitStatus TellWrongUsage(const CLI::App& app, const CLI::ParseError& error)
{
    const CLI::App* chosen = ChosenVerb(app);
    const bool isWhole = chosen != nullptr && chosen->get_subcommands([](const CLI::App*) { return true; }).empty();
    if (isWhole) {
        PrintError(fmt::format("deckman: error: {}\nSee deckman {} --help.\n", Complaint(app, *chosen, error),
                               NameOf(*chosen)));
        return WrongUsage;
    }
    const std::string begun = chosen != nullptr ? chosen->get_name() + " " : std::string();
    const std::string see = fmt::format("\nSee deckman {}--help.\n", begun);
    for (const std::string& word : app.remaining(true)) {
        if (word.starts_with('-')) continue;
        PrintError(fmt::format("deckman: error: There is no verb {}{}.{}{}", begun, word,
                               NearestHint(word, VerbNames(begun)), see));
        return WrongUsage;
    }
    const bool isMissing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    const std::string missing = begun.empty() ? "A verb is missing." : "project what? A second word is missing.";
    PrintError(fmt::format("deckman: error: {}{}", isMissing ? missing : error.what(), see));
    return WrongUsage;
}

} // namespace

// --- lines of scripts ----------------------------------------------------------------------------

struct ScriptLineParser::Grammar
{
    CLI::App app{"", "script"};
    Options options;
};

ScriptLineParser::ScriptLineParser() : m_grammar(std::make_unique<Grammar>())
{
    CLI::App& app = m_grammar->app;
    Options& options = m_grammar->options;
    app.set_help_flag();
    app.require_subcommand(1);
    for (const VerbEntry& entry : AllVerbs()) {
        if (!std::holds_alternative<OnEdits>(entry.run)) continue;
        CLI::App* verb = app.add_subcommand(std::string(entry.name));
        verb->set_help_flag();
        verb->callback([&options, &entry] { options.verb = &entry; });
        constexpr std::uint64_t ofWholeScript = TakesDeck | TakesWriting | TakesBackup;
        AddArguments(*verb, entry.takes & ~ofWholeScript, options);
    }
}

ScriptLineParser::~ScriptLineParser() = default;

Options ScriptLineParser::Parse(const std::vector<std::string>& words)
{
    Options& options = m_grammar->options;
    options = Options();
    const auto isVerb = [&words](const VerbEntry& entry) { return entry.name == words.front(); };
    const auto verbs = AllVerbs();
    const auto known = std::find_if(verbs.begin(), verbs.end(), isVerb);
    if (known == verbs.end() || !std::holds_alternative<OnEdits>(known->run)) {
        std::vector<std::string_view> edits;
        for (const VerbEntry& entry : verbs) {
            if (std::holds_alternative<OnEdits>(entry.run)) edits.push_back(entry.name);
        }
        throw Failure(WrongUsage, fmt::format("{} is no edit.{}", words.front(),
                                              NearestOrAllHint(words.front(), edits, "The edits of a script")));
    }
    try {
        Deckman::Parse(m_grammar->app, words);
        UnmarkTexts(options);
        CheckEdit(options);
    } catch (const CLI::ParseError& error) {
        const CLI::App* verb = ChosenVerb(m_grammar->app);
        std::string text = verb != nullptr ? Complaint(m_grammar->app, *verb, error) : error.what();
        constexpr std::string_view ofScripts[] = {"--dry-run", "--backup",    "--eol",         "--json",    "--strict",
                                                  "--project", "--simulator", "--keyword-tag", "--file-tag"};
        const bool isOfScript = std::any_of(std::begin(ofScripts), std::end(ofScripts), [&](std::string_view option) {
            return text.starts_with(fmt::format("{} has no option {}.", words.front(), option)) ||
                   text.starts_with(fmt::format("{} has no option {}=", words.front(), option));
        });
        if (isOfScript) text += " It is one of apply, and holds for all lines.";
        throw Failure(WrongUsage, text);
    }
    const bool takesText = (known->takes & TakesText) != 0 || options.hasText;
    if (takesText && options.text == "-")
        throw Failure(WrongUsage, "- stands for standard input, which a script has none of; a text goes behind <<END.");
    return options;
}

std::variant<Options, ExitStatus> ParseOptions(int argc, char** argv)
{
    Options options;
    CLI::App app("", "deckman");
    app.require_subcommand(1);
    app.set_version_flag("--version", "deckman " DECKMAN_VERSION);
    AddCommonOptions(app, options);
    for (const VerbEntry& verb : AllVerbs())
        AddVerb(app, verb, options);

    // People ask for help in this way too, and what is installed beside the program is made by it.
    std::vector<std::string> arguments(argv, argv + argc);
    if (argc > 1 && std::string_view(argv[1]) == "help") {
        const std::string_view what = argc > 2 ? argv[2] : "";
        if (what == "--man") return PrintAnswer(ManualPage(app));
        if (what == "--complete") {
            SetUpProcess(options);
            return PrintAnswer(Completions(app, std::vector<std::string>(argv + 3, argv + argc)));
        }
        arguments.erase(arguments.begin() + 1);
        arguments.push_back("--help");
    }
    try {
        Parse(app, {arguments.begin() + 1, arguments.end()});
        UnmarkTexts(options);
        if ((options.verb->takes & TakesProjectDir) != 0 && !options.project.empty())
            throw CLI::ValidationError("--project", "This verb takes the directory itself.");
        CheckEdit(options);
        return options;
    } catch (const CLI::CallForHelp&) {
        const auto chosen = app.get_subcommands();
        return PrintAnswer(chosen.empty() ? MainHelp(app) : chosen.front()->help("deckman"), !options.noPager);
    } catch (const CLI::CallForVersion& version) {
        return PrintAnswer(fmt::format("{}\n", version.what()));
    } catch (const CLI::ParseError& error) {
        if (argc == 1) {
            PrintError(MainHelp(app));
            return WrongUsage;
        }
        return TellWrongUsage(app, error);
    }
}

} // namespace Deckman

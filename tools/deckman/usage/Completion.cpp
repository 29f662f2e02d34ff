#include "usage/Completion.h"

#include <algorithm>
#include <exception>
#include <map>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IKeyword.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordUtils.h>

#include "command/Verbs.h"
#include "session/DeckSession.h"
#include "session/DeckWalk.h"
#include "session/Schedule.h"
#include "session/Sections.h"
#include "session/Where.h"
#include "usage/Help.h"

namespace Deckman {

namespace {

/// Of the records of a keyword, how many are looked at.
constexpr int mostRecords = 2000;

/// The words that may stand there, with what they are.
class Candidates
{
public:
    /// Only what goes on as `typed` begins, in any case, counts.
    explicit Candidates(std::string_view typed) : m_typed(typed) {}

    void Add(std::string_view word, std::string_view is = {})
    {
        if (word.size() < m_typed.size() || !Service::NoCaseStringEqual(word.substr(0, m_typed.size()), m_typed))
            return;
        // One to a line, and a tab behind the word: what holds either is no word that can be typed.
        if (word.find_first_of("\n\r\t") != std::string_view::npos) return;
        m_lines += m_ahead;
        m_lines += word;
        if (!is.empty()) m_lines += fmt::format("\t{}", is);
        m_lines += '\n';
    }
    void AddFiles() { m_lines += ":file\n"; }
    void AddFolders() { m_lines += ":dir\n"; }

    std::string_view Typed() const { return m_typed; }
    /// What stands ahead of the part of the word that is completed.
    void PutAhead(std::string_view text)
    {
        m_ahead += text;
        m_typed.remove_prefix(text.size());
    }
    const std::string& Lines() const { return m_lines; }

private:
    std::string_view m_typed;
    std::string m_ahead;
    std::string m_lines;
};

/// What the words ahead of the last one say.
struct Begun
{
    const CLI::App* verb = nullptr;           ///< the app itself while there is none
    const CLI::Option* waitsFor = nullptr;    ///< the option whose value comes next
    std::vector<std::string> arguments;       ///< behind the verb, options aside
    std::map<std::string, std::string> given; ///< values of options, by long name
};

const CLI::Option* FindOption(const CLI::App& app, const CLI::App& verb, std::string_view name)
{
    for (const CLI::App* level : {&verb, &app}) {
        for (const CLI::Option* option : level->get_options()) {
            if (!option->get_positional() && option->check_name(std::string(name))) return option;
        }
    }
    return nullptr;
}

bool TakesValue(const CLI::Option& option)
{
    return option.get_items_expected_max() > 0;
}

const CLI::App* Below(const CLI::App& verb, const std::string& word)
{
    const auto named = verb.get_subcommands([&word](const CLI::App* below) { return below->get_name() == word; });
    return named.empty() ? nullptr : named.front();
}

Begun ReadBegun(const CLI::App& app, std::span<const std::string> words)
{
    Begun begun;
    begun.verb = &app;
    for (const std::string& word : words) {
        if (begun.waitsFor != nullptr) {
            begun.given[begun.waitsFor->get_lnames().front()] = word;
            begun.waitsFor = nullptr;
        } else if (word.starts_with('-') && word.size() > 1) {
            const std::size_t sign = word.find('=');
            const CLI::Option* option = FindOption(app, *begun.verb, word.substr(0, sign));
            if (option == nullptr || !TakesValue(*option)) continue;
            if (sign == std::string::npos)
                begun.waitsFor = option;
            else
                begun.given[option->get_lnames().front()] = word.substr(sign + 1);
        } else if (const CLI::App* next = Below(*begun.verb, word)) {
            begun.verb = next;
        } else {
            begun.arguments.push_back(word);
        }
    }
    return begun;
}

void AddVerbs(const CLI::App& app, Candidates& candidates)
{
    for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; }))
        candidates.Add(verb->get_name(), verb->get_description());
}

void AddOptions(const CLI::App& app, const CLI::App& verb, Candidates& candidates)
{
    for (const CLI::App* level : {&verb, &app}) {
        for (const CLI::Option* option : level->get_options()) {
            if (level == &app && &verb != &app && !option->get_configurable()) continue;
            for (const std::string& name : option->get_lnames())
                candidates.Add("--" + name, option->get_description());
        }
    }
}

void AddKeywordsOfCatalogue(Candidates& candidates)
{
    std::string_view last;
    for (const auto* syntax : DeckManager::Environment::Instance().GetSyntaxTable()->GetSyntaxes()) {
        const std::string_view name = syntax->GetName();
        if (name != last && !name.ends_with('*')) candidates.Add(name, syntax->GetSummary());
        last = name;
    }
}

/// The deck of a command line, for as long as its words are completed.
class DeckWords
{
public:
    DeckWords(const std::string& deck, const Begun& begun, Messages& messages)
        : m_session(deck, messages), m_begun(begun)
    {
    }

    void AddNames(Candidates& candidates)
    {
        for (const auto& [name, count] : CountNames(SectionType::None))
            candidates.Add(name, count > 1 ? fmt::format("{} of them", count) : std::string());
    }

    void AddDates(Candidates& candidates)
    {
        const Schedule schedule(m_session, false);
        for (const Schedule::Moment& moment : schedule.Moments()) {
            if (moment.date) candidates.Add(moment.date->ToString());
        }
    }

    void AddPlaces(Candidates& candidates)
    {
        const std::string_view typed = candidates.Typed();
        const std::size_t bracket = typed.find('[');
        const std::string_view head = typed.substr(0, bracket);
        if (bracket == std::string_view::npos && head.find('.') == std::string_view::npos) {
            AddKeywords(candidates);
            return;
        }
        // Up to here it leads to a container, whose parts may follow.
        const std::size_t last = typed.find_last_of("[.");
        AddItems(candidates, std::string(typed.substr(0, last)), typed[last] == '[');
    }

private:
    std::map<std::string, int> CountNames(SectionType section)
    {
        std::map<std::string, int> names;
        for (DeckWalk walk(m_session, m_begun.given.count("all") != 0); walk.Next();) {
            if (section == SectionType::None || walk.Section() == section) ++names[walk.Keyword().GetName()];
        }
        return names;
    }

    void AddKeywords(Candidates& candidates)
    {
        SectionType section = SectionType::None;
        const std::string_view typed = candidates.Typed();
        if (const std::size_t slash = typed.find('/'); slash != std::string_view::npos) {
            const auto named = FindSection(typed.substr(0, slash));
            if (!named) return;
            section = *named;
            candidates.PutAhead(typed.substr(0, slash + 1));
        }
        const std::map<std::string, int> names = CountNames(section);
        const std::string_view rest = candidates.Typed();
        if (const std::size_t hash = rest.find('#'); hash != std::string_view::npos) {
            const auto known = names.find(Service::Uppercased(rest.substr(0, hash)));
            if (known == names.end()) return;
            candidates.PutAhead(rest.substr(0, hash + 1));
            for (int number = 1; number <= known->second; ++number)
                candidates.Add(std::to_string(number));
            return;
        }
        for (const auto& [name, count] : names)
            candidates.Add(name, count > 1 ? fmt::format("{} of them", count) : std::string());
        if (section != SectionType::None) return;
        for (const std::string_view name : sectionNames) {
            if (names.count(std::string(name)) != 0) candidates.Add(fmt::format("{}/", name), "in that section");
        }
    }

    void AddItems(Candidates& candidates, const std::string& ahead, bool inBrackets)
    {
        const Where::Place place = Where::Parse(ahead).Find(m_session, {});
        const Keywords::IKeywordMD* shape = place.keyword->GetSyntax()->GetMetaData();
        if (shape == nullptr || IsLong(*shape)) return;
        const Keywords::IKeywordData* data = m_session.Keywords().GetKeywordData(place.keyword);
        if (data == nullptr) return;
        const ItemPath::Item item = place.items.Find(*data, place.keyword->GetName());
        if (!item.IsContainer()) return;
        candidates.PutAhead(candidates.Typed().substr(0, ahead.size() + 1));
        const std::string_view behind = inBrackets ? "]" : "";
        if (item.container->GetType() == Keywords::MDType::Record) {
            const auto& md = *static_cast<const Keywords::IKeywordRecordData*>(item.container)->GetRecordMD();
            for (int i = 0; i < md.GetItemCount(); ++i) {
                if (!md.GetItemName(i).empty()) candidates.Add(fmt::format("{}{}", md.GetItemName(i), behind));
            }
        } else if (item.container->GetType() == Keywords::MDType::List && inBrackets) {
            const auto& list = *static_cast<const Keywords::IKeywordListData*>(item.container);
            if (list.GetElementType() != Keywords::MDType::Record) return;
            std::string_view last;
            for (int i = 0; i < std::min(list.GetElementCount(), mostRecords); ++i) {
                const auto name = NameOfRecord(list.GetContainer(i));
                if (name && *name != last) candidates.Add(fmt::format("{}]", *name));
                last = name.value_or(std::string_view());
            }
        }
    }

    /// An array: reading it takes long, and its elements have no names.
    static bool IsLong(const Keywords::IKeywordMD& shape)
    {
        return shape.GetType() == Keywords::MDType::List &&
               Keywords::KeywordUtils::IsItemMDType(
                   static_cast<const Keywords::IKeywordListMD&>(shape).GetElementMD()->GetType());
    }

    DeckSession m_session;
    const Begun& m_begun;
};

/// What the word is that has been begun, in the words of the help.
enum class Wanted
{
    Nothing,
    File,
    Folder,
    CatalogueName,
    DeckName,
    Place,
    Date,
};

Wanted WantedFor(const std::string& name, const std::string& verb)
{
    if (name == "DECK" || name == "OLD" || name == "NEW" || name == "FILE") return Wanted::File;
    if (name == "DIR" || name == "NEWDIR") return Wanted::Folder;
    if (name == "WHERE") return Wanted::Place;
    if (name == "GLOB") return Wanted::DeckName;
    if (name == "DATE") return Wanted::Date;
    if (name == "NAME" && !verb.starts_with("project")) return Wanted::CatalogueName;
    return Wanted::Nothing;
}

void AddWords(Wanted wanted, const Begun& begun, Candidates& candidates)
{
    switch (wanted) {
    case Wanted::File:
        candidates.AddFiles();
        return;
    case Wanted::Folder:
        candidates.AddFolders();
        return;
    case Wanted::CatalogueName:
        AddKeywordsOfCatalogue(candidates);
        return;
    case Wanted::Nothing:
        return;
    default:
        break;
    }
    if (begun.arguments.empty()) return;
    Messages messages;
    const Messages::Diversion silence(messages, [](const Messages::Message&) {});
    DeckWords words(begun.arguments.front(), begun, messages);
    if (wanted == Wanted::DeckName)
        words.AddNames(candidates);
    else if (wanted == Wanted::Date)
        words.AddDates(candidates);
    else
        words.AddPlaces(candidates);
}

void AddValues(const CLI::Option& option, const Begun& begun, Candidates& candidates)
{
    const std::string name = option.get_lnames().front();
    if (name == "section") {
        for (const std::string_view section : sectionNames)
            candidates.Add(section);
    } else if (name == "simulator") {
        candidates.Add("100");
        candidates.Add("300");
    } else if (name == "eol") {
        candidates.Add("crlf");
        candidates.Add("keep");
    } else {
        AddWords(WantedFor(option.get_type_name(), {}), begun, candidates);
    }
}

const CLI::Option* ArgumentOf(const CLI::App& verb, std::size_t number)
{
    for (const CLI::Option* option : verb.get_options()) {
        if (!option->get_positional()) continue;
        if (number == 0) return option;
        // One that takes several is the last.
        if (option->get_items_expected_max() > 1) return option;
        --number;
    }
    return nullptr;
}

void Complete(const CLI::App& app, std::span<const std::string> words, Candidates& candidates)
{
    const Begun begun = ReadBegun(app, words.first(words.size() - 1));
    const std::string_view typed = candidates.Typed();
    if (begun.waitsFor != nullptr) {
        AddValues(*begun.waitsFor, begun, candidates);
    } else if (typed.starts_with('-')) {
        const std::size_t sign = typed.find('=');
        if (sign == std::string_view::npos) {
            AddOptions(app, *begun.verb, candidates);
        } else if (const CLI::Option* option = FindOption(app, *begun.verb, typed.substr(0, sign))) {
            candidates.PutAhead(typed.substr(0, sign + 1));
            AddValues(*option, begun, candidates);
        }
    } else if (const auto below = begun.verb->get_subcommands([](const CLI::App*) { return true; }); !below.empty()) {
        AddVerbs(*begun.verb, candidates);
    } else if (const CLI::Option* argument = ArgumentOf(*begun.verb, begun.arguments.size())) {
        AddWords(WantedFor(argument->get_name(), NameOf(*begun.verb)), begun, candidates);
    }
}

} // namespace

std::string Completions(const CLI::App& app, std::span<const std::string> words)
{
    if (words.empty()) return {};
    Candidates candidates(words.back());
    try {
        Complete(app, words, candidates);
    } catch (const std::exception&) {
        // A deck or a place that isn't there has no words.
    }
    return candidates.Lines();
}

} // namespace Deckman

#include <rapidcheck.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <unordered_map>

#include <fmt/format.h>

#include "tests/deck/LiteralSort.h"
#include "tests/deck/SortedDeck.h"
#include "tests/support/DeckTest.h"

// Decks and rules by chance: the sort against the one that is carried out to the letter, and what holds of every sort.

namespace {

using namespace DeckTests;
using TestSupport::RuledTable;
using TestSupport::SortedDeck;
using TestSupport::SortTable;
namespace Rules = TestSupport::Rules;

class Chance
{
public:
    explicit Chance(std::uint64_t seed) : m_engine(seed) {}
    std::size_t Below(std::size_t n) { return m_engine() % n; }
    bool OneIn(std::size_t n) { return Below(n) == 0; }
    template <class T>
    const T& Of(const std::vector<T>& values)
    {
        return values[Below(values.size())];
    }

private:
    std::mt19937_64 m_engine;
};

/// Every change of a deck's files, told by which keyword it was of.
class Moves
{
public:
    explicit Moves(const SortedDeck& deck, std::size_t files) : m_top(deck.File(0))
    {
        int number = 0;
        for (std::size_t i = 0; i < files; ++i) {
            for (KeywordFileIterator place = deck.File(i).Begin(); place != deck.File(i).End(); ++place)
                m_numbers.emplace(*place, ++number);
        }
        m_top.fileChanged.Add(this, &Moves::Hear);
    }
    ~Moves() { m_top.fileChanged.Remove(this, &Moves::Hear); }
    Moves(const Moves&) = delete;
    Moves& operator=(const Moves&) = delete;

    const std::string& Text() const { return m_text; }

private:
    void Hear(KeywordFileEventArgs& args)
    {
        m_text += std::to_string(args.GetKind()) + "#" + std::to_string(m_numbers[args.GetKeyword()]) + " ";
    }

    KeywordFile& m_top;
    std::map<const IKeyword*, int> m_numbers;
    std::string m_text;
};

/// Messages, with the folder of the deck left out.
std::vector<std::string> TextsOf(const LogRecorder& log, const SortedDeck& deck)
{
    std::vector<std::string> texts = log.Texts();
    const std::string folder = deck.Deck().Dir().Path("");
    for (std::string& text : texts) {
        if (const auto at = text.find(folder); at != std::string::npos) text.erase(at, folder.size());
    }
    return texts;
}

/// Rules of the sections of a deck; without rings only those between names in their order.
Rules::OfSections RulesByChance(Chance& chance, const std::vector<std::string>& names, bool withRings)
{
    Rules::OfSections rules;
    for (std::size_t count = 2 + chance.Below(10); count > 0; --count) {
        const SectionType section = chance.Of<SectionType>(
            {SectionType::GRID, SectionType::GRID, SectionType::GRID, SectionType::PROPS, SectionType::RUNSPEC});
        const std::size_t second = chance.Below(names.size());
        const std::size_t first = chance.Below(withRings ? names.size() : second + 1);
        if (withRings || first < second) rules[section][names[second]].insert(names[first]);
    }
    return rules;
}

/// Words in any order: scopes that nothing closes, ends in the midst, files that are included twice.
std::vector<std::string> WildDeck(Chance& chance)
{
    const std::vector<std::string> words = {"A",    "B",    "C",     "D",        "A",    "B",   "C",    "D",      "E",
                                            "HEAD", "TAIL", "BLOCK", "ENDBLOCK", "SPAN", "CUT", "TAIL", "INCLUDE"};
    const std::vector<std::string> rare = {"TITLE", "SKIPREST", "END", "ENDINC"};
    std::vector<std::string> sections = {"SCHEDULE", "PROPS", "GRID"};
    if (chance.OneIn(2)) sections.push_back("RUNSPEC");
    const std::size_t count = 1 + chance.Below(4);
    std::vector<std::vector<std::string>> files(count);
    std::set<std::size_t> included;
    int number = 0;
    for (std::size_t file = 0; file < count; ++file) {
        const auto add = [&](const std::string& word) { files[file].push_back(word); };
        for (std::size_t length = chance.Below(25); length > 0; --length) {
            // Recurring section keywords would be no keywords.
            if (!sections.empty() && (chance.OneIn(15) || (file == 0 && files[0].empty() && !chance.OneIn(4)))) {
                add(sections.back());
                sections.pop_back();
            }
            const std::string& word = chance.OneIn(20) ? chance.Of(rare) : chance.Of(words);
            if (word.size() == 1) {
                add(word + ":" + std::to_string(++number));
            } else if (word != "INCLUDE") {
                add(word);
            } else if (file + 1 < count) {
                const std::size_t other = file + 1 + chance.Below(count - file - 1);
                included.insert(other);
                add("I" + std::to_string(other));
            }
        }
    }
    for (std::size_t file = 1; file < count; ++file) {
        if (included.count(file) > 0) continue;
        std::vector<std::string>& including = files[file - 1];
        const auto place = static_cast<std::ptrdiff_t>(chance.Below(including.size() + 1));
        including.insert(including.begin() + place, "I" + std::to_string(file));
    }
    // A section keyword that a walk comes to twice begins its section at neither place.
    static const std::set<std::string> allSections = {"RUNSPEC", "GRID", "PROPS", "SCHEDULE"};
    std::vector<int> visits(count, 0);
    visits[0] = 1;
    for (std::size_t file = 0; file < count; ++file) {
        for (const std::string& word : files[file]) {
            if (word.size() == 2 && word[0] == 'I') visits[static_cast<std::size_t>(word[1] - '0')] += visits[file];
        }
        if (visits[file] > 1)
            std::erase_if(files[file], [](const std::string& word) { return allSections.contains(word); });
    }
    std::vector<std::string> texts;
    for (const std::vector<std::string>& file : files)
        texts.push_back(fmt::format("{}", fmt::join(file, " ")));
    return texts;
}

TEST(SortPropertyTest, EveryMoveIsTheOneToTheLetter)
{
    const std::vector<std::string> names = {"A", "HEAD", "B", "C", "SPAN", "D"};
    const std::vector<std::string> wildNames = {"A", "B", "C", "HEAD", "BLOCK", "TAIL", "CUT", "INCLUDE", "TITLE"};
    EXPECT_TRUE(rc::check("every move is the one to the letter", [&] {
        Chance chance(*rc::gen::arbitrary<std::uint64_t>());
        const TestSupport::CleanEnvironment environment;
        const RuledTable table(SortTable(),
                               RulesByChance(chance, chance.OneIn(3) ? wildNames : names, chance.OneIn(3)));
        Environment::Instance().SetSyntaxTable(&table);
        const std::vector<std::string> texts = WildDeck(chance);

        const SortedDeck fast(texts);
        const SortedDeck slow(texts);
        const Moves fastMoves(fast, texts.size());
        const Moves slowMoves(slow, texts.size());
        LogRecorder fastLog;
        fast.Editor().SortKeywords();
        LogRecorder slowLog;
        TestSupport::LiteralSort(slow.Deck().Deck(), slow.Editor()).SortKeywords();

        std::string shown;
        for (const std::string& text : texts)
            shown += "[" + text + "] ";
        RC_LOG() << shown;
        RC_ASSERT(fast.Files() == slow.Files());
        RC_ASSERT(fastMoves.Text() == slowMoves.Text());
        RC_ASSERT(TextsOf(fastLog, fast) == TextsOf(slowLog, slow));
        RC_TAG(fastMoves.Text().empty() ? "nothing moves" : fastLog.Empty() ? "moves" : "fails");
    }));
}

/// A deck whose scopes are closed where they began: each keyword with data belongs to one group of keywords that are
/// sorted together, and a comment that tells its number stands above it. A blank line keeps the comment from being that
/// of a keyword without data.
class TidyDeck
{
public:
    struct Entry
    {
        std::string name;
        int group;
    };

    explicit TidyDeck(Chance& chance) : m_chance(chance)
    {
        m_files.resize(1 + chance.Below(3));
        m_top = "RUNSPEC\n\n";
        AddLevel(m_top, SectionType::RUNSPEC, 0, NewGroup(SectionType::RUNSPEC));
        m_top += "GRID\n\n";
        const int grid = NewGroup(SectionType::GRID);
        AddLevel(m_top, SectionType::GRID, 0, grid);
        for (std::size_t i = 0; i < m_files.size(); ++i) {
            m_top += "INCLUDE\n'F" + std::to_string(i) + ".INC' /\n";
            AddLevel(m_files[i], SectionType::GRID, 0, NewGroup(SectionType::GRID));
            AddLevel(m_top, SectionType::GRID, 0, grid);
        }
        m_top += "PROPS\n\n";
        AddLevel(m_top, SectionType::PROPS, 0, NewGroup(SectionType::PROPS));
        m_top += "-- the end\n";
    }

    TestSupport::TestDeck::Texts Texts() const
    {
        TestSupport::TestDeck::Texts texts{{"TOP.DATA", m_top}};
        for (std::size_t i = 0; i < m_files.size(); ++i)
            texts.emplace_back("F" + std::to_string(i) + ".INC", m_files[i]);
        return texts;
    }
    /// By number.
    const std::vector<Entry>& Entries() const { return m_entries; }
    SectionType SectionOf(int group) const { return m_sections[static_cast<std::size_t>(group)]; }
    int Groups() const { return static_cast<int>(m_sections.size()); }

private:
    int NewGroup(SectionType section)
    {
        m_sections.push_back(section);
        return Groups() - 1;
    }

    void AddLevel(std::string& text, SectionType section, int depth, int group)
    {
        for (std::size_t count = m_chance.Below(7); count > 0; --count) {
            if (depth < 3 && m_chance.OneIn(5)) {
                text += "HEAD\n\n";
                AddLevel(text, section, depth + 1, NewGroup(section));
                text += "TAIL\n\n";
                continue;
            }
            const std::string name(1, static_cast<char>('A' + m_chance.Below(6)));
            const std::string number = std::to_string(m_entries.size());
            m_entries.push_back({name, group});
            text += (m_chance.OneIn(3) ? "\n" : "") + ("-- above " + number + "\n") + name + " -- beside " + number +
                    "\n" + number + " / behind " + number + "\n";
        }
    }

    Chance& m_chance;
    std::string m_top;
    std::vector<std::string> m_files;
    std::vector<Entry> m_entries;
    std::vector<SectionType> m_sections;
};

/// The names that a ring holds in its place: what is left when, again and again, a name goes that waits for none of
/// the others.
std::set<std::string> HeldByRings(const std::vector<TidyDeck::Entry>& entries, int group, const Rules::OfSection& rules)
{
    std::map<std::string, int> left;
    for (const TidyDeck::Entry& entry : entries) {
        if (entry.group == group) ++left[entry.name];
    }
    const auto isFree = [&](const auto& name) {
        const auto rule = rules.find(name.first);
        return rule == rules.end() ||
               std::none_of(rule->second.begin(), rule->second.end(), [&](const std::string& other) {
                   return left.count(other) > 0 && (other != name.first || name.second > 1);
               });
    };
    while (std::erase_if(left, isFree) > 0) {
    }
    std::set<std::string> held;
    for (const auto& [name, count] : left)
        held.insert(name);
    return held;
}

/// The numbers of the keywords with data, in the order of the deck.
std::vector<int> NumbersOf(const TestSupport::TestDeck& deck)
{
    std::vector<int> numbers;
    for (KeywordIterator position = deck.Keywords().Begin(); *position != nullptr; ++position) {
        if (position->GetName().size() == 1) numbers.push_back(std::stoi(*deck.Keywords().GetDataText(*position)));
    }
    return numbers;
}

TEST(SortPropertyTest, WhatHoldsOfEverySort)
{
    EXPECT_TRUE(rc::check("a sort keeps the laws", [] {
        Chance chance(*rc::gen::arbitrary<std::uint64_t>());
        const TestSupport::CleanEnvironment environment;
        LineEnds::SetPolicy(LineEnds::Policy::Keep);
        const Rules::OfSections rules = RulesByChance(chance, {"A", "B", "C", "D", "E"}, chance.OneIn(3));
        const RuledTable table(SortTable(), rules);
        Environment::Instance().SetSyntaxTable(&table);
        const TidyDeck tidy(chance);
        const TestSupport::TestDeck deck(tidy.Texts());
        IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
        const std::string namesBefore = deck.Walk();
        const std::vector<int> before = NumbersOf(deck);
        const LogRecorder log;

        editor.SortKeywords();
        RC_ASSERT(log.Empty());
        const std::vector<int> after = NumbersOf(deck);
        RC_ASSERT(std::is_permutation(before.begin(), before.end(), after.begin(), after.end()));

        // Every rule holds between keywords of a group, as far as no ring forbids it.
        std::map<int, std::size_t> places;
        for (std::size_t i = 0; i < after.size(); ++i)
            places[after[i]] = i;
        const auto& entries = tidy.Entries();
        for (int group = 0; group < tidy.Groups(); ++group) {
            const auto ofSection = rules.find(tidy.SectionOf(group));
            if (ofSection == rules.end()) continue;
            const std::set<std::string> held = HeldByRings(entries, group, ofSection->second);
            for (std::size_t first = 0; first < entries.size(); ++first) {
                for (std::size_t second = 0; second < entries.size(); ++second) {
                    if (entries[first].group != group || entries[second].group != group || first == second) continue;
                    const auto rule = ofSection->second.find(entries[second].name);
                    if (rule == ofSection->second.end() || !rule->second.contains(entries[first].name)) continue;
                    if (held.contains(entries[second].name)) continue;
                    RC_ASSERT(places.at(static_cast<int>(first)) < places.at(static_cast<int>(second)));
                }
            }
        }

        // No text is lost, and each comment stays with its keyword. The one above a file's first keyword is of the
        // file.
        RC_ASSERT(deck.Keywords().ExportToDirectory(deck.Dir().Path("out"), Keywords::SimulatorType::Any, false));
        for (const auto& [name, text] : tidy.Texts()) {
            const std::string sorted = deck.Dir().Read("out/" + name);
            std::multiset<std::string> lines;
            std::multiset<std::string> sortedLines;
            std::istringstream in(text);
            for (std::string line; std::getline(in, line);)
                lines.insert(line);
            std::istringstream sortedIn(sorted);
            for (std::string line; std::getline(sortedIn, line);)
                sortedLines.insert(line);
            RC_ASSERT(lines == sortedLines);
            const bool isHeaded = text.rfind("RUNSPEC", 0) != 0;
            for (std::size_t i = 0; i < entries.size(); ++i) {
                const std::string number = std::to_string(i);
                const std::string own =
                    entries[i].name + " -- beside " + number + "\n" + number + " / behind " + number;
                const std::string above = "-- above " + number + "\n";
                const auto place = text.find(above + own);
                if (place == std::string::npos) continue;
                const bool isFirst = isHeaded && text.find_first_not_of('\n') == place;
                RC_ASSERT(sorted.find(isFirst ? own : above + own) != std::string::npos);
            }
        }

        // A second sort has nothing to do.
        struct Count
        {
            void Hear(KeywordFileEventArgs&) { ++events; }
            int events = 0;
        } count;
        deck.TopFile().fileChanged.Add(&count, &Count::Hear);
        editor.SortKeywords();
        deck.TopFile().fileChanged.Remove(&count, &Count::Hear);
        RC_ASSERT(count.events == 0);

        editor.Discard();
        RC_ASSERT(deck.Walk() == namesBefore);
        RC_ASSERT(NumbersOf(deck) == before);
        RC_TAG(before == after ? "nothing moves" : "moves");
    }));
}

} // namespace

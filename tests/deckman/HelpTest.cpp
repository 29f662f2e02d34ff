#include <set>

#include "tests/deckman/Program.h"

/// Help, the manual page and completion: all of one source, and all of it true.

namespace DeckmanTests {

namespace {

namespace fs = std::filesystem;

const std::string decks = DECK_SOURCE_DIR "/examples/decks";
const std::string completion = DECK_SOURCE_DIR "/tools/deckman/completion";

std::vector<std::string> LinesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// What completion offers behind these words, without what it says of them.
std::vector<std::string> Offered(std::vector<std::string> words)
{
    words.insert(words.begin(), {"help", "--complete"});
    const Outcome outcome = Deckman(words, {decks});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    std::vector<std::string> offered = LinesOf(outcome.out);
    for (std::string& line : offered)
        line = line.substr(0, line.find('\t'));
    return offered;
}

std::vector<std::string> AllVerbs()
{
    std::vector<std::string> verbs;
    for (const std::string& verb : Offered({""})) {
        const std::vector<std::string> second = Offered({verb, ""});
        if (second.empty() || second.front().starts_with(':') || verb == "syntax" || verb == "template") {
            verbs.push_back(verb);
            continue;
        }
        for (const std::string& word : second)
            verbs.push_back(verb + " " + word);
    }
    return verbs;
}

/// The commands of a verb's example.
std::vector<std::string> ExamplesOf(const std::string& verb)
{
    const std::string help = Shell("deckman " + verb + " --help").out;
    std::vector<std::string> commands;
    const std::size_t begin = help.find("\nExample");
    if (begin == std::string::npos) return commands;
    for (const std::string& line : LinesOf(help.substr(help.find('\n', begin + 1) + 1))) {
        if (!line.starts_with("  ")) break;
        commands.push_back(line.substr(2));
    }
    return commands;
}

bool HasProgram(const std::string& name)
{
    return Shell("command -v " + name).status == 0;
}

std::set<std::string> WordsOf(std::string text)
{
    for (char& c : text) {
        if (c == ',' || c == '|') c = ' ';
    }
    std::istringstream stream(text);
    std::set<std::string> words;
    for (std::string word; stream >> word;)
        words.insert(word);
    return words;
}

} // namespace

TEST(Help, FitsAScreenAndNamesEveryVerb)
{
    const Outcome help = Deckman({"--help"});
    EXPECT_EQ(help.status, 0);
    const std::vector<std::string> lines = LinesOf(help.out);
    EXPECT_LE(lines.size(), 45u);
    for (const std::string& line : lines)
        EXPECT_LE(line.size(), 80u) << line;
    const std::set<std::string> words = WordsOf(help.out);
    for (const std::string& verb : AllVerbs()) {
        for (const std::string& word : WordsOf(verb))
            EXPECT_EQ(words.count(word), 1u) << verb;
        const Outcome ofVerb = Shell("deckman " + verb + " --help");
        EXPECT_EQ(ofVerb.status, 0) << verb;
        for (const std::string& line : LinesOf(ofVerb.out))
            EXPECT_LE(line.size(), 80u) << verb << ": " << line;
    }
}

TEST(Help, EveryExampleWorks)
{
    const std::vector<std::string> verbs = AllVerbs();
    ASSERT_GT(verbs.size(), 25u);
    for (const std::string& verb : verbs) {
        const std::vector<std::string> commands = ExamplesOf(verb);
        EXPECT_FALSE(commands.empty()) << verb;
        const TestSupport::TempDir copy;
        fs::copy(decks, copy.Path("decks"), fs::copy_options::recursive);
        std::string script;
        bool usesVerb = false;
        for (const std::string& command : commands) {
            // Each must succeed, whatever follows; a difference that was asked for is an answer.
            script += command + (verb == "diff" ? " || test $? = 1" : "") + " || exit\n";
            usesVerb |= command.find("deckman " + verb + " ") != std::string::npos;
        }
        EXPECT_TRUE(usesVerb) << verb;
        const Outcome outcome = Shell(script, {copy.Path("decks")});
        EXPECT_EQ(outcome.status, 0) << verb << "\n" << script << outcome.err;
        for (const std::string& line : LinesOf(outcome.err))
            EXPECT_NE(line.find(": note: "), std::string::npos) << verb << ": " << line;
    }
}

TEST(Help, TheManualPageHasEveryVerbAndOption)
{
    const std::string page = Deckman({"help", "--man"}).out;
    std::string plain = page;
    for (std::size_t at; (at = plain.find("\\-")) != std::string::npos;)
        plain.erase(at, 1);
    for (const std::string& verb : AllVerbs()) {
        EXPECT_NE(plain.find("\n.SS " + verb), std::string::npos) << verb;
        std::vector<std::string> words{"--"};
        const std::size_t blank = verb.find(' ');
        words.insert(words.begin(), verb.substr(0, blank));
        if (blank != std::string::npos) words.insert(words.begin() + 1, verb.substr(blank + 1));
        for (const std::string& option : Offered(words))
            EXPECT_NE(plain.find(option), std::string::npos) << verb << " " << option;
    }
    const TestSupport::TempDir folder;
    folder.Write("deckman.1", page);
    if (HasProgram("groff")) {
        const Outcome groff = Shell("groff -man -ww -z -Tutf8 '" + folder.Path("deckman.1") + "'");
        EXPECT_EQ(groff.err, "");
    }
    if (HasProgram("mandoc")) {
        const std::string lint = Shell("mandoc -T lint -W warning '" + folder.Path("deckman.1") + "'").out;
        for (const std::string& line : LinesOf(lint))
            EXPECT_NE(line.find("missing date"), std::string::npos) << line;
    }
}

TEST(Completion, KnowsWhatMayStandThere)
{
    using Words = std::vector<std::string>;
    const std::string field = "field/FIELD.DATA";
    const std::pair<Words, Words> cases[] = {
        {{"sh"}, {"show"}},
        {{"project", "m"}, {"move"}},
        {{"ls", ""}, {":file"}},
        {{"diff", field, ""}, {":file"}},
        {{"copy", field, ""}, {":dir"}},
        {{"ls", "--se"}, {"--section"}},
        {{"--json", "ls", "--se"}, {"--section"}},
        {{"ls", "--section", "S"}, {"SOLUTION", "SUMMARY", "SCHEDULE"}},
        {{"ls", "--section=p"}, {"--section=PROPS"}},
        {{"check", "--simulator", ""}, {"100", "300"}},
        {{"template", "wels"}, {"WELSPECS", "WELSPECL", "WELSOMIN", "WELSEGS"}},
        {{"project", "add", "studies", ""}, {}},
        // The names in the deck, and how they may go on.
        {{"show", field, "sol"}, {"SOLUTION", "SOLUTION/"}},
        {{"show", "--comments", field, "SCHEDULE/WELS"}, {"SCHEDULE/WELSPECS"}},
        {{"show", field, "welspecs#"}, {"welspecs#1", "welspecs#2"}},
        {{"get", field, "SCHEDULE/WELSPECS#2[HR"}, {"SCHEDULE/WELSPECS#2[HR-P5]", "SCHEDULE/WELSPECS#2[HR-P6]"}},
        {{"get", field, "WCONPROD[HR-P1].O"}, {"WCONPROD[HR-P1].ORAT"}},
        {{"get", field, "TABDIMS.NTS"}, {"TABDIMS.NTSFUN"}},
        {{"get", field, "PERMX["}, {}},
        {{"get", field, "NOSUCH["}, {}},
        {{"ls", field, "--name", "FAULT"}, {"FAULTDIM", "FAULTS"}},
        {{"ls", field, "--at", "2022-04"}, {"2022-04-01"}},
        {{"flatten", field, "--from=SCHEDULE/TUN"}, {"--from=SCHEDULE/TUNING"}},
        {{"show", "no/such.data", ""}, {}},
        {{"show", "", ""}, {}},
        {{"nosuchverb", ""}, AllVerbs().empty() ? Words{} : Offered({""})},
    };
    for (const auto& [words, expected] : cases)
        EXPECT_EQ(Offered(words), expected) << testing::PrintToString(words);
}

TEST(Completion, WorksInBash)
{
    if (!HasProgram("bash")) GTEST_SKIP() << "bash is not installed";
    const auto replies = [](const std::string& words) {
        const Outcome outcome =
            Shell("bash --norc -c '. \"" + completion +
                      "/deckman.bash\"; COMP_WORDS=(\"" DECKMAN_PROGRAM
                      "\" \"$@\"); COMP_CWORD=$#; _deckman; printf \"%s\\n\" \"${COMPREPLY[@]}\"' - " +
                      words,
                  {decks});
        EXPECT_EQ(outcome.err, "") << words;
        return outcome.out;
    };
    EXPECT_EQ(replies("sec"), "sections\n");
    EXPECT_EQ(replies("get field/FIELD.DATA SCHEDULE/WELT"), "SCHEDULE/WELTARG\n");
    EXPECT_EQ(replies("get \"'field/FIELD.DATA'\" \"'WCONPROD[HR-P1\""), "WCONPROD[HR-P1]\n");
    EXPECT_EQ(replies("get field/FIELD.DATA WCONPROD[HR-P1"), "WCONPROD\\[HR-P1\\]\n");
    // bash cuts at = and takes back what stands behind it.
    EXPECT_EQ(replies("ls field/FIELD.DATA --section = PR"), "PROPS\n");
    EXPECT_EQ(replies("ls field/FIELD.DATA --section ="), replies("ls field/FIELD.DATA --section ''"));
    // Names of files are left to the shell; those of folders are folders only.
    EXPECT_EQ(replies("ls fi"), "\n");
    EXPECT_EQ(replies("copy field/FIELD.DATA si"), "single\n");
}

TEST(Completion, WorksInZshAndFish)
{
    if (HasProgram("zsh")) {
        EXPECT_EQ(Shell("zsh -n '" + completion + "/_deckman'").err, "");
    }
    if (HasProgram("fish")) {
        const TestSupport::TempDir home;
        const Launch run{decks,
                         {{"HOME", home.Path()}, {"XDG_CONFIG_HOME", home.Path()}, {"XDG_DATA_HOME", home.Path()}}};
        const Outcome outcome = Shell("PATH=\"" + fs::path(DECKMAN_PROGRAM).parent_path().string() +
                                          ":$PATH\" fish --no-config -c 'source \"" + completion +
                                          "/deckman.fish\"; complete -C \"deckman get field/FIELD.DATA WELT\"; "
                                          "complete -C \"deckman ls si\"'",
                                      run);
        EXPECT_EQ(outcome.out, "WELTARG\nsingle/\n") << outcome.err;
    }
}

} // namespace DeckmanTests
